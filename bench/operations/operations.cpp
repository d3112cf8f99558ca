// Ten telling operations, one a run, for counting their instructions: tools/count_instructions.sh does that.
//   odfmodel_operations          the names, one a line
//   odfmodel_operations NAME     prepares the operation and runs it once, in the function `Measured`
#include "generate/documents.h"

#include <odfmodel/elements/elements.h>
#include <odfmodel/odfmodel.h>

#include <cstdio>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <vector>

/// What is counted. By its name, so nothing may take it into another function.
extern "C" [[gnu::noinline]] void Measured(const std::function<bool()>& operation, bool& isDone) {
    isDone = operation();
}

namespace {

using Bytes = std::vector<unsigned char>;
using Operation = std::function<bool()>;

struct Row {
    const char* name;
    std::function<Operation()> prepare;
};

std::shared_ptr<CSDObject> Read(const std::string& xml, ODF::Fidelity fidelity) {
    const std::shared_ptr<CSDObject> root(ODF::COfficeDocumentContent::Create());
    if (!ODF::FromXml(xml, *root, fidelity)) throw std::runtime_error("the sample isn't well formed");
    return root;
}

Operation Parse(const std::string& xml, ODF::Fidelity fidelity) {
    const std::shared_ptr<CSDObject> root(ODF::COfficeDocumentContent::Create());
    return [xml, root, fidelity] { return ODF::FromXml(xml, *root, fidelity); };
}

Operation Write(const std::string& xml, ODF::Fidelity fidelity) {
    return
        [root = Read(xml, fidelity), fidelity] { return ODF::ToXml(*root, {}, fidelity).size() > 100'000; };
}

std::string Cyrillic() {
    std::string body;
    for (int i = 0; i < 500; ++i)
        body += "<text:p text:style-name=\"P1\">Съешь же ещё этих мягких французских булок, да выпей чаю; "
                "表計算ソフト</text:p>";
    return bench::WrapContent({}, "text", body);
}

std::shared_ptr<ODF::Document> SmallDocument() {
    const auto document = std::make_shared<ODF::Document>(ODF::Document::New(ODF::DocumentKind::Text));
    auto* const text = document->Text();
    for (int i = 0; text && i < 40; ++i)
        text->SetTextP()->SetTextSpan()->SetText(u"A few words in a paragraph of a small document.");
    return document;
}

std::string Text() {
    return bench::MakeTextContent(0.01);
}
std::string Sheet() {
    return bench::MakeSheetContent(0.01);
}

const Row kRows[] = {
    {"parse_text_listed", [] { return Parse(Text(), ODF::Fidelity::Listed); }},
    {"parse_text", [] { return Parse(Text(), ODF::Fidelity::Everything); }},
    {"parse_sheet", [] { return Parse(Sheet(), ODF::Fidelity::Everything); }},
    {"parse_styles", [] { return Parse(bench::MakeStylesContent(0.05), ODF::Fidelity::Everything); }},
    {"parse_cyrillic", [] { return Parse(Cyrillic(), ODF::Fidelity::Everything); }},
    {"write_text", [] { return Write(Text(), ODF::Fidelity::Everything); }},
    {"write_sheet", [] { return Write(Sheet(), ODF::Fidelity::Everything); }},
    {"destroy_sheet",
     [] {
         auto root = std::make_shared<std::shared_ptr<CSDObject>>(Read(Sheet(), ODF::Fidelity::Everything));
         return Operation([root] {
             root->reset();
             return true;
         });
     }},
    {"open_small",
     [] {
         const auto bytes = std::make_shared<Bytes>();
         if (!SmallDocument()->Save(*bytes, {.fixedTime = 0})) throw std::runtime_error("not saved");
         const auto document = std::make_shared<ODF::Document>();
         return Operation([bytes, document] { return bool(document->Open(*bytes)); });
     }},
    {"save_small",
     [] {
         const auto bytes = std::make_shared<Bytes>();
         return Operation(
             [bytes, document = SmallDocument()] { return bool(document->Save(*bytes, {.fixedTime = 0})); });
     }},
};

} // namespace

int main(int argc, char** argv) {
    try {
        for (const Row& row : kRows) {
            if (argc < 2) std::cout << row.name << '\n';
            if (argc < 2 || std::string_view(argv[1]) != row.name) continue;
            bool isDone = false;
            Measured(row.prepare(), isDone);
            return isDone ? 0 : 1;
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return argc < 2 ? 0 : 2;
}
