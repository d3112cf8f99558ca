// Writes one letter a recipient from a template in the same document: copies a section, fills it in, takes
// out what isn't for that recipient, and removes the template.  tree_operations OUT.odt
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <iostream>
#include <string>

namespace {

struct Recipient {
    std::string name;
    std::string street;
    bool isReminded;
};

/// The template: a section with a heading, an address and two paragraphs.
ODF::CTextSection& AddTemplate(ODF::COfficeText& body) {
    auto& section = body.Append<ODF::CTextSection>();
    section.SetTextName("letter");
    auto& heading = section.Append<ODF::CTextH>();
    heading.SetTextOutlineLevel(1);
    ODF::SetText(heading, "Dear $name");
    ODF::SetText(section.Append<ODF::CTextP>(), "$name\n$street");
    auto& bill = section.Append<ODF::CTextP>();
    bill.SetText("Please find the bill ");
    bill.Append<ODF::CTextSpan>().SetText("for $na"); // formatting may change anywhere
    bill.SetText("me below.");
    auto& reminder = section.Append<ODF::CTextP>();
    reminder.SetTextStyleName("Reminder");
    ODF::SetText(reminder, "This is a reminder.");
    return section;
}

void AddLetter(ODF::COfficeText& body, const ODF::CTextSection& model, const Recipient& recipient) {
    auto letter = ODF::CloneOf(model);
    letter->SetTextName(recipient.name);
    ODF::ReplaceText(*letter, "$name", recipient.name);
    ODF::ReplaceText(*letter, "$street", recipient.street);
    for (ODF::CTextP& paragraph : letter->Children<ODF::CTextP>()) {
        CTulStringW style;
        if (!paragraph.GetTextStyleName(style) || style != "Reminder") continue;
        if (recipient.isReminded)
            paragraph.UnsetTextStyleName(); // the same by name: paragraph.Unset("text:style-name")
        else
            letter->Remove(paragraph);
        break; // the range doesn't outlive a removal
    }
    body.Append(std::move(letter));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "tree_operations OUT.odt\n";
        return 2;
    }
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
    ODF::COfficeText& body = *document.Text();
    ODF::CTextSection& model = AddTemplate(body);
    AddLetter(body, model, {"Ada", "1 High Street", false});
    AddLetter(body, model, {"Grace", "2 Low Road", true});
    body.Remove(model);

    if (const ODF::Result saved = document.Save(argv[1]); !saved) {
        std::cerr << saved.Text() << '\n';
        return 1;
    }
    ODF::Document again;
    if (const ODF::Result opened = again.Open(argv[1]); !opened) {
        std::cerr << opened.Text() << '\n';
        return 1;
    }
    for (const ODF::CTextSection& letter : again.Text()->Descendants<ODF::CTextSection>())
        std::cout << "--- " << letter.GetTextName() << '\n' << ODF::Text(letter) << '\n';
    return 0;
}
