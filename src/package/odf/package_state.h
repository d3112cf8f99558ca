#pragma once

#include "package/odf/manifest.h"
#include "package/odf/odf_package.h"
#include "serial/crypto/crypto.h"
#include "serial/zip/archive.h"

#include <new>
#include <stdexcept>
#include <unordered_map>

namespace ODF::package {

inline constexpr std::string_view kMimeTypeName = "mimetype";
inline constexpr std::string_view kManifestName = "META-INF/manifest.xml";
inline constexpr std::string_view kEncryptedPackage = "encrypted-package";

/// What the manifest doesn't list and encryption leaves alone.
constexpr bool IsBeyondManifest(std::string_view name) noexcept {
    return name == kMimeTypeName || name.starts_with("META-INF/");
}

/// A place in the archive: a member or a folder.
struct Entry {
    enum class Kind { Member, Folder, MimeType, Manifest };

    std::string name;
    Kind kind = Kind::Member;
    std::int64_t index = -1; ///< in the archive that was opened; negative for a new one
    bool isChanged = false;  ///< `bytes` count, not those of the archive
    bool isRemoved = false;
    std::vector<unsigned char> bytes;
};

/// Hands on what `work` notes and gives; a failed allocation becomes a status.
template<typename Work>
Status WithNotes(Diagnostics& diagnostics, const ProgressCallback& progress, Work work) noexcept {
    Status status = Status::OutOfMemory;
    try {
        // One of its own, since the status of the caller's may tell of an earlier failure.
        Diagnostics own;
        try {
            status = work(archive::NoteSink{&own, &progress});
        } catch (const std::bad_alloc&) {
            status = Status::OutOfMemory;
        } catch (const std::length_error&) {
            status = Status::OutOfMemory;
        }
        for (const Note& note : own.notes())
            diagnostics.add(note);
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): notes may be lost, the status isn't
    }
    return status;
}

} // namespace ODF::package

namespace ODF {

struct OdfPackage::State {
    Limits limits;
    crypto::Secret password; ///< UTF-8
    Encryption encryption = Encryption::None;
    std::unique_ptr<CSDZipHandle> archive; ///< null for a new package
    std::vector<package::Entry> entries;
    std::unordered_map<std::string, std::size_t> places;   ///< of the entries that weren't removed
    std::unordered_map<std::string, std::size_t> nextFree; ///< number to try for a name that is taken
    package::Manifest manifest;
    std::string mimeType;       ///< trimmed
    bool isMimeTypeSet = false; ///< by a caller, so that it differs from the archive's
    bool isChanged = false;     ///< a member or a row

    const package::Entry* find(std::string_view name) const;
    /// As `find`, but only for what callers see.
    const package::Entry* findMember(std::string_view name) const;
    /// The plain bytes of an entry, appended to `bytes`; `Cancelled` when the caller doesn't want to go on.
    Status readEntry(const package::Entry& entry, std::uint64_t mostBytes, Bytes& bytes,
                     const archive::NoteSink& notes) const;
};

} // namespace ODF
