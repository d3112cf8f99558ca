#include "serial/zip/encrypted_archive.h"

#include "serial/crypto/manifest_reader.h"
#include "serial/zip/member_stream.h"

#include <algorithm>

namespace ODF::archive {

namespace {

constexpr std::string_view kManifest = "META-INF/manifest.xml";
/// The member that holds the whole package in the later form of encryption.
constexpr std::string_view kInnerPackage = "encrypted-package";
/// So many members are tried before the password counts as wrong: one of them may be damaged.
constexpr std::size_t kMaxTries = 3;
constexpr std::string_view kTooMuchWork = "the key derivation asks for more work than the limits allow";

std::vector<unsigned char> ReadWhole(const CSDZipHandle& handle, std::int64_t index, const Limits& limits,
                                     ReadResult& result) {
    std::vector<unsigned char> bytes;
    result = MemberReader(handle).read(index, limits.memberBytes, [&](std::span<const unsigned char> piece) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
        return true;
    });
    return bytes;
}

/// Fails for good: the status, and a note that says it in words.
std::unique_ptr<CSDZipHandle> Refuse(const NoteSink& notes, Status status, std::string_view member,
                                     std::string_view text) {
    notes.add(NoteCode::General, Severity::Error, member, text);
    notes.setStatus(status);
    return nullptr;
}

/// The encrypted members that there is something to decrypt of, the smallest first.
std::vector<std::int64_t> EncryptedMembers(const CSDZipHandle& handle) {
    std::vector<std::int64_t> indices;
    for (std::size_t index = 0; index < handle.members().size(); ++index) {
        const Member& member = handle.members()[index];
        if (member.encryption && member.isReadable() && member.packedSize > 0)
            indices.push_back(static_cast<std::int64_t>(index));
    }
    std::stable_sort(indices.begin(), indices.end(), [&](std::int64_t a, std::int64_t b) {
        return handle.member(a)->packedSize < handle.member(b)->packedSize;
    });
    return indices;
}

/// `Ok` when the password opens one of the members, or when no member can tell; else why it opens none.
Status TryPassword(const CSDZipHandle& handle, const std::vector<std::int64_t>& indices, const Limits& limits,
                   const NoteSink& notes) {
    std::size_t tries = 0;
    Status status = Status::Ok;
    for (const std::int64_t index : indices) {
        const crypto::EncryptedRow& row = *handle.member(index)->encryption;
        if (!row.data.provesPassword() || !handle.decryption()->isUsable(row)) continue;
        if (!notes.goesOn({Progress::Step::Keys, handle.member(index)->name, tries, 0}))
            return Status::Cancelled;
        std::vector<unsigned char> bytes;
        const ReadResult read = ReadCiphertext(handle, index, limits.memberBytes, bytes);
        if (read == ReadResult::Ok) {
            switch (handle.decryption()->decrypt(row, bytes)) {
            case crypto::DecryptResult::Ok:
                return Status::Ok;
            case crypto::DecryptResult::WrongKey:
                status = Status::WrongPassword; // a right one may be spoilt by damage, never the other way
                break;
            case crypto::DecryptResult::TooMuchWork:
                return Status::LimitExceeded;
            case crypto::DecryptResult::Damaged:
                if (status == Status::Ok) status = Status::BadIndex;
            }
        } else if (status == Status::Ok) {
            status = read == ReadResult::TooLarge  ? Status::LimitExceeded
                     : read == ReadResult::NotRead ? Status::NotReadable
                                                   : Status::BadIndex;
        }
        if (++tries == kMaxTries) break;
    }
    return status;
}

std::unique_ptr<CSDZipHandle> OpenInner(const CSDZipHandle& outer, std::int64_t index, const Limits& limits,
                                        const NoteSink& notes) {
    ReadResult result = ReadResult::Ok;
    std::vector<unsigned char> bytes = ReadWhole(outer, index, limits, result);
    switch (result) {
    case ReadResult::Ok:
        return CSDZipHandle::openMemory(std::move(bytes), limits, notes);
    case ReadResult::TooLarge:
        return Refuse(notes, Status::LimitExceeded, kInnerPackage, ToText(result));
    case ReadResult::WrongKey:
        return Refuse(notes, Status::WrongPassword, kInnerPackage, ToText(result));
    case ReadResult::BadEncryption:
        return Refuse(notes, Status::BadIndex, kInnerPackage, ToText(result));
    case ReadResult::NotRead:
        return Refuse(notes, Status::NotReadable, kInnerPackage, ToText(result));
    default:
        return Refuse(notes, Status::NotAnArchive, kInnerPackage, ToText(result));
    }
}

} // namespace

std::unique_ptr<CSDZipHandle> MakeReadable(std::unique_ptr<CSDZipHandle> handle,
                                           const crypto::Secret& password, const Limits& limits,
                                           const NoteSink& notes) {
    const std::int64_t manifest = handle->find(kManifest);
    if (manifest < 0) return handle;
    ReadResult result = ReadResult::Ok;
    crypto::EncryptedRows found =
        crypto::ReadEncryptedRows(ReadWhole(*handle, manifest, limits, result), limits);
    if (found.rows.empty()) return handle;
    if (!found.isWellFormed)
        notes.add(NoteCode::ManifestFault, Severity::Warning, kManifest,
                  "encryption data behind a fault is lost");
    if (password.empty()) return Refuse(notes, Status::PasswordNeeded, {}, "the package is encrypted");

    handle->setEncryption(std::move(found.rows),
                          std::make_unique<crypto::PackageDecryption>(password.view(), limits));
    const std::vector<std::int64_t> indices = EncryptedMembers(*handle);
    const auto isUsable = [&](std::int64_t index) {
        return handle->decryption()->isUsable(*handle->member(index)->encryption);
    };
    if (!indices.empty() && std::none_of(indices.begin(), indices.end(), isUsable)) {
        const bool isKnown = std::any_of(indices.begin(), indices.end(), [&](std::int64_t index) {
            return handle->member(index)->encryption->data.isSupported();
        });
        return isKnown ? Refuse(notes, Status::LimitExceeded, {}, kTooMuchWork)
                       : Refuse(notes, Status::UnsupportedEncryption, {}, "an encryption that isn't known");
    }
    const std::int64_t inner = handle->find(kInnerPackage);
    if (inner >= 0 && handle->member(inner)->encryption) return OpenInner(*handle, inner, limits, notes);
    switch (const Status status = TryPassword(*handle, indices, limits, notes)) {
    case Status::Ok:
        return handle;
    case Status::LimitExceeded:
        return Refuse(notes, status, {}, kTooMuchWork);
    case Status::WrongPassword:
        return Refuse(notes, status, {}, "the password doesn't fit, or the data is damaged");
    case Status::NotReadable:
        return Refuse(notes, status, {}, ToText(ReadResult::NotRead));
    case Status::Cancelled:
        notes.setStatus(status);
        return nullptr;
    default:
        return Refuse(notes, status, kManifest, ToText(ReadResult::BadEncryption));
    }
}

} // namespace ODF::archive
