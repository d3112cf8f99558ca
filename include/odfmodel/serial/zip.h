#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <memory>
#include <string_view>

class CSDZipHandle;

namespace ODF {
class Diagnostics;
} // namespace ODF

/// Writes an archive, one at a time, to a file, a caller's buffer or a mapping. `int` results are non-zero
/// for success. A file is built next to its target and replaces it only when it is complete and no member
/// failed. Member names may be given with `/` or `\` between folders; the archive holds them with `/`, in the
/// order of the calls. A name that comes twice keeps its first place and takes the later content. Every
/// member is read and packed during its call. Members bear the present time, or that of the environment
/// variable SOURCE_DATE_EPOCH; a copied member keeps its own.
class ODFMODEL_API CSDZip {
public:
    CSDZip();
    /// Finishes and closes an archive that is still open. One that an exception leaves behind is given up
    /// instead, and its target stays as it was.
    ~CSDZip();
    CSDZip(const CSDZip&) = delete;
    CSDZip& operator=(const CSDZip&) = delete;

    int CreareZipFile(const unsigned short* path);
    int CreareZipFile(std::u16string_view path) { return CreareZipFile(CTulStringW(path).c_str()); }
    int CreareZipFile(std::string_view path) { return CreareZipFile(CTulStringW(path).c_str()); }
    int CreareZipFile(const ODF::FilePath auto& path) { return CreareZipFile(CTulStringW(path).c_str()); }
    /// Builds the archive in a caller's buffer.
    int CreareZipFile(void* buffer, int capacity);
    /// Builds the archive in a mapping; `mapping` is the handle of a mapping object (see `MemoryMapping`).
    int LargeMemoryCreareZipFile(void* mapping, int capacity);

    /// Adds the file at `path` as member `itemName`; `packed` non-zero stores it, for data that is compressed
    /// already.
    int Compress(const unsigned short* itemName, const unsigned short* path, int packed);
    /// Adds a member from memory; `data` is copied.
    int Compress(const unsigned short* itemName, void* data, int byteCount);
    int Compress(std::u16string_view itemName, std::u16string_view path, int packed) {
        return Compress(CTulStringW(itemName).c_str(), CTulStringW(path).c_str(), packed);
    }
    int Compress(std::string_view itemName, std::string_view path, int packed) {
        return Compress(CTulStringW(itemName).c_str(), CTulStringW(path).c_str(), packed);
    }
    int Compress(const CTulStringW& itemName, const ODF::FilePath auto& path, int packed) {
        return Compress(itemName.c_str(), CTulStringW(path).c_str(), packed);
    }
    int Compress(std::u16string_view itemName, void* data, int byteCount) {
        return Compress(CTulStringW(itemName).c_str(), data, byteCount);
    }
    int Compress(std::string_view itemName, void* data, int byteCount) {
        return Compress(CTulStringW(itemName).c_str(), data, byteCount);
    }
    /// Adds a member from memory without compressing it, as the member `mimetype` of a package wants it.
    int CompressStored(const unsigned short* itemName, const void* data, int byteCount);
    int CompressStored(std::u16string_view itemName, const void* data, int byteCount) {
        return CompressStored(CTulStringW(itemName).c_str(), data, byteCount);
    }
    int CompressStored(std::string_view itemName, const void* data, int byteCount) {
        return CompressStored(CTulStringW(itemName).c_str(), data, byteCount);
    }
    /// The same for an archive in a mapping.
    int CompressLargeMemory(const unsigned short* itemName, const unsigned short* path, int packed);
    int CompressLargeMemory(const unsigned short* itemName, void* data, int byteCount);
    /// Copies member `index` of the open archive `source` under `itemName`, without decompressing it. A
    /// member that is encrypted arrives in clear, since nothing here encrypts. The source may be closed
    /// afterwards.
    int CopyItem(CSDZipHandle* source, int index, const unsigned short* itemName);
    int CopyItem(CSDZipHandle* source, int index, std::u16string_view itemName) {
        return CopyItem(source, index, CTulStringW(itemName).c_str());
    }
    int CopyItem(CSDZipHandle* source, int index, std::string_view itemName) {
        return CopyItem(source, index, CTulStringW(itemName).c_str());
    }
    /// The same when the source is in a mapping.
    int CopyItemLargeMemory(CSDZipHandle* source, void* mapping, unsigned long mappingSize, int index,
                            const unsigned short* itemName);

    /// Finishes the archive. For a file: 0 when it couldn't be written whole, and the target is then
    /// untouched.
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
