#include "package/odf/odf_package.h"

#include "package/odf/media_types.h"
#include "package/odf/package_opening.h"
#include "package/odf/package_state.h"
#include "package/odf/package_writing.h"
#include "serial/zip/extraction.h"
#include "serial/zip/member_stream.h"

#include <algorithm>
#include <utility>

namespace ODF {

using package::Entry;

namespace {

/// The longest name that an archive can hold.
constexpr std::size_t kMaxName = 65535;
/// Up to here memory is taken for a member on the word of the archive's directory.
constexpr std::uint64_t kMaxReserved = std::uint64_t{64} << 20;

bool MayBeMember(std::string_view name) {
    return !name.empty() && name.size() <= kMaxName && name.back() != '/' && name.back() != '\\' &&
           name.find('\0') == std::string_view::npos && name != package::kMimeTypeName &&
           name != package::kManifestName;
}

crypto::Secret ToSecret(std::string_view text) {
    return crypto::Secret({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

Status ToStatus(archive::ReadResult result, const archive::Member& member) noexcept {
    switch (result) {
    case archive::ReadResult::Ok:
        return Status::Ok;
    case archive::ReadResult::WrongKey:
        return Status::WrongPassword;
    case archive::ReadResult::TooLarge:
        return Status::LimitExceeded;
    case archive::ReadResult::BadEncryption:
        return Status::BadIndex;
    case archive::ReadResult::Refused: // by the caller's progress alone
        return Status::Cancelled;
    case archive::ReadResult::Unsupported:
        return member.encryption || member.isZipEncrypted ? Status::UnsupportedEncryption
                                                          : Status::NotReadable;
    default:
        return Status::NotReadable;
    }
}

} // namespace

const Entry* OdfPackage::State::find(std::string_view name) const {
    const auto found = places.find(std::string(name));
    return found == places.end() ? nullptr : &entries[found->second];
}

const Entry* OdfPackage::State::findMember(std::string_view name) const {
    const Entry* const entry = find(name);
    return entry && entry->kind == Entry::Kind::Member ? entry : nullptr;
}

Status OdfPackage::State::readEntry(const Entry& entry, std::uint64_t mostBytes, Bytes& bytes,
                                    const archive::NoteSink& notes) const {
    if (entry.isChanged) {
        bytes.insert(bytes.end(), entry.bytes.begin(), entry.bytes.end());
        return Status::Ok;
    }
    const archive::Member& member = *archive->member(entry.index);
    bytes.reserve(static_cast<std::size_t>(std::min({member.plainSize(), mostBytes, kMaxReserved})));
    const archive::ReadResult result = archive::MemberReader(*archive).read(
        entry.index, mostBytes, [&](std::span<const unsigned char> piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            return notes.goesOn({Progress::Step::Reading, member.name, bytes.size(), member.plainSize()});
        });
    if (result != archive::ReadResult::Refused) archive::NoteResult(result, member, notes);
    return ToStatus(result, member);
}

OdfPackage::OdfPackage() : state_(std::make_unique<State>()) {}
OdfPackage::OdfPackage(OdfPackage&& other) noexcept = default;
OdfPackage& OdfPackage::operator=(OdfPackage&& other) noexcept = default;
OdfPackage::~OdfPackage() = default;

Status OdfPackage::open(Bytes bytes, std::string_view passwordUtf8, const Limits& limits,
                        Diagnostics& diagnostics, const ProgressCallback& progress) {
    return package::WithNotes(diagnostics, progress, [&](const archive::NoteSink& notes) {
        auto opened = std::make_unique<State>();
        opened->limits = limits;
        opened->password = ToSecret(passwordUtf8);
        const Status status = package::OpenPackage(*opened, std::move(bytes), notes);
        if (status == Status::Ok) state_ = std::move(opened);
        return status;
    });
}

std::string OdfPackage::mediaType() const {
    if (!state_->mimeType.empty()) return state_->mimeType;
    return mediaTypeOf("/");
}

void OdfPackage::setMediaType(std::string_view mediaType) {
    state_->manifest.set("/", "media-type", mediaType);
    if (state_->mimeType == mediaType) return;
    state_->mimeType = mediaType;
    state_->isMimeTypeSet = true;
    state_->isChanged = true;
}

std::string OdfPackage::version() const {
    const std::string* const version = state_->manifest.find("/", "version");
    return version ? *version : state_->manifest.version();
}

void OdfPackage::setVersion(std::string_view version) {
    state_->manifest.set("/", "version", version);
    state_->manifest.setVersion(version);
}

std::vector<std::string> OdfPackage::names() const {
    std::vector<std::string> names;
    names.reserve(state_->entries.size());
    for (const Entry& entry : state_->entries)
        if (entry.kind == Entry::Kind::Member && !entry.isRemoved) names.push_back(entry.name);
    return names;
}

bool OdfPackage::contains(std::string_view name) const {
    return state_->findMember(name) != nullptr;
}

std::uint64_t OdfPackage::sizeOf(std::string_view name) const {
    const Entry* const entry = state_->findMember(name);
    if (!entry) return 0;
    return entry->isChanged ? entry->bytes.size() : state_->archive->member(entry->index)->plainSize();
}

Status OdfPackage::read(std::string_view name, Bytes& bytes, Diagnostics& diagnostics,
                        const ProgressCallback& progress) const {
    bytes.clear();
    return package::WithNotes(diagnostics, progress, [&](const archive::NoteSink& notes) {
        const Entry* const entry = state_->findMember(name);
        if (entry) return state_->readEntry(*entry, state_->limits.memberBytes, bytes, notes);
        notes.add(NoteCode::MemberMissing, Severity::Error, name, "there is no such member");
        return Status::NotReadable;
    });
}

std::vector<FileEntry> OdfPackage::fileEntries() const {
    std::vector<FileEntry> found;
    if (!state_->archive) return found;
    const std::vector<archive::Member>& members = state_->archive->members();
    for (std::size_t index = 0; index < members.size(); ++index) {
        const archive::Member& member = members[index];
        if (state_->archive->find(member.name) == static_cast<std::int64_t>(index)) // the last of its name
            found.push_back({member.name, member.plainSize(), member.isFolder});
    }
    return found;
}

Status OdfPackage::readFileEntry(std::string_view name, Bytes& bytes, Diagnostics& diagnostics) const {
    bytes.clear();
    return package::WithNotes(diagnostics, {}, [&](const archive::NoteSink& notes) {
        Entry entry;
        entry.index = state_->archive ? state_->archive->find(name) : -1;
        if (entry.index >= 0) return state_->readEntry(entry, state_->limits.memberBytes, bytes, notes);
        notes.add(NoteCode::MemberMissing, Severity::Error, name, "there is no such member");
        return Status::NotReadable;
    });
}

std::string OdfPackage::mediaTypeOf(std::string_view name) const {
    const std::string* const mediaType = state_->manifest.find(name, "media-type");
    return mediaType ? *mediaType : std::string();
}

void OdfPackage::setMediaTypeOf(std::string_view name, std::string_view mediaType) {
    if (!package::IsBeyondManifest(name)) state_->manifest.set(name, "media-type", mediaType);
}

bool OdfPackage::put(std::string_view name, Bytes bytes, std::string_view mediaType) {
    if (!MayBeMember(name)) return false;
    State& state = *state_;
    if (!package::IsBeyondManifest(name)) {
        const bool isNew = !state.findMember(name);
        const bool hasRow = state.manifest.contains(name);
        if (!mediaType.empty() || (isNew && !hasRow))
            state.manifest.set(name, "media-type",
                               mediaType.empty() ? package::MediaTypeFor(name, bytes) : mediaType);
        if (state.manifest.find(name, "size")) state.manifest.set(name, "size", std::to_string(bytes.size()));
    }
    const auto [place, isAdded] = state.places.try_emplace(std::string(name), state.entries.size());
    if (isAdded) {
        try {
            state.entries.emplace_back().name = name;
        } catch (...) {
            if (state.entries.size() > place->second) state.entries.pop_back();
            state.places.erase(place);
            throw;
        }
    }
    Entry& entry = state.entries[place->second];
    entry.bytes = std::move(bytes);
    entry.isChanged = true;
    state.isChanged = true;
    return true;
}

std::string OdfPackage::addFree(std::string_view folder, std::string_view fileName, Bytes bytes,
                                std::string_view mediaType) {
    const std::string_view plain = fileName.substr(fileName.find_last_of("/\\") + 1);
    while (folder.ends_with('/'))
        folder.remove_suffix(1);
    const std::string start = folder.empty() ? std::string() : std::string(folder) + '/';
    const std::size_t dot = std::min(plain.rfind('.'), plain.size());
    std::string name = start + std::string(plain);
    if (plain.empty() || plain == "." || plain == "..") return {};
    if (state_->places.contains(name)) {
        const std::string stem = start + std::string(plain.substr(0, dot)) + '-';
        std::size_t& number = state_->nextFree.try_emplace(name, 2).first->second;
        do
            name = stem + std::to_string(number++) + std::string(plain.substr(dot));
        while (state_->places.contains(name));
    }
    return put(name, std::move(bytes), mediaType) ? name : std::string();
}

bool OdfPackage::remove(std::string_view name) {
    if (!state_->findMember(name)) return false;
    const auto place = state_->places.find(std::string(name));
    Entry& entry = state_->entries[place->second];
    entry.isRemoved = true;
    entry.bytes = {};
    state_->places.erase(place);
    state_->manifest.remove(name);
    state_->isChanged = true;
    return true;
}

std::size_t OdfPackage::removeFolder(std::string_view folder) {
    while (folder.ends_with('/'))
        folder.remove_suffix(1);
    if (folder.empty()) return 0;
    const std::string start = std::string(folder) + '/';
    std::size_t count = 0;
    for (Entry& entry : state_->entries) {
        const bool isBelow = entry.kind == Entry::Kind::Member || entry.kind == Entry::Kind::Folder;
        if (entry.isRemoved || !isBelow || !entry.name.starts_with(start)) continue;
        if (entry.kind == Entry::Kind::Member) ++count;
        state_->places.erase(entry.name);
        entry.isRemoved = true;
        entry.bytes = {};
        state_->isChanged = true;
    }
    if (state_->manifest.removeBelow(start) > 0) state_->isChanged = true;
    return count;
}

Status OdfPackage::write(const WriteOptions& options, Bytes& archive, Diagnostics& diagnostics) const {
    archive.clear();
    const Status status =
        package::WithNotes(diagnostics, options.progress, [&](const archive::NoteSink& notes) {
            return package::WritePackage(*state_, options, archive, notes);
        });
    if (status != Status::Ok) archive = {};
    return status;
}

OdfPackage::Encryption OdfPackage::encryption() const noexcept {
    return state_->encryption;
}

void OdfPackage::setEncryption(Encryption encryption, std::string_view passwordUtf8) {
    if (!passwordUtf8.empty()) state_->password = ToSecret(passwordUtf8);
    if (encryption == Encryption::None) state_->password.wipe();
    state_->encryption = encryption;
}

} // namespace ODF
