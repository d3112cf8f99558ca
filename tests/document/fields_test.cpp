// Fields that are filled by their name, and the whole text of a document.
#include "support/element_xml.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/document_text.h>
#include <odfmodel/document/fields.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

namespace {

using ODF::CellValue;

std::unique_ptr<CSDObject> Read(std::string_view xml) {
    std::unique_ptr<CSDObject> root = test::Make(xml.substr(1, xml.find_first_of(" />") - 1));
    EXPECT_TRUE(ODF::FromXml(test::Declared(xml), *root, ODF::Fidelity::Everything)) << xml;
    return root;
}

TEST(Fields, GetTheirValueWhereverItIsToldAndShown) {
    struct Row {
        const char* before;
        CellValue value;
        const char* after;
        std::size_t values, shown, placeholders;
    };
    const Row rows[] = {
        {"<office:text><text:user-field-decls><text:user-field-decl text:name=\"n\" text:formula=\"1+2\" "
         "office:value-type=\"float\" office:value=\"3\"/><text:user-field-decl text:name=\"m\" "
         "office:value-type=\"string\" office:string-value=\"m\"/></text:user-field-decls><text:p>"
         "<text:user-field-get text:name=\"n\">3</text:user-field-get> <text:user-field-get text:name=\"m\">m"
         "</text:user-field-get></text:p></office:text>",
         "Ada & Co",
         "<office:text><text:user-field-decls><text:user-field-decl text:name=\"n\" "
         "office:value-type=\"string\" office:string-value=\"Ada &amp; Co\"/><text:user-field-decl "
         "text:name=\"m\" office:value-type=\"string\" office:string-value=\"m\"/></text:user-field-decls>"
         "<text:p><text:user-field-get text:name=\"n\">Ada &amp; Co</text:user-field-get> "
         "<text:user-field-get text:name=\"m\">m</text:user-field-get></text:p></office:text>",
         1, 1, 0},
        {"<text:p><text:variable-set text:name=\"n\" office:value-type=\"string\" "
         "office:string-value=\"x\">x</text:variable-set><text:variable-get "
         "text:name=\"n\">x</text:variable-get></text:p>",
         CellValue::Currency(2.5, "EUR"),
         "<text:p><text:variable-set text:name=\"n\" office:value-type=\"currency\" office:value=\"2.5\" "
         "office:currency=\"EUR\">2.5 EUR</text:variable-set><text:variable-get "
         "text:name=\"n\">2.5 EUR</text:variable-get></text:p>",
         1, 2, 0},
        {"<text:p>Dear <text:placeholder text:placeholder-type=\"text\">&lt;n&gt;</text:placeholder>, "
         "<text:span><text:placeholder "
         "text:placeholder-type=\"text\">n</text:placeholder></text:span></text:p>",
         "A  B",
         "<text:p>Dear <text:span>A <text:s/>B</text:span>, <text:span><text:span>A <text:s/>B</text:span>"
         "</text:span></text:p>",
         0, 0, 2},
        {"<text:p><text:variable-get text:name=\"n\">x</text:variable-get></text:p>",
         CellValue::Date("2023-02-29"),
         "<text:p><text:variable-get text:name=\"n\">x</text:variable-get></text:p>", 0, 0, 0},
    };
    for (const Row& row : rows) {
        const std::unique_ptr<CSDObject> root = Read(row.before);
        const ODF::FilledFields filled = ODF::FillField(*root, "n", row.value);
        EXPECT_EQ(test::Bare(ODF::ToXml(*root, {}, ODF::Fidelity::Everything)), row.after);
        EXPECT_EQ(filled.values, row.values);
        EXPECT_EQ(filled.shown, row.shown);
        EXPECT_EQ(filled.placeholders, row.placeholders);
        EXPECT_FALSE(ODF::FillField(*root, "", "x"));
    }
    const std::unique_ptr<CSDObject> first = Read(rows[0].before);
    EXPECT_EQ(ODF::FieldNames(*first), (std::vector<std::string>{"n", "m"}));
}

TEST(DocumentText, FollowsTheTreeAsItIsNow) {
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
    auto& heading = document.Text()->Append<ODF::CTextH>();
    heading.SetTextOutlineLevel(1);
    ODF::SetText(heading, "Title");
    auto& list = document.Text()->Append<ODF::CTextList>();
    for (const char* const text : {"one\ttab", "two\nlines"})
        ODF::SetText(list.Append<ODF::CTextListItem>().Append<ODF::CTextP>(), text);
    EXPECT_EQ(ODF::DocumentText(document), "Title\n    \u2022 one\ttab\n    \u2022 two\nlines\n");
    EXPECT_EQ(ODF::DocumentText(*document.Content()), ODF::DocumentText(document));
    ODF::Document closed;
    EXPECT_EQ(ODF::DocumentText(closed), "");
}

} // namespace
