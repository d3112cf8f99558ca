#include "commands.h"
#include "files.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "package/sax.h"
#include "text/document_text.h"

#include <iostream>

namespace command {
namespace {

/// Parses XML; false when it can't be read to its end. A member that isn't there counts as empty.
bool Parse(const MemberBytes& xml, const std::string& name, CSDDefaultHandler& handler,
           ODF::Diagnostics& diagnostics) {
    if (xml.bytes.empty()) return true;
    const SaxReader reader = MakeSaxReader();
    reader->SetDiagnostics(&diagnostics, name);
    return ParseXml(*reader, xml.text(), handler) && xml.isWhole;
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
        if (automatic_ == 0) styles_.start(open_.back(), Attributes(*attributes, attributes_));
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
    AttributeNames attributes_;
    std::vector<Element> open_;
    unsigned automatic_ = 0;
};

ExitCode PrintText(const std::string& path, const Passwords& passwords, const TextOptions& options) {
    ODF::Document document;
    const ExitCode opened = OpenDocument(document, path, passwords);
    if (!document.IsOpen()) return opened;
    ODF::Diagnostics diagnostics;
    ListStyles styles;
    DocumentText text(styles, options, std::cout);
    bool isWhole = true;
    if (document.IsFlat()) { // styles and content in one
        isWhole = Parse(ReadWholeFile(path), {}, text, diagnostics);
    } else {
        const DocumentFile file(document);
        StyleHandler styleHandler(styles);
        Parse(file.read("styles.xml"), "styles.xml", styleHandler, diagnostics);
        isWhole = Parse(file.read("content.xml"), "content.xml", text, diagnostics);
    }
    text.finish();
    if (opened == ExitCode::Ok) ComplainNotes(path, diagnostics); // else the reason has them
    if (text.isCut()) Complain(path, "repeated cells or rows are too many; some copies are left out");
    return isWhole ? opened : ExitCode::CannotOpen;
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
