// Writes a letter with styles of its own; mail_merge.cpp fills it in.  styles OUT.odt
#include <odfmodel/odfmodel.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
    ODF::Styles styles(document);

    // Common styles are those that people see by name.
    ODF::CStyleStyle* const address =
        styles.Make(ODF::ST_StyleFamily::Paragraph, "Address Block", "Standard");
    auto& layout = ODF::PropertiesOf<ODF::CStyleParagraphProperties>(*address);
    layout.SetFoMarginTop(ODF::Length::Centimeters(2));
    layout.SetFoMarginBottom(ODF::Length::Centimeters(1));

    auto& first = document.Text()->Append<ODF::CTextP>();
    ODF::SetText(first, "$name\n$street\n$town");
    styles.Use(first, *address);
    auto& heading = document.Text()->Append<ODF::CTextH>();
    heading.SetTextOutlineLevel(1);
    heading.SetTextStyleName("Heading_20_1");
    ODF::SetText(heading, "Your order");
    auto& second = document.Text()->Append<ODF::CTextP>();
    ODF::SetText(second, "Dear $name, your order comes to ");
    auto& amount = second.Append<ODF::CTextSpan>();
    ODF::SetText(amount, "$amount");

    // Direct formatting makes automatic styles, one for all that look the same.
    styles.Format<ODF::CStyleTextProperties>(amount, [](auto& text) {
        text.SetFoFontWeight(ODF::ST_FoFontWeight::Bold);
        text.SetFoColor(ODF::Color{0xC0, 0, 0});
    });
    const auto size = styles.Value(heading, &ODF::CStyleTextProperties::FoFontSize);
    std::cout << "headings are written in " << size.value_or("?") << '\n';
    return document.Save(argv[1]) ? 0 : 1;
}
