#include "package/odf/package_opening.h"

#include "package/odf/media_types.h"
#include "serial/zip/encrypted_archive.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace ODF::package {

namespace {

/// A media type is one short line.
constexpr std::uint64_t kMaxMimeType = 4096;

std::string Trimmed(const std::vector<unsigned char>& bytes) {
    const std::string text(bytes.begin(), bytes.end());
    constexpr std::string_view blanks(" \t\r\n\0", 5);
    const auto start = text.find_first_not_of(blanks);
    return start == std::string::npos ? std::string()
                                      : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

/// How programs that are less exact may read a name.
std::string Loosely(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    std::string result;
    for (std::size_t start = 0; start < name.size();) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        const std::string_view step = std::string_view(name).substr(start, end - start);
        if (!step.empty() && step != ".") result.append(result.empty() ? "" : "/").append(step);
        start = end + 1;
    }
    return result;
}

class Opening {
public:
    Opening(OdfPackage::State& state, const archive::NoteSink& notes) : state_(state), notes_(notes) {}

    /// False, with the status in the notes, when there is no readable archive.
    bool openArchive(std::vector<unsigned char> bytes) {
        std::unique_ptr<CSDZipHandle> outer =
            CSDZipHandle::openMemory(std::move(bytes), state_.limits, notes_);
        if (!outer) return false;
        const CSDZipHandle* const asOpened = outer.get();
        state_.archive = archive::MakeReadable(std::move(outer), state_.password, state_.limits, notes_);
        if (!state_.archive) return false;
        if (state_.archive.get() != asOpened)
            state_.encryption = OdfPackage::Encryption::Whole;
        else if (state_.archive->decryption())
            state_.encryption = OdfPackage::Encryption::Members;
        if (state_.encryption == OdfPackage::Encryption::None) state_.password.wipe();
        return true;
    }

    void readEntries() {
        std::unordered_set<std::string> loose;
        const std::vector<archive::Member>& members = state_.archive->members();
        for (std::size_t index = 0; index < members.size(); ++index) {
            const archive::Member& member = members[index];
            const auto place = static_cast<std::int64_t>(index);
            if (member.name.empty() || state_.archive->find(member.name) != place) continue;
            if (!loose.insert(Loosely(member.name)).second)
                notes_.add(NoteCode::MemberDuplicate, Severity::Warning, member.name,
                           "some programs take this member and another one for the same");
            Entry& entry = state_.entries.emplace_back();
            entry.name = member.name;
            entry.index = place;
            if (member.isFolder) entry.kind = Entry::Kind::Folder;
            if (entry.name == kMimeTypeName) entry.kind = Entry::Kind::MimeType;
            if (entry.name == kManifestName) entry.kind = Entry::Kind::Manifest;
            state_.places.emplace(entry.name, state_.entries.size() - 1);
        }
    }

    void readMimeType() {
        const Entry* const entry = state_.find(kMimeTypeName);
        if (!entry) return;
        std::vector<unsigned char> bytes;
        if (state_.readEntry(*entry, kMaxMimeType, bytes, notes_) == Status::Ok)
            state_.mimeType = Trimmed(bytes);
    }

    void readManifest() {
        const Entry* const entry = state_.find(kManifestName);
        if (!entry) {
            notes_.add(NoteCode::ManifestFault, Severity::Warning, kManifestName, "there is no manifest");
            completeManifest();
            return;
        }
        std::vector<unsigned char> bytes;
        const std::uint64_t mostBytes =
            std::min<std::uint64_t>(state_.limits.memberBytes, state_.limits.textBytes);
        const Status status = state_.readEntry(*entry, mostBytes, bytes, notes_);
        // Rows come from members and folders, an encrypted one of some twenty nodes from each.
        const std::size_t mostNodes = 64 * state_.entries.size() + 20'000;
        const Manifest::ReadResult result = state_.manifest.read(bytes, state_.limits, mostNodes);
        if (status == Status::Ok && result == Manifest::ReadResult::Ok) return;
        const bool isTooLarge = result == Manifest::ReadResult::TooLarge;
        notes_.add(NoteCode::ManifestFault, Severity::Warning, kManifestName,
                   isTooLarge ? "the manifest has far more rows than the archive has members; it isn't used"
                              : "the manifest is damaged; what follows the fault is lost");
        if (isTooLarge) {
            const std::string* const mediaType = state_.manifest.find("/", "media-type");
            Manifest fresh;
            if (mediaType) fresh.set("/", "media-type", *mediaType);
            state_.manifest = std::move(fresh);
        }
        completeManifest();
    }

private:
    /// Gives rows to the members of a package whose manifest is missing or damaged, for without them no
    /// program would read what is written.
    void completeManifest() {
        Manifest& manifest = state_.manifest;
        manifest.setChanged();
        if (!manifest.contains("/")) manifest.set("/", "media-type", state_.mimeType);
        for (const Entry& entry : state_.entries) {
            if (entry.kind != Entry::Kind::Member || IsBeyondManifest(entry.name) ||
                manifest.contains(entry.name))
                continue;
            manifest.set(entry.name, "media-type", MediaTypeFor(entry.name, {}));
        }
    }

    OdfPackage::State& state_;
    const archive::NoteSink& notes_;
};

} // namespace

Status OpenPackage(OdfPackage::State& state, std::vector<unsigned char> bytes,
                   const archive::NoteSink& notes) {
    Opening opening(state, notes);
    if (!opening.openArchive(std::move(bytes))) return notes.diagnostics->status();
    opening.readEntries();
    opening.readMimeType();
    opening.readManifest();
    return Status::Ok;
}

} // namespace ODF::package
