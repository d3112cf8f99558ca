#pragma once

#include "platform/files.h"
#include "serial/crypto/package_decryption.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/progress.h>
#include <odfmodel/serial/unzip.h>

#include <zip.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace ODF::archive {

/// One member as the archive's directory tells of it. Sizes are claims until the member has been read.
struct Member {
    std::string name; ///< UTF-8
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
    std::uint32_t crc = 0;
    std::uint64_t mostBytes = 0; ///< that can come out of the archive under this name, claims or not
    std::uint16_t method = 0;
    std::uint32_t unixMode = 0; ///< where a Unix system wrote it, with the bits of the file's kind
    std::int64_t time = 0;      ///< of its last change, in seconds since 1970
    bool isFolder = false;
    bool isSpecial = false; ///< a link or device in the eyes of the program that made the archive
    bool isZipEncrypted = false;
    const crypto::EncryptedRow* encryption = nullptr; ///< set when the package's manifest calls it encrypted

    /// Bytes after decrypting and inflating: what the file claims, as far as so many can come out of it at
    /// all, so that a caller may provide that much memory.
    std::uint64_t plainSize() const noexcept {
        return std::min(encryption ? encryption->size.value_or(size) : size, mostBytes);
    }
    /// Whether there are bytes to read, as far as the directory tells.
    bool isReadable() const noexcept { return !isFolder && !isSpecial && !isZipEncrypted; }
};

/// What an operation tells its caller: faults, and how far it has come.
struct NoteSink {
    Diagnostics* diagnostics = nullptr;
    const ProgressCallback* progress = nullptr; ///< throws nothing

    void add(NoteCode code, Severity severity, std::string_view member, std::string_view text) const;
    void setStatus(Status status) const noexcept;
    /// False when the caller wants the operation to end.
    bool goesOn(const Progress& state) const { return !progress || !*progress || (*progress)(state); }
};

} // namespace ODF::archive

/// An open archive: libzip's object, its directory and, for an encrypted package, what decrypts it. It holds
/// one descriptor at most, however many members there are.
class CSDZipHandle {
public:
    static std::unique_ptr<CSDZipHandle> openFile(const ODF::platform::Path& path, const ODF::Limits& limits,
                                                  const ODF::archive::NoteSink& notes);
    /// The bytes stay the caller's.
    static std::unique_ptr<CSDZipHandle> openMemory(std::span<const unsigned char> bytes,
                                                    const ODF::Limits& limits,
                                                    const ODF::archive::NoteSink& notes);
    /// Takes the bytes over.
    static std::unique_ptr<CSDZipHandle> openMemory(std::vector<unsigned char> bytes,
                                                    const ODF::Limits& limits,
                                                    const ODF::archive::NoteSink& notes);
    CSDZipHandle(const CSDZipHandle&) = delete;
    CSDZipHandle& operator=(const CSDZipHandle&) = delete;
    ~CSDZipHandle() = default;

    /// Size of the archive.
    std::uint64_t byteCount() const noexcept { return byteCount_; }
    zip_t* archive() const noexcept { return archive_.get(); }
    const std::vector<ODF::archive::Member>& members() const noexcept { return members_; }
    /// Null for an index that there isn't.
    const ODF::archive::Member* member(std::int64_t index) const noexcept;
    /// Index of the last member of that name, which is the one that counts; negative when there is none.
    std::int64_t find(std::string_view name) const;

    /// Members by name for the interface.
    ZipItemTable makeTable() const;

    /// Binds the rows of a manifest to their members. `decryption` may be null, and they can't be read then.
    void setEncryption(std::vector<ODF::crypto::EncryptedRow> rows,
                       std::unique_ptr<ODF::crypto::PackageDecryption> decryption);
    ODF::crypto::PackageDecryption* decryption() const noexcept { return decryption_.get(); }

private:
    CSDZipHandle() = default;
    template<typename MakeSource>
    static std::unique_ptr<CSDZipHandle> open(MakeSource makeSource, std::uint64_t byteCount,
                                              const ODF::Limits& limits, const ODF::archive::NoteSink& notes);
    bool openSource(zip_source_t* source, zip_error_t* error, const ODF::Limits& limits,
                    const ODF::archive::NoteSink& notes);
    void readDirectory(const ODF::archive::NoteSink& notes);

    std::uint64_t byteCount_ = 0;
    std::vector<unsigned char> ownBytes_; // must outlive the archive on them
    std::unique_ptr<zip_t, decltype(&zip_discard)> archive_{nullptr, zip_discard};
    std::vector<ODF::archive::Member> members_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    std::vector<ODF::crypto::EncryptedRow> rows_;
    std::unique_ptr<ODF::crypto::PackageDecryption> decryption_;
};
