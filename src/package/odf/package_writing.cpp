#include "package/odf/package_writing.h"

#include "package/odf/media_types.h"
#include "package/odf/member_encryption.h"
#include "platform/threads.h"
#include "serial/crypto/package_encryption.h"
#include "serial/zip/archive_writer.h"
#include "serial/zip/deflate.h"
#include "serial/zip/inflate.h"
#include "serial/zip/packer.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace ODF::package {

namespace {

using Encryption = OdfPackage::Encryption;
using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t kFileMode = 0100644;
constexpr std::uint32_t kFolderMode = 0040755;
/// A save may take so many times the work for keys that an open may.
constexpr std::uint64_t kKeyWorkOfSave = 10;
/// The first version of the format that knows encryption of the whole.
constexpr std::string_view kVersionOfWhole = "1.4";

Bytes ToBytes(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}

bool IsSignature(std::string_view name) noexcept {
    return name.starts_with("META-INF/") && name.find("signatures") != std::string_view::npos;
}

/// A member of the archive to be. Its bytes are its own, those of a member that a caller has put, or those of
/// the archive that was opened.
struct Planned {
    archive::PackedMember member;
    Bytes own;
    std::span<const unsigned char> packed;
    std::int64_t copied = -1;
};

class PackageWriter {
public:
    /// Without `encryption` everything is written in clear.
    PackageWriter(const OdfPackage::State& state, const OdfPackage::WriteOptions& options,
                  archive::DosTime now, const crypto::PackageEncryption* encryption,
                  const archive::NoteSink& notes)
        : state_(state), options_(options), now_(now), encryption_(encryption), notes_(notes),
          deflater_(options.threads == 0 ? platform::Processors() : options.threads, options.compression) {}

    Status write(Bytes& target) {
        isManifestNew_ = encryption_ || state_.manifest.isChanged() || state_.manifest.isEncrypted() ||
                         !state_.find(kManifestName);
        Status status = planAll();
        if (status == Status::Ok && encryption_) status = encryptAll();
        if (status != Status::Ok) return status;
        finishManifest();
        return writeArchive(target);
    }

private:
    Planned& plan(std::string_view name) {
        Planned& planned = plan_.emplace_back();
        planned.member.name = name;
        planned.member.time = now_;
        planned.member.unixMode = kFileMode;
        return planned;
    }

    Status planAll() {
        if (!deriveKeys()) return Status::Cancelled;
        Status status = planMimeType();
        std::uint64_t done = 0;
        for (const Entry& entry : state_.entries) {
            if (status != Status::Ok) return status;
            if (!notes_.goesOn({Progress::Step::Writing, entry.name, done++, state_.entries.size()}))
                return Status::Cancelled;
            if (!entry.isRemoved) status = planEntry(entry);
        }
        if (!manifest_) manifest_ = &plan(kManifestName);
        return status;
    }

    /// On all processors at once, for the members that will be read.
    bool deriveKeys() const {
        if (!state_.archive || !state_.archive->decryption()) return true;
        std::vector<const crypto::EncryptedRow*> rows;
        for (const Entry& entry : state_.entries) {
            if (entry.isRemoved || entry.isChanged) continue;
            const archive::Member* const member = state_.archive->member(entry.index);
            if (member && member->encryption && member->packedSize > 0) rows.push_back(member->encryption);
        }
        state_.archive->decryption()->allowMore(kKeyWorkOfSave);
        return state_.archive->decryption()->deriveKeys(rows, [&](std::size_t done, std::size_t total) {
            return notes_.goesOn({Progress::Step::Keys, {}, done, total});
        });
    }

    Status planMimeType() {
        const Entry* const entry = state_.find(kMimeTypeName);
        const std::string* const ofRow = state_.manifest.find("/", "media-type");
        const std::string& text = state_.mimeType.empty() && ofRow ? *ofRow : state_.mimeType;
        Bytes bytes(text.begin(), text.end());
        const bool isKept = entry && !state_.isMimeTypeSet && !state_.mimeType.empty();
        if (isKept) {
            bytes.clear();
            const Status status = state_.readEntry(*entry, state_.limits.memberBytes, bytes, notes_);
            if (status != Status::Ok) return status;
        }
        if (bytes.empty()) return Status::Ok;
        Planned& planned = plan(kMimeTypeName);
        if (isKept) planned.member.time = timeOf(*entry);
        store(planned, std::move(bytes));
        return Status::Ok;
    }

    Status planEntry(const Entry& entry) {
        switch (entry.kind) {
        case Entry::Kind::MimeType:
            return Status::Ok;
        case Entry::Kind::Manifest:
            manifest_ = &plan(entry.name); // filled when all others are known
            oldManifest_ = &entry;
            return Status::Ok;
        case Entry::Kind::Folder:
            // Some programs give their folders bytes; nobody reads them.
            plan(entry.name).member.unixMode = kFolderMode;
            plan_.back().member.time = timeOf(entry);
            return Status::Ok;
        case Entry::Kind::Member:
            break;
        }
        const bool isReplaced = options_.replace && options_.isChanged;
        const bool isAltered = state_.isChanged || isManifestNew_ || isReplaced;
        if (isAltered && !entry.isChanged && IsSignature(entry.name)) {
            notes_.add(NoteCode::General, Severity::Warning, entry.name,
                       "the signatures don't fit the changed package and are left out");
            return Status::Ok;
        }
        Planned& planned = plan(entry.name);
        if (options_.replace) {
            Bytes bytes;
            if (const std::optional<Status> status = options_.replace(entry.name, bytes)) {
                if (*status != Status::Ok) return *status;
                return planBytes(planned, entry, std::move(bytes));
            }
        }
        if (!entry.isChanged) planned.member.time = timeOf(entry);
        if (encryption_ && !IsBeyondManifest(entry.name)) return prepareToEncrypt(planned, entry);
        if (entry.isChanged) {
            pack(planned, entry.bytes, IsCompressed(mediaTypeOf(entry)));
            return Status::Ok;
        }
        if (!state_.archive->member(entry.index)->encryption) {
            copy(planned, entry);
            return Status::Ok;
        }
        Bytes plain;
        const Status status = read(entry, plain);
        if (status == Status::Ok) {
            const bool isCompressed = IsCompressed(mediaTypeOf(entry));
            pack(planned, plain, isCompressed);
            if (planned.own.empty()) store(planned, std::move(plain));
        }
        return status;
    }

    /// A member with other bytes than the package has.
    Status planBytes(Planned& planned, const Entry& entry, Bytes bytes) {
        if (state_.manifest.find(entry.name, "size")) sizes_.emplace_back(entry.name, bytes.size());
        if (encryption_ && !IsBeyondManifest(entry.name)) {
            jobs_.push_back({ToBytes(deflater_.deflateAnyway(bytes)), bytes.size(), {}});
            encrypted_.push_back(&planned);
            return Status::Ok;
        }
        pack(planned, bytes, IsCompressed(mediaTypeOf(entry)));
        if (planned.own.empty()) store(planned, std::move(bytes));
        return Status::Ok;
    }

    archive::DosTime timeOf(const Entry& entry) const {
        return archive::ToDosTime(state_.archive->member(entry.index)->time);
    }

    std::string_view mediaTypeOf(const Entry& entry) const {
        const std::string* const mediaType = state_.manifest.find(entry.name, "media-type");
        return mediaType && !mediaType->empty() ? std::string_view(*mediaType) : MediaTypeFor(entry.name, {});
    }

    /// The plain bytes of a member; together no more than the limits allow.
    Status read(const Entry& entry, Bytes& plain) {
        const std::uint64_t mostBytes =
            std::min(state_.limits.memberBytes, state_.limits.totalBytes - total_);
        const Status status = state_.readEntry(entry, mostBytes, plain, notes_);
        total_ += plain.size();
        if (status != Status::Ok && status != Status::Cancelled)
            notes_.add(NoteCode::WriteFailed, Severity::Error, entry.name,
                       "the member can't be read to be written");
        return status;
    }

    static void store(Planned& planned, Bytes bytes) {
        planned.own = std::move(bytes);
        planned.packed = planned.own;
        planned.member.method = ZIP_CM_STORE;
        planned.member.size = planned.member.packedSize = planned.own.size();
        planned.member.crc = archive::Crc32(0, planned.own);
    }

    /// Deflates where that saves something; else `plain` is stored and must stay.
    void pack(Planned& planned, std::span<const unsigned char> plain, bool isCompressed) {
        if (!isCompressed) planned.own = ToBytes(deflater_.deflate(plain));
        const bool isDeflated = !planned.own.empty();
        planned.packed = isDeflated ? std::span<const unsigned char>(planned.own) : plain;
        planned.member.method = isDeflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE;
        planned.member.size = plain.size();
        planned.member.packedSize = planned.packed.size();
        planned.member.crc = archive::Crc32(0, plain);
    }

    void copy(Planned& planned, const Entry& entry) {
        const archive::Member& original = *state_.archive->member(entry.index);
        planned.copied = entry.index;
        planned.member.method = original.method;
        planned.member.size = original.size;
        planned.member.packedSize = original.packedSize;
        planned.member.crc = original.crc;
        if (original.isSpecial) planned.member.unixMode = original.unixMode;
        planned.member.time = timeOf(entry);
        copiedBytes_ += original.packedSize;
    }

    Status prepareToEncrypt(Planned& planned, const Entry& entry) {
        Bytes plain;
        if (!entry.isChanged) {
            const Status status = read(entry, plain);
            if (status != Status::Ok) return status;
        }
        const std::span<const unsigned char> bytes = entry.isChanged ? entry.bytes : plain;
        jobs_.push_back({ToBytes(deflater_.deflateAnyway(bytes)), bytes.size(), {}});
        encrypted_.push_back(&planned);
        return Status::Ok;
    }

    Status encryptAll() {
        const Status status = EncryptMembers(*encryption_, jobs_, notes_);
        if (status == Status::Cancelled) return status;
        if (status != Status::Ok) {
            notes_.add(NoteCode::WriteFailed, Severity::Error, {}, "the members can't be encrypted");
            return status;
        }
        for (std::size_t place = 0; place < jobs_.size(); ++place) {
            encryptions_[encrypted_[place]->member.name] = {jobs_[place].plainSize,
                                                            std::move(jobs_[place].xml)};
            store(*encrypted_[place], std::move(jobs_[place].bytes));
        }
        return Status::Ok;
    }

    void finishManifest() {
        isManifestNew_ = isManifestNew_ || state_.manifest.isChanged(); // by the version of a member
        if (!isManifestNew_ && sizes_.empty()) {
            copy(*manifest_, *oldManifest_);
            return;
        }
        std::string text;
        if (sizes_.empty()) {
            text = state_.manifest.text(encryptions_);
        } else {
            Manifest manifest = state_.manifest;
            for (const auto& [name, size] : sizes_)
                manifest.set(name, "size", std::to_string(size));
            text = manifest.text(encryptions_);
        }
        Bytes bytes(text.begin(), text.end());
        pack(*manifest_, bytes, false);
        if (manifest_->own.empty()) store(*manifest_, std::move(bytes));
    }

    Status writeArchive(Bytes& target) {
        // Members of an honest archive don't share bytes, so that what is copied is no more than there was.
        if (copiedBytes_ > 0 && copiedBytes_ > state_.archive->byteCount()) {
            notes_.add(NoteCode::SizeLimit, Severity::Error, {}, "the members of the archive overlap");
            return Status::LimitExceeded;
        }
        std::size_t room = 0;
        for (const Planned& planned : plan_)
            room +=
                static_cast<std::size_t>(planned.member.packedSize) + 2 * planned.member.name.size() + 128;
        target.reserve(room);
        const std::unique_ptr<archive::Target> into = archive::MakeGrowingTarget(target);
        archive::ArchiveWriter writer(*into);
        const Planned* failed = nullptr;
        bool isWritten = true;
        for (const Planned& planned : plan_)
            isWritten = isWritten && writer.add(planned.member, bytesOf(planned, failed));
        isWritten = isWritten && writer.finish();
        if (isWritten) {
            into->finish(writer.size());
            return Status::Ok;
        }
        if (isCancelled_) return Status::Cancelled;
        if (writer.isOutOfMemory()) return Status::OutOfMemory;
        notes_.add(
            NoteCode::WriteFailed, Severity::Error, failed ? std::string_view(failed->member.name) : "",
            failed ? "the member can't be copied: its data is damaged" : "the archive can't be written");
        return Status::CouldNotWrite;
    }

    /// Asks the caller at the start of each member and now and then in a large one.
    bool goesOnPacking(const Planned& planned, std::uint64_t offset) {
        constexpr std::uint64_t kStride = std::uint64_t{1} << 20;
        if (offset != 0 && offset < nextAsking_) return true;
        packed_ += offset == 0 ? 1 : 0;
        nextAsking_ = offset + kStride;
        isCancelled_ = !notes_.goesOn({Progress::Step::Packing, planned.member.name, packed_, plan_.size()});
        return !isCancelled_;
    }

    archive::PackedBytes bytesOf(const Planned& planned, const Planned*& failed) {
        if (planned.copied >= 0)
            return [this, &planned, &failed,
                    read = archive::CopyOfPacked(*state_.archive, planned.copied, notes_)](
                       std::uint64_t offset, std::span<unsigned char> target) {
                if (!goesOnPacking(planned, offset)) return false;
                const bool isRead = read(offset, target);
                if (!isRead) failed = &planned;
                return isRead;
            };
        return [this, &planned](std::uint64_t offset, std::span<unsigned char> target) {
            if (!goesOnPacking(planned, offset)) return false;
            const auto from = planned.packed.subspan(static_cast<std::size_t>(offset), target.size());
            std::copy(from.begin(), from.end(), target.begin());
            return true;
        };
    }

    const OdfPackage::State& state_;
    const OdfPackage::WriteOptions& options_;
    archive::DosTime now_;
    const crypto::PackageEncryption* encryption_;
    const archive::NoteSink& notes_;
    bool isManifestNew_ = false;
    std::uint64_t total_ = 0; ///< plain bytes read so far
    std::uint64_t copiedBytes_ = 0;
    std::uint64_t packed_ = 0; ///< members that have gone into the archive
    std::uint64_t nextAsking_ = 0;
    bool isCancelled_ = false;
    archive::Deflater deflater_;
    std::deque<Planned> plan_; ///< stays in place as it grows
    Planned* manifest_ = nullptr;
    const Entry* oldManifest_ = nullptr;
    std::vector<std::pair<std::string, std::size_t>> sizes_; ///< of replaced members whose rows tell a size
    std::vector<Planned*> encrypted_;                        ///< by the job that encrypts them
    std::vector<EncryptionJob> jobs_;
    RowEncryptions encryptions_;
};

/// A package whose one member is the whole package.
Status WriteWhole(const OdfPackage::State& state, const OdfPackage::WriteOptions& options,
                  crypto::ByteView password, archive::DosTime now, Bytes& target,
                  const archive::NoteSink& notes) {
    Bytes inner;
    Status status = PackageWriter(state, options, now, nullptr, notes).write(inner);
    if (status != Status::Ok) return status;
    OdfPackage::State outer;
    outer.limits = state.limits;
    outer.mimeType = state.mimeType;
    const std::string* const ofRow = state.manifest.find("/", "media-type");
    if (outer.mimeType.empty() && ofRow) outer.mimeType = *ofRow;
    outer.manifest.setVersion(kVersionOfWhole);
    outer.manifest.set("/", "version", kVersionOfWhole);
    for (const std::string_view path : {std::string_view("/"), kEncryptedPackage})
        outer.manifest.set(path, "media-type", outer.mimeType);
    Entry& entry = outer.entries.emplace_back();
    entry.name = kEncryptedPackage;
    entry.bytes = std::move(inner);
    entry.isChanged = true;
    const crypto::PackageEncryption encryption(password, crypto::Scheme::Whole);
    return PackageWriter(outer, {}, now, &encryption, notes).write(target);
}

} // namespace

Status WritePackage(const OdfPackage::State& state, const OdfPackage::WriteOptions& options, Bytes& archive,
                    const archive::NoteSink& notes) {
    Encryption encryption = options.encryption.value_or(state.encryption);
    if (!options.encryption && encryption == Encryption::None && !options.password.empty())
        encryption = Encryption::Members;
    const archive::DosTime now =
        options.fixedTime ? archive::ToUtcDosTime(*options.fixedTime) : archive::PresentDosTime();
    if (encryption == Encryption::None)
        return PackageWriter(state, options, now, nullptr, notes).write(archive);

    const crypto::ByteView given(reinterpret_cast<const unsigned char*>(options.password.data()),
                                 options.password.size());
    const crypto::ByteView password = given.empty() ? state.password.view() : given;
    if (password.empty()) {
        notes.add(NoteCode::General, Severity::Error, {}, "there is no password to encrypt with");
        return Status::PasswordNeeded;
    }
    if (encryption == Encryption::Whole) return WriteWhole(state, options, password, now, archive, notes);
    const crypto::PackageEncryption members(password, crypto::Scheme::Members);
    return PackageWriter(state, options, now, &members, notes).write(archive);
}

} // namespace ODF::package
