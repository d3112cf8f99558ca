#include "info/report.h"

#include "console.h"
#include "info/metadata.h"
#include "package/archive.h"
#include "package/kind.h"
#include "package/manifest.h"
#include "package/reason.h"
#include "password.h"

#include <iomanip>
#include <iostream>
#include <map>

namespace command {
namespace {

/// What the package says of its type: the manifest, else the member `mimetype`, else the name of the file.
std::string TypeText(const std::string& path, const std::string& fromManifest,
                     const std::string& fromMember) {
    const std::string& mediaType = fromManifest.empty() ? fromMember : fromManifest;
    const std::string name = NameOfMediaType(mediaType);
    if (mediaType.empty()) return std::string(NameOf(DetectType(path)));
    return name.empty() ? mediaType : name + " (" + mediaType + ")";
}

void PrintMembers(const Archive& archive, const std::vector<ManifestEntry>& manifest) {
    std::map<std::string_view, const ManifestEntry*> entries;
    for (const ManifestEntry& entry : manifest)
        entries.try_emplace(entry.path, &entry);
    PrintHeading("members");
    for (const Member& member : archive.members()) {
        const auto entry = entries.find(member.name);
        std::cout << "  " << std::setw(12) << member.size << "  " << Quoted(member.name);
        if (entry != entries.end() && !entry->second->mediaType.empty())
            std::cout << "  " << Quoted(entry->second->mediaType);
        if (entry != entries.end() && !entry->second->algorithm.empty())
            std::cout << "  encrypted with " << Quoted(entry->second->algorithm);
        std::cout << '\n';
    }
}

} // namespace

void PrintField(std::string_view label, std::string_view value) {
    if (value.empty()) return;
    std::cout << "  " << std::left << std::setw(18) << Quoted(label) + ":" << std::right << ' '
              << Quoted(value) << '\n';
}

void PrintHeading(std::string_view text) {
    std::cout << ' ' << text << '\n';
}

ExitCode ReportOdf(const std::string& path, const Passwords& passwords) {
    Archive archive;
    const ODF::Status status =
        passwords.open(path, [&](const std::string* password) { return archive.open(path, password); });
    const bool isLocked = status == ODF::Status::PasswordNeeded;
    // Without a password the outside of an encrypted package still tells something.
    if (isLocked ? archive.openRaw(path) != ODF::Status::Ok : status != ODF::Status::Ok) {
        Complain(path, Reason(archive.diagnostics()));
        return ExitCode::CannotOpen;
    }
    const std::vector<ManifestEntry> manifest = ReadManifest(archive.read(kManifestName).value_or(""));
    const std::string mimetype = archive.read(kMimetypeName).value_or("");
    const std::string mediaType = MediaTypeOf(manifest);
    const std::string encryption = EncryptionOf(manifest);

    std::cout << Quoted(path) << '\n';
    PrintField("type", TypeText(path, mediaType, mimetype));
    if (!mimetype.empty() && !mediaType.empty() && mimetype != mediaType)
        PrintField("mimetype", mimetype + " (differs from the manifest)");
    PrintField("encrypted", encryption.empty() ? "no" : encryption + (isLocked ? ", no password given" : ""));
    const bool isWhole = isLocked || PrintMetadata(archive);
    PrintMembers(archive, manifest);
    if (!isWhole) Complain(path, "meta.xml can't be read to its end");
    ComplainNotes(path, archive.diagnostics());
    return isWhole ? ExitCode::Ok : ExitCode::CannotOpen;
}

} // namespace command
