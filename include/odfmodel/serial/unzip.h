#pragma once

#include <odfmodel/core/limits.h>
#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <map>
#include <memory>
#include <string_view>

/// An open archive as `CSDZip::CopyItem` sees it. Only carried from `CSDUnZip` to `CSDZip`.
class CSDZipHandle;

namespace ODF {
class Diagnostics;
} // namespace ODF

/// One member of an archive. Members whose `index` is -1 have nothing readable behind them.
struct ZipItem {
    long long size = 0; ///< uncompressed bytes
    int index = -1;     ///< number of the member in the archive
};

/// Members by name, in ascending binary order of the name.
using ZipItemTable = std::map<CTulStringW, ZipItem>;

/// Reads an archive from a file, from memory, from a mapping or from a folder that holds the extracted
/// members. `int` results are non-zero for success. Member names are looked up exactly, with `/` between
/// folders.
class ODFMODEL_API CSDUnZip {
public:
    CSDUnZip();
    virtual ~CSDUnZip();
    CSDUnZip(const CSDUnZip&) = delete;
    CSDUnZip& operator=(const CSDUnZip&) = delete;

    /// All members of the open archive, owned by this object; null before a successful open.
    ZipItemTable* itemTable = nullptr;
    /// The open archive; null before a successful open and on a folder.
    CSDZipHandle* zipHandle = nullptr;
    /// Set before an open: non-zero leaves the members in the archive, nothing is extracted.
    int keepCompressed = 0;

    /// Opens the archive and fills `itemTable`; extracts nothing.
    int OpenZipFileNonDecompress(const unsigned short* path);
    int OpenZipFileNonDecompress(std::u16string_view path) {
        return OpenZipFileNonDecompress(CTulStringW(path).c_str());
    }
    int OpenZipFileNonDecompress(std::string_view path) {
        return OpenZipFileNonDecompress(CTulStringW(path).c_str());
    }
    int OpenZipFileNonDecompress(const ODF::FilePath auto& path) {
        return OpenZipFileNonDecompress(CTulStringW(path).c_str());
    }
    /// The same on an archive in memory; `data` stays the caller's and must stay valid until `CloseFile`.
    int OpenZipFileNonDecompress(void* data, unsigned byteCount);
    /// The same on a mapping: `mapping` is the handle of a mapping object (see `MemoryMapping`), not a
    /// pointer.
    int LargeMemoryOpenZipFileNonDecompress(void* mapping, unsigned byteCount);

    /// Non-zero when the object was opened on a mapping.
    int IsVariableMemoryMap() const;
    void* GetMemoryMapHandle() const;
    unsigned GetMemoryMapSize() const;

    /// Index of the member; negative when there is none.
    int GetItemIndex(const unsigned short* itemName) const;
    int GetItemIndex(std::u16string_view itemName) const {
        return GetItemIndex(CTulStringW(itemName).c_str());
    }
    int GetItemIndex(std::string_view itemName) const { return GetItemIndex(CTulStringW(itemName).c_str()); }
    /// The member's uncompressed size in bytes as the archive claims it, but never more than could come out
    /// of it; `extra` is left alone.
    int GetItemSize(const unsigned short* itemName, long& size, int& extra) const;
    int GetItemSize(const CTulStringW& itemName, long& size, int& extra) const {
        return GetItemSize(itemName.c_str(), size, extra);
    }
    int GetItemSize(int index, long& size) const;
    /// Copies the uncompressed member into `buffer`; `size` is the capacity on entry and the byte count after
    /// it. 0, with the size that it takes, when the buffer is too small; 0 also for a damaged member, with as
    /// many bytes in the buffer as could be decoded.
    int GetItem(int index, unsigned char* buffer, long& size) const;
    /// Extracts the member to the file at `path`.
    int GetItem(int index, const unsigned short* path) const;
    int GetItem(int index, const CTulStringW& path) const { return GetItem(index, path.c_str()); }

    /// Extracts all members below `folder`, keeping their folders. A member whose name would leave the
    /// folder, or that the file system can't hold, is passed over and noted.
    int Decompress(const unsigned short* folder);
    int Decompress(const CTulStringW& folder) { return Decompress(folder.c_str()); }
    /// Extracts one member to the file at `path`.
    int Decompress(const unsigned short* itemName, const unsigned short* path);
    int Decompress(std::u16string_view itemName, std::u16string_view path) {
        return Decompress(CTulStringW(itemName).c_str(), CTulStringW(path).c_str());
    }
    int Decompress(std::string_view itemName, std::string_view path) {
        return Decompress(CTulStringW(itemName).c_str(), CTulStringW(path).c_str());
    }
    int Decompress(const CTulStringW& itemName, const ODF::FilePath auto& path) {
        return Decompress(itemName.c_str(), CTulStringW(path).c_str());
    }
    /// Streaming read: start with `cursor` and `byteCount` 0 and call again with the same arguments until the
    /// result is 0. Each other call has put the next `byteCount` bytes (at most `capacity`) into `buffer`.
    int Decompress(const unsigned short* itemName, void* buffer, int capacity, int& cursor, int& byteCount);
    int Decompress(const CTulStringW& itemName, void* buffer, int capacity, int& cursor, int& byteCount) {
        return Decompress(itemName.c_str(), buffer, capacity, cursor, byteCount);
    }

    /// Closes the archive; the object may be opened again or deleted afterwards.
    int CloseFile();

    /// Opens the archive; unless `keepCompressed` is set, extracts all members below `folder`, which is
    /// created (mode 0700) when it doesn't exist. 0 when the archive can't be opened.
    virtual int OpenAndExtract(const unsigned short* path, const unsigned short* folder);
    int OpenAndExtract(std::u16string_view path, std::u16string_view folder) {
        return OpenAndExtract(CTulStringW(path).c_str(), CTulStringW(folder).c_str());
    }
    int OpenAndExtract(std::string_view path, std::string_view folder) {
        return OpenAndExtract(CTulStringW(path).c_str(), CTulStringW(folder).c_str());
    }
    int OpenAndExtract(const ODF::FilePath auto& path, const ODF::FilePath auto& folder) {
        return OpenAndExtract(CTulStringW(path).c_str(), CTulStringW(folder).c_str());
    }
    /// Opens the archive and fills `itemTable`; extracts nothing.
    virtual int OpenForItems(const unsigned short* path);
    int OpenForItems(const CTulStringW& path) { return OpenForItems(path.c_str()); }
    /// Binds the object to a folder that already holds the extracted members.
    virtual int OpenFolder(const unsigned short* folder);
    int OpenFolder(const CTulStringW& folder) { return OpenFolder(folder.c_str()); }

    /// The bounds of the following opens and reads.
    void SetLimits(const ODF::Limits& limits);
    const ODF::Limits& GetLimits() const;
    /// Where faults are noted; not owned, null for nowhere.
    void SetDiagnostics(ODF::Diagnostics* diagnostics);
    ODF::Diagnostics* GetDiagnostics() const;

protected:
    struct State;
    State& state() const { return *state_; }

private:
    int bind(bool isOpen);

    std::unique_ptr<State> state_;
};

/// Reads an ODF archive, whose members may be encrypted. Encryption is described by the package's own
/// manifest; each member is decrypted when it is read or extracted.
class ODFMODEL_API CODFUnZip : public CSDUnZip {
public:
    CODFUnZip();
    ~CODFUnZip() override;

    /// Copies the password (UTF-16) for the following open; may be null or empty. The copy serves all
    /// opens until it is replaced, and is wiped when the object goes.
    void SetPassword(const unsigned short* password);
    void SetPassword(std::u16string_view password) { SetPassword(CTulStringW(password).c_str()); }
    void SetPassword(std::string_view password) { SetPassword(CTulStringW(password).c_str()); }

    /// As in `CSDUnZip`, with decryption. 0 also for a wrong password.
    using CSDUnZip::OpenAndExtract;
    using CSDUnZip::OpenForItems;
    int OpenAndExtract(const unsigned short* path, const unsigned short* folder) override;
    int OpenForItems(const unsigned short* path) override;
};
