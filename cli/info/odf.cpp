#include "info/report.h"

#include "console.h"
#include "info/metadata.h"
#include "package/archive.h"
#include "package/kind.h"
#include "package/manifest.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "password.h"

#include <odfmodel/elements/office/document.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>

namespace command {
namespace {

/// What the document says of its type, else what is in its body.
std::string TypeText(const std::string& mediaType, ODF::DocumentKind kind) {
    std::string name = NameOfMediaType(mediaType);
    if (name.empty()) name = NameOf(kind);
    if (name.empty()) name = mediaType.empty() ? "unknown" : "unknown kind";
    return mediaType.empty() ? name : name + " (" + mediaType + ")";
}

void PrintMembers(const MemberSource& source, const std::vector<ManifestEntry>& manifest) {
    std::map<std::string_view, const ManifestEntry*> entries;
    for (const ManifestEntry& entry : manifest)
        entries.try_emplace(entry.path, &entry);
    PrintHeading("members");
    for (const Member& member : source.members()) {
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

namespace {

std::string TrimmedText(const MemberBytes& member) {
    constexpr std::string_view kBlanks(" \t\r\n\0", 5);
    std::string_view text = member.text();
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return std::string(text.substr(0, text.find_last_not_of(kBlanks) + 1));
}

/// The type as both places of a package tell it.
void PrintType(const MemberSource& source, const std::vector<ManifestEntry>& manifest,
               ODF::DocumentKind kind) {
    const std::string mimetype = TrimmedText(source.read(kMimetypeName));
    const std::string mediaType = MediaTypeOf(manifest);
    PrintField("type", TypeText(mimetype.empty() ? mediaType : mimetype, kind));
    if (!mimetype.empty() && !mediaType.empty() && mimetype != mediaType)
        PrintField("manifest", mediaType + " (differs from the mimetype)");
}

/// What an encrypted package tells without its password.
ExitCode ReportOutside(const std::string& path) {
    Archive archive;
    if (archive.open(path) != ODF::Status::Ok) {
        Complain(path, Reason(archive.diagnostics()));
        return ExitCode::CannotOpen;
    }
    const std::vector<ManifestEntry> manifest = ReadManifest(archive.read(kManifestName).text());
    std::cout << Quoted(path) << '\n';
    PrintType(archive, manifest, ODF::DocumentKind::Unknown);
    PrintField("encrypted", EncryptionOf(manifest) + ", no password given");
    PrintMembers(archive, manifest);
    ComplainNotes(path, archive.diagnostics());
    return ExitCode::Ok;
}

/// How the file is encrypted, as its outermost manifest tells.
std::string EncryptionOfFile(const std::string& path) {
    Archive archive;
    archive.open(path);
    return EncryptionOf(ReadManifest(archive.read(kManifestName).text()));
}

void ReportPackage(const std::string& path, ODF::Document& document) {
    const DocumentFile file(document);
    const std::vector<ManifestEntry> manifest = ReadManifest(file.read(kManifestName).text());
    PrintType(file, manifest, document.Kind());
    PrintField("version", document.Version());
    PrintField("encrypted", document.IsEncrypted() ? EncryptionOfFile(path) : "no");
    PrintMetadata(ReadMetadata(document.Meta()));
    PrintMembers(file, manifest);
}

} // namespace

ExitCode ReportOdf(const std::string& path, const Passwords& passwords) {
    ODF::Document document;
    const ODF::Result opened = TryOpen(document, path, passwords);
    if (opened.Code() == ODF::Status::PasswordNeeded) return ReportOutside(path);
    if (!document.IsOpen()) {
        Complain(path, OpenReason(path, opened.Code(), opened.Notes()));
        return ExitCode::CannotOpen;
    }
    std::cout << Quoted(path) << '\n';
    if (document.IsFlat()) {
        PrintField("type", TypeText(document.MediaType(), document.Kind()));
        PrintField("form", "one XML file");
        PrintField("version", document.Version());
        PrintMetadata(ReadMetadata(document.Flat()));
    } else {
        ReportPackage(path, document);
    }
    ComplainNotes(path, opened.Notes());
    return opened ? ExitCode::Ok : ExitCode::CannotOpen;
}

} // namespace command
