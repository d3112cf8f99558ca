#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <memory>
#include <string_view>

class CSDZipHandle;

namespace ODF {
class Diagnostics;
} // namespace ODF

/// Writes an archive, one at a time, to a file, a caller's buffer or a mapping. `int` results are non-zero for
/// success. A file is built beside its target and replaces it only when it is complete. Member names may be given
/// with `/` or `\` between folders; the archive holds them with `/`.
class ODFMODEL_API CSDZip {
public:
    CSDZip();
    /// Finishes and closes an archive that is still open.
    ~CSDZip();
    CSDZip(const CSDZip&) = delete;
    CSDZip& operator=(const CSDZip&) = delete;

    int CreareZipFile(const unsigned short* path);
    int CreareZipFile(std::u16string_view path) { return CreareZipFile(CTulStringW(path).c_str()); }
    int CreareZipFile(std::string_view path) { return CreareZipFile(CTulStringW(path).c_str()); }
    /// Builds the archive in a caller's buffer.
    int CreareZipFile(void* buffer, int capacity);
    /// Builds the archive in a mapping; `mapping` is the handle of a mapping object (see `MemoryMapping`).
    int LargeMemoryCreareZipFile(void* mapping, int capacity);

    /// Adds the file at `path` as member `itemName`; `packed` non-zero stores it, for data that is compressed
    /// already.
    int Compress(const unsigned short* itemName, const unsigned short* path, int packed);
    /// Adds a member from memory; `data` is copied.
    int Compress(const unsigned short* itemName, void* data, int byteCount);
    /// The same two for an archive in a mapping.
    int CompressLargeMemory(const unsigned short* itemName, const unsigned short* path, int packed);
    int CompressLargeMemory(const unsigned short* itemName, void* data, int byteCount);
    /// Copies member `index` of the open archive `source` under `itemName`, without decompressing it.
    int CopyItem(CSDZipHandle* source, int index, const unsigned short* itemName);
    /// The same when the source lies in a mapping.
    int CopyItemLargeMemory(CSDZipHandle* source, void* mapping, unsigned long mappingSize, int index,
                            const unsigned short* itemName);

    /// Finishes the archive. For a file: 0 when it couldn't be written whole, and the target is then untouched.
    int CloseFile();
    /// Finishes an archive in a buffer or mapping; `byteCount` is its size. 0 when it didn't fit.
    int CloseMemoryFile(int& byteCount);
    int CloseLargeMemoryFile(int& byteCount);

    /// Gives up the archive: nothing is written, the target stays as it was.
    void Discard();

    /// Where faults are noted; not owned, null for nowhere.
    void SetDiagnostics(ODF::Diagnostics* diagnostics);

private:
    struct State;
    std::unique_ptr<State> state_;
};
