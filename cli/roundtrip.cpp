#include "commands.h"
#include "console.h"
#include "package/kind.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "package/repack.h"
#include "password.h"

#include <CLI/CLI.hpp>

#include <iomanip>
#include <iostream>

namespace command {
namespace {

struct RoundtripOptions {
    std::string from;
    std::string to;
    Passwords passwords;
};

ExitCode Repack(const RoundtripOptions& options) {
    ODF::Diagnostics diagnostics;
    std::vector<Member> members;
    const ExitCode code = RepackUnchanged(options.from, options.to, members, diagnostics);
    if (code == ExitCode::CannotOpen) Complain(options.from, Reason(diagnostics));
    if (code == ExitCode::CannotWrite) Complain(options.to, Reason(diagnostics));
    if (code != ExitCode::Ok) return code;
    for (const Member& member : members)
        std::cout << std::setw(12) << member.size << "  " << Quoted(member.name) << '\n';
    return ExitCode::Ok;
}

ExitCode Rewrite(const RoundtripOptions& options) {
    ODF::CODFDoc document;
    if (!OpenDocument(document, options.from, options.passwords)) return ExitCode::CannotOpen;
    ComplainNotes(options.from, document.GetDiagnostics());
    const bool isWhole = IsWhole(document.GetDiagnostics());
    document.Save(options.to);
    if (document.GetDiagnostics().status() != ODF::Status::Ok) {
        Complain(options.to, Reason(document.GetDiagnostics()));
        return ExitCode::CannotWrite;
    }
    ComplainNotes(options.to, document.GetDiagnostics());
    return isWhole ? ExitCode::Ok : ExitCode::CannotOpen;
}

} // namespace

void AddRoundtrip(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const roundtrip = app.add_subcommand(
        "roundtrip",
        "Opens a document and saves it to another file, in clear. An Open Packaging file is packed anew\n"
        "with every member as it is; its members are listed");
    const auto options = std::make_shared<RoundtripOptions>();
    roundtrip->add_option("IN", options->from, "Document to read")->required()->type_name("");
    roundtrip->add_option("OUT", options->to, "File to write; an old one is replaced")
        ->required()
        ->type_name("");
    options->passwords.addOptions(*roundtrip);
    roundtrip->callback([options, &exitCode] {
        if (!options->passwords.prepare())
            exitCode = ExitCode::CannotOpen;
        else
            exitCode = IsOpenPackaging(DetectType(options->from)) ? Repack(*options) : Rewrite(*options);
    });
}

} // namespace command
