#include "commands.h"
#include "files.h"
#include "package/open_document.h"
#include "verb.h"

#include <odfmodel/document/document_text.h>

#include <iostream>

namespace command {
namespace {

struct TextOptions : Files {
    ODF::ReadingOptions text;
};

ExitCode PrintText(const std::string& path, const Passwords& passwords, const ODF::ReadingOptions& options) {
    ODF::Document document;
    const ExitCode opened = OpenDocument(document, path, passwords);
    if (!document.IsOpen()) return opened;
    const auto print = [](std::string_view line) { std::cout << Printable(line) << '\n'; };
    if (ODF::ForEachLine(document, print, options)) return opened;
    Complain(path, kCut);
    return ExitCode::Failure;
}

ExitCode Run(TextOptions& options) {
    return options.forEach(
        [&](const std::string& path) { return PrintText(path, options.passwords, options.text); });
}

} // namespace

void AddText(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<TextOptions>(
        app, exitCode, Run, "text",
        "Prints the text of documents in reading order: paragraphs with the labels of lists and headings,\n"
        "notes, cells, text boxes and slides. Comments and tracked deletions are left out");
    options.addOptions(verb);
    verb.add_flag(
        "--flow", options.text.isMainFlow,
        "The main flow alone, as word processors save plain text: without the text of notes, text boxes,\n"
        "shapes and speaker's notes, and with tracked deletions in their place");
}

} // namespace command
