#include "commands.h"
#include "console.h"
#include "files.h"
#include "io/input.h"
#include "io/output.h"
#include "package/archive.h"
#include "package/kind.h"
#include "package/listed_document.h"
#include "package/manifest.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "package/repack.h"
#include "password.h"
#include "verb.h"

#include <iomanip>
#include <iostream>

namespace command {
namespace {

struct RoundtripOptions {
    std::string from;
    std::string to;
    bool isListed = false;
    bool isDecrypted = false;
    bool allowsIncomplete = false;
    bool isStrict = false;
    Passwords passwords;
};

ExitCode Repack(const RoundtripOptions& options) {
    ODF::Diagnostics diagnostics;
    std::vector<Member> members;
    const ExitCode code = RepackUnchanged(options.from, options.to, members, diagnostics);
    if (code == ExitCode::CannotOpen)
        Complain(options.from, OpenReason(options.from, diagnostics.status(), diagnostics.notes()));
    if (code == ExitCode::CannotWrite)
        Complain(options.to, WriteReason(options.to, diagnostics.status(), diagnostics.notes()));
    if (code != ExitCode::Ok) return code;
    for (const Member& member : members)
        std::cout << std::setw(12) << member.size << "  " << Quoted(member.name) << '\n';
    return ExitCode::Ok;
}

ExitCode Rewrite(const RoundtripOptions& options) {
    ODF::Document document;
    const ExitCode opened = OpenDocument(document, options.from, options.passwords, options.isStrict);
    if (!document.IsOpen()) return opened;
    if (opened != ExitCode::Ok && !options.allowsIncomplete) return RefuseIncomplete(options.to);
    if (options.isDecrypted) document.RemovePassword();
    ODF::SaveOptions save;
    save.allowsIncomplete = options.allowsIncomplete;
    return Worst(opened, SaveDocument(document, options.to, save));
}

bool IsEncrypted(const std::string& path) {
    Archive archive;
    return archive.open(path) == ODF::Status::Ok &&
           !EncryptionOf(ReadManifest(archive.read(kManifestName).text())).empty();
}

ExitCode RewriteListed(const RoundtripOptions& options) {
    if (!options.isDecrypted && IsEncrypted(options.from)) {
        Complain(options.from, "encrypted, and --listed writes in clear alone; --decrypt allows that");
        return ExitCode::Usage;
    }
    ODF::CODFDoc document;
    const ODF::Status opened = OpenListed(document, options.from, options.passwords);
    const ODF::Diagnostics& diagnostics = document.GetDiagnostics();
    if (!IsDone(opened)) {
        Complain(options.from, OpenReason(options.from, opened, diagnostics.notes()));
        return ExitCode::CannotOpen;
    }
    ComplainNotes(options.from, diagnostics);
    const bool isWhole = IsWhole(diagnostics);
    if (!isWhole && !options.allowsIncomplete) return RefuseIncomplete(options.to);
    document.Save(options.to);
    if (!IsDone(diagnostics.status())) {
        Complain(options.to, WriteReason(options.to, diagnostics.status(), diagnostics.notes()));
        return ExitCode::CannotWrite;
    }
    ComplainNotes(options.to, diagnostics);
    return isWhole ? ExitCode::Ok : ExitCode::CannotOpen;
}

ExitCode Run(RoundtripOptions& options) {
    options.from = InputPath(options.from);
    if (options.from.empty() || !options.passwords.prepare()) return ExitCode::CannotOpen;
    const bool isOpenPackaging = IsOpenPackaging(DetectType(options.from));
    if (options.isStrict && (isOpenPackaging || options.isListed))
        if (const std::string why = AmbiguityOf(options.from); !why.empty()) {
            Complain(options.from, std::string(ODF::ToText(ODF::Status::Ambiguous)) + " (" + why + ")");
            return ExitCode::CannotOpen;
        }
    if (options.to == kStandardStream && (isOpenPackaging || options.isListed)) {
        Complain({}, "an Open Packaging file, and what --listed makes, can't go to the standard output");
        return ExitCode::Usage;
    }
    if (isOpenPackaging) return Repack(options);
    if (options.isListed) return RewriteListed(options);
    if (options.to == kStandardStream && !CheckStandardOutput()) return ExitCode::Usage;
    return Rewrite(options);
}

} // namespace

void AddRoundtrip(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<RoundtripOptions>(
        app, exitCode, Run, "roundtrip",
        "Opens a document and saves it to another file with all that it has, encrypted when it was. An\n"
        "Open Packaging file is packed anew with every member as it is; its members are listed");
    verb.add_option("IN", options.from, "Document to read")->required()->type_name("");
    verb.add_option("OUT", options.to, "File to write; an old one is replaced")->required()->type_name("");
    verb.add_flag("--listed", options.isListed,
                  "Keep what the element classes list alone, in their own spelling");
    verb.add_flag("--decrypt", options.isDecrypted, "Write an encrypted document in clear");
    verb.add_flag("--incomplete", options.allowsIncomplete,
                  "Write a document that can't be read whole, too, with what could be read");
    verb.add_flag("--strict", options.isStrict, kStrictHelp);
    options.passwords.addOptions(verb);
}

} // namespace command
