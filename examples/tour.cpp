// Opens a text document, prints its outline and metadata, appends a paragraph, changes the title, saves,
// opens the result and shows that the change is there.  tour IN.odt OUT.odt
#include <odfmodel/odfmodel.h>

#include <cstdio>
#include <string>

namespace {

int Fail(const char* what, const ODF::Result& result) {
    std::fprintf(stderr, "tour: %s: %s\n", what, result.Text().c_str());
    return 1;
}

/// The first child of that class, or null.
template<typename Class>
Class* First(const CSDObject* parent) {
    return parent ? static_cast<Class*>(parent->GetObjectByID(Class::kId)) : nullptr;
}

/// The text of a paragraph or heading: its runs, and those of the spans and links in it.
std::string PlainText(const CSDObject& object) {
    std::string text = ODF::TextOf(object);
    if (const auto* const children = object.GetObjectList())
        for (const CSDObject* const child : *children)
            text += PlainText(*child);
    return text;
}

void PrintOutline(const ODF::COfficeText& body) {
    std::printf("Outline:\n");
    std::vector<CSDObject*> headings;
    body.GetObjectListByID(ODF::CTextH::kId, headings);
    for (const CSDObject* const object : headings) {
        const auto& heading = static_cast<const ODF::CTextH&>(*object);
        const int indent = static_cast<int>(heading.GetTextOutlineLevel()) * 2;
        std::printf("%*s%s\n", indent, "", PlainText(heading).c_str());
    }
}

void PrintMetadata(ODF::Document& document) {
    std::printf("Metadata:\n");
    const auto* const meta = First<ODF::COfficeMeta>(document.Meta());
    if (const auto* const title = First<ODF::CDcTitle>(meta))
        std::printf("  title:   %s\n", title->Getval().utf8().c_str());
    if (const auto* const creator = First<ODF::CDcCreator>(meta))
        std::printf("  creator: %s\n", creator->Getval().utf8().c_str());
    if (const auto* const date = First<ODF::CDcDate>(meta))
        std::printf("  date:    %s\n", date->GetText().utf8().c_str());
}

void SetTitle(ODF::COfficeDocumentMeta& root, const char* text) {
    auto* meta = First<ODF::COfficeMeta>(&root);
    if (!meta) meta = root.SetOfficeMeta();
    auto* title = First<ODF::CDcTitle>(meta);
    if (!title) title = meta->SetDcTitle();
    title->Setval(text);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: tour IN.odt OUT.odt\n");
        return 2;
    }
    ODF::Document document;
    if (const ODF::Result opened = document.Open(argv[1]); !opened) return Fail(argv[1], opened);
    ODF::COfficeText* const body = document.Text();
    if (!body) {
        std::fprintf(stderr, "tour: %s is not a text document\n", argv[1]);
        return 1;
    }
    PrintOutline(*body);
    PrintMetadata(document);

    body->SetTextP()->SetText("This paragraph was appended by the tour.");
    if (ODF::COfficeDocumentMeta* const meta = document.Meta()) SetTitle(*meta, "A title set by the tour");
    if (const ODF::Result saved = document.Save(argv[2]); !saved) return Fail(argv[2], saved);

    ODF::Document again;
    if (const ODF::Result opened = again.Open(argv[2]); !opened) return Fail(argv[2], opened);
    std::printf("Saved and opened again:\n");
    PrintMetadata(again);
    const ODF::COfficeText* const newBody = again.Text();
    if (!newBody || !newBody->HasChildList()) {
        std::fprintf(stderr, "tour: the body is gone\n");
        return 1;
    }
    std::printf("Last paragraph: %s\n", PlainText(*newBody->GetObjectList()->back()).c_str());
    return 0;
}
