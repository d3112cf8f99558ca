#include "commands.h"
#include "files.h"
#include "package/archive.h"
#include "package/reason.h"
#include "package/sax.h"
#include "text/document_text.h"

#include <iostream>

namespace command {
namespace {

/// Parses a member piece by piece; false when it can't be read to its end. A member that isn't there counts
/// as empty.
bool Parse(Archive& archive, const std::string& name, CSDDefaultHandler& handler,
           ODF::Diagnostics& diagnostics) {
    const Member* const member = archive.find(name);
    if (!member) return true;
    const SaxReader reader = MakeSaxReader();
    reader->SetContentHandler(&handler);
    reader->SetDiagnostics(&diagnostics, name);
    MemberStream stream(archive, *member);
    bool isGood = reader->BeginChunks();
    for (std::string_view piece = stream.next(); isGood && !piece.empty(); piece = stream.next())
        isGood = reader->ParseChunk(piece.data(), static_cast<int>(piece.size()), 0);
    reader->EndChunks();
    return isGood && !stream.isDamaged();
}

/// Gathers the styles of `styles.xml` that lists and headings are numbered by.
class StyleHandler final : public CSDDefaultHandler {
public:
    explicit StyleHandler(ListStyles& styles) : styles_(styles) {}

    void startElement(const unsigned short* uri, const unsigned short* localName,
                      const unsigned short* /*qName*/, CSDAttribute* attributes) override {
        open_.push_back(names_.find(uri, localName));
        // The automatic styles of this file are of no use to the content.
        if (open_.back() == Element::AutomaticStyles) ++automatic_;
        if (automatic_ == 0) styles_.start(open_.back(), Attributes(*attributes));
    }
    void endElement(const unsigned short* /*uri*/, const unsigned short* /*localName*/,
                    const unsigned short* /*qName*/) override {
        if (automatic_ == 0) styles_.end(open_.back());
        if (open_.back() == Element::AutomaticStyles) --automatic_;
        open_.pop_back();
    }

private:
    ListStyles& styles_;
    ElementNames names_;
    std::vector<Element> open_;
    unsigned automatic_ = 0;
};

ExitCode PrintText(const std::string& path, const Passwords& passwords, const TextOptions& options) {
    Archive archive;
    if (!archive.open(path, passwords)) return ExitCode::CannotOpen;
    if (!archive.find("content.xml")) {
        Complain(path, "there is no content.xml");
        return ExitCode::CannotOpen;
    }
    ODF::Diagnostics diagnostics;
    ListStyles styles;
    StyleHandler styleHandler(styles);
    Parse(archive, "styles.xml", styleHandler, diagnostics);
    DocumentText text(styles, options, std::cout);
    const bool isWhole = Parse(archive, "content.xml", text, diagnostics);
    text.finish();
    ComplainNotes(path, archive.diagnostics());
    ComplainNotes(path, diagnostics);
    if (text.isCut()) Complain(path, "repeated cells or rows are too many; some copies are left out");
    return isWhole ? ExitCode::Ok : ExitCode::CannotOpen;
}

} // namespace

void AddText(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const text = app.add_subcommand(
        "text",
        "Prints the text of documents in reading order: paragraphs with the labels of lists and headings,\n"
        "notes, cells, text boxes and slides. Comments and tracked deletions are left out");
    struct Options : Files {
        TextOptions text;
    };
    const auto options = std::make_shared<Options>();
    options->addOptions(*text);
    text->add_flag(
        "--flow", options->text.isFlow,
        "The main flow alone, as word processors save plain text: without the text of notes, text boxes,\n"
        "shapes and speaker's notes, and with tracked deletions in their place");
    text->callback([options, &exitCode] {
        exitCode = options->forEach(
            [&](const std::string& path) { return PrintText(path, options->passwords, options->text); });
    });
}

} // namespace command
