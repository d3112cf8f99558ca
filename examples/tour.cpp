// Opens a text document, prints its outline and metadata, appends a paragraph, changes the title, saves,
// opens the result and shows that the change is there.  tour IN.odt OUT.odt
#include <odfmodel/odfmodel.h>

#include <cstdio>
#include <string>

namespace {

int Fail(const char* what, const ODF::CDocument& document) {
    std::fprintf(stderr, "tour: %s: %s\n", what, ODF::ToText(document.GetDiagnostics().status()));
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

void PrintMetadata(ODF::CODFDoc& document) {
    std::printf("Metadata:\n");
    const auto* const meta = First<ODF::COfficeMeta>(document.GetMetaClass());
    if (const auto* const title = First<ODF::CDcTitle>(meta))
        std::printf("  title:   %s\n", title->Getval().utf8().c_str());
    if (const auto* const creator = First<ODF::CDcCreator>(meta))
        std::printf("  creator: %s\n", creator->Getval().utf8().c_str());
    if (const auto* const date = First<ODF::CDcDate>(meta))
        std::printf("  date:    %s\n", date->GetText().utf8().c_str());
}

ODF::COfficeText* TextBody(ODF::CODFDoc& document) {
    return First<ODF::COfficeText>(First<ODF::COfficeBody>(document.GetContentClass()));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: tour IN.odt OUT.odt\n");
        return 2;
    }
    ODF::CODFDoc document;
    if (!document.Open(argv[1])) return Fail(argv[1], document);
    ODF::COfficeText* const body = TextBody(document);
    if (!body) {
        std::fprintf(stderr, "tour: %s is not a text document\n", argv[1]);
        return 1;
    }
    PrintOutline(*body);
    PrintMetadata(document);

    ODF::CTextP* const paragraph = body->SetTextP();
    paragraph->SetText("This paragraph was appended by the tour.");
    if (ODF::COfficeDocumentMeta* const metaRoot = document.GetMetaClass()) {
        auto* meta = First<ODF::COfficeMeta>(metaRoot);
        if (!meta) meta = metaRoot->SetOfficeMeta();
        auto* title = First<ODF::CDcTitle>(meta);
        if (!title) title = meta->SetDcTitle();
        title->Setval("A title set by the tour");
    }
    document.Save(argv[2]);
    if (document.GetDiagnostics().status() != ODF::Status::Ok) return Fail(argv[2], document);

    ODF::CODFDoc again;
    if (!again.Open(argv[2])) return Fail(argv[2], again);
    std::printf("Saved and opened again:\n");
    PrintMetadata(again);
    const ODF::COfficeText* const newBody = TextBody(again);
    if (!newBody || !newBody->HasChildList()) return Fail("the body is gone", again);
    std::printf("Last paragraph: %s\n", PlainText(*newBody->GetObjectList()->back()).c_str());
    return 0;
}
