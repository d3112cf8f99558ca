// Styles, pictures, and content on its way from one document to another; under both kinds of documents.

#include "support/element_xml.h"
#include "support/files.h"
#include "support/texts.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace ODF;
using test::BytesOf;

namespace {

/// A PNG's first bytes: 96 x 48 pixels without a resolution, so 2.54 x 1.27 cm.
constexpr std::string_view kPng("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\x60\0\0\0\x30\x08\x02\0\0\0\0\0\0\0",
                                33);

void SetMember(Document& document, std::string_view name, const std::string& root, std::string_view content) {
    const std::string xml =
        "<office:" + root + " office:version=\"1.2\">" + std::string(content) + "</office:" + root + '>';
    ASSERT_TRUE(document.WriteMember(name, BytesOf(test::Declared(xml))));
}

constexpr std::string_view kCommon = R"(<office:font-face-decls>
  <style:font-face style:name="Odd" svg:font-family="Odd"/></office:font-face-decls>
  <office:styles>
  <style:default-style style:family="paragraph"><style:text-properties fo:font-size="12pt" fo:color="#000001"/>
  </style:default-style>
  <style:style style:name="Standard" style:family="paragraph"/>
  <style:style style:name="My_20_Base" style:display-name="My Base" style:family="paragraph"
     style:parent-style-name="Standard" style:list-style-name="Dots">
    <style:text-properties fo:font-weight="bold" style:font-name="Odd"/></style:style>
  <style:style style:name="A" style:family="paragraph" style:parent-style-name="B"/>
  <style:style style:name="B" style:family="paragraph" style:parent-style-name="A"/>
  <text:list-style style:name="Dots"><text:list-level-style-bullet text:level="1" text:bullet-char="x"/>
  </text:list-style></office:styles>
  <office:automatic-styles><style:style style:name="P1" style:family="paragraph" style:parent-style-name="My_20_Base">
    <style:text-properties fo:font-size="7pt"/></style:style></office:automatic-styles>
  <office:master-styles><style:master-page style:name="Standard" style:page-layout-name="none"><style:header>
    <text:p text:style-name="P1">head</text:p></style:header></style:master-page></office:master-styles>)";

constexpr std::string_view kContent = R"(<office:automatic-styles>
  <number:number-style style:name="N1"><number:number number:decimal-places="2"/></number:number-style>
  <style:style style:name="C1" style:family="table-cell" style:data-style-name="N1"/>
  <style:style style:name="P1" style:family="paragraph" style:parent-style-name="My_20_Base">
    <style:text-properties fo:font-size="20pt"/></style:style></office:automatic-styles>
  <office:body><office:text><text:p text:style-name="P1">one<draw:frame><draw:image
    xlink:href="Pictures/dot.png"/></draw:frame></text:p><text:p text:style-name="A">two</text:p>
  <table:table table:name="T"><table:table-row><table:table-cell table:style-name="C1"/></table:table-row>
  </table:table></office:text></office:body>)";

Document Sample() {
    Document document = Document::New(DocumentKind::Text);
    SetMember(document, "styles.xml", "document-styles", kCommon);
    SetMember(document, "content.xml", "document-content", kContent);
    EXPECT_TRUE(document.WriteMember("Pictures/dot.png", BytesOf(kPng)));
    return document;
}

/// The sample as the other kind of document has it, with the fidelity given.
std::unique_ptr<CODFDoc> InFolder(const test::TemporaryFolder& folder, Document& document,
                                  Fidelity fidelity) {
    EXPECT_TRUE(document.Save(folder / "sample.odt"));
    auto listed = std::make_unique<CODFDoc>();
    listed->SetFidelity(fidelity);
    EXPECT_EQ(listed->Open(folder / "sample.odt"), 1);
    return listed;
}

CTextP& Paragraph(CSDObject& root, int number) {
    auto at = root.Descendants<CTextP>().begin();
    std::advance(at, number);
    return *at;
}

std::size_t AutomaticCount(CSDObject& root) {
    const auto styles = root.Descendants<COfficeAutomaticStyles>();
    return styles.empty() ? 0 : styles.begin()->GetChildCount();
}

/// Finding and formatting, which must be the same whatever the document.
void CheckStyles(Styles styles, CSDObject& content, CSDObject& common) {
    CTextP& one = Paragraph(content, 0);
    CTextP& head = Paragraph(common, 0);
    EXPECT_EQ(styles.Find(ST_StyleFamily::Paragraph, "My Base"),
              styles.Find(ST_StyleFamily::Paragraph, "My_20_Base"));
    EXPECT_EQ(styles.Find(ST_StyleFamily::Text, "My Base"), nullptr) << "another family";
    EXPECT_NE(styles.Find<CTextListStyle>("Dots"), nullptr);
    EXPECT_NE(styles.Find<CStyleMasterPage>("Standard"), nullptr);
    EXPECT_EQ(styles.Find<CStylePageLayout>("none"), nullptr);

    // Both parts have a P1 of their own.
    EXPECT_EQ(styles.Value(one, &CStyleTextProperties::FoFontSize), CTulStringW("20pt"));
    EXPECT_EQ(styles.Value(head, &CStyleTextProperties::FoFontSize), CTulStringW("7pt"));
    EXPECT_EQ(styles.Value(one, &CStyleTextProperties::FoFontWeight), ST_FoFontWeight::Bold)
        << "of the parent";
    EXPECT_EQ(styles.Value(one, &CStyleTextProperties::FoColor), CTulStringW("#000001")) << "of the default";
    EXPECT_EQ(styles.Value(one, &CStyleTextProperties::FoFontStyle), std::nullopt);
    EXPECT_EQ(styles.Chain(one).size(), 4U);
    EXPECT_EQ(styles.Chain(Paragraph(content, 1)).size(), 3U) << "A, B and the default: the circle ends";

    // The same formatting is the same style, and what was there stays.
    CTextP& two = Paragraph(content, 1);
    const auto redden = [](CStyleTextProperties& text) { text.SetFoColor(Color{255, 0, 0}); };
    ASSERT_TRUE(styles.Format<CStyleTextProperties>(one, redden));
    EXPECT_EQ(styles.Value(one, &CStyleTextProperties::FoFontSize), CTulStringW("20pt"));
    EXPECT_EQ(styles.Value(one, &CStyleTextProperties::FoColor), CTulStringW("#ff0000"));
    const std::size_t count = AutomaticCount(content);
    two.SetTextStyleName("P1");
    ASSERT_TRUE(styles.Format<CStyleTextProperties>(two, redden));
    EXPECT_EQ(two.TextStyleName(), one.TextStyleName());
    EXPECT_EQ(AutomaticCount(content), count);
    ASSERT_TRUE(styles.Format<CStyleParagraphProperties>(
        two, [](auto& p) { p.SetFoTextAlign(ST_FoTextAlign::Center); }));
    EXPECT_NE(two.TextStyleName(), one.TextStyleName());
    EXPECT_EQ(AutomaticCount(content), count + 1);
    const CStyleStyle* const centred = styles.StyleOf(two);
    ASSERT_TRUE(centred);
    const auto sets = centred->Children();
    ASSERT_EQ(std::ranges::distance(sets), 2);
    EXPECT_EQ(sets.begin()->GetID(), CStyleParagraphProperties::kId) << "in the order of the format";

    // One that was changed in place is another style from then on.
    PropertiesOf<CStyleTextProperties>(*styles.StyleOf(one)).SetFoColor("#00ff00");
    auto draft = Styles::Draft(ST_StyleFamily::Paragraph, "My Base");
    PropertiesOf<CStyleTextProperties>(*draft).SetFoFontSize("20pt");
    PropertiesOf<CStyleTextProperties>(*draft).SetFoColor("#ff0000");
    EXPECT_NE(styles.Automatic(std::move(draft)), styles.StyleOf(one));

    // What is in the header gets its style there.
    const std::size_t before = AutomaticCount(common);
    ASSERT_TRUE(styles.Format<CStyleTextProperties>(head, redden));
    EXPECT_EQ(AutomaticCount(common), before + 1);
    EXPECT_EQ(styles.Value(head, &CStyleTextProperties::FoFontSize), CTulStringW("7pt"));

    CStyleStyle* const made = styles.Make(ST_StyleFamily::Paragraph, "Block Quotation", "My Base");
    ASSERT_TRUE(made);
    EXPECT_EQ(made->StyleName(), CTulStringW("Block_20_Quotation"));
    EXPECT_EQ(made->StyleParentStyleName(), CTulStringW("My_20_Base"));
    EXPECT_EQ(styles.Make(ST_StyleFamily::Paragraph, "Block Quotation"), made);
    ASSERT_TRUE(styles.Use(two, *made));
    EXPECT_EQ(styles.StyleOf(two), made);
    EXPECT_FALSE(styles.Use(two, *styles.Automatic(Styles::Draft(ST_StyleFamily::Text))))
        << "of another family";
    EXPECT_FALSE(styles.Format<CStyleTextProperties>(content, redden)) << "can't have a style";

    // Styles that come and go otherwise are followed.
    CSDObject& list = *made->Parent();
    list.Remove(*made);
    EXPECT_EQ(styles.Find(ST_StyleFamily::Paragraph, "Block Quotation"), nullptr);
    EXPECT_NE(styles.Make(ST_StyleFamily::Paragraph, "Block Quotation"), nullptr);
}

/// Moves both paragraphs of the sample into a new document and looks at what came along.
template<typename From, typename To>
void CheckTransfer(From& from, CSDObject& source, To& to, CSDObject& target) {
    Transfer transfer(from, to);
    Styles styles(to);
    const CTextP* const one = transfer.Append(Paragraph(source, 0), target);
    ASSERT_TRUE(one);
    EXPECT_EQ(styles.Value(*one, &CStyleTextProperties::FoFontSize), CTulStringW("20pt"));
    EXPECT_EQ(styles.Value(*one, &CStyleTextProperties::FoFontWeight), ST_FoFontWeight::Bold);
    EXPECT_NE(styles.Find<CTextListStyle>("Dots"), nullptr) << "named by the parent of the style";
    EXPECT_NE(styles.Find<CStyleFontFace>("Odd"), nullptr);
    const CTextP* const again = transfer.Append(Paragraph(source, 0), target);
    EXPECT_EQ(again->TextStyleName(), one->TextStyleName());
    EXPECT_NE(transfer.Append(Paragraph(source, 1), target), nullptr);
    EXPECT_NE(styles.Find(ST_StyleFamily::Paragraph, "B"), nullptr) << "also of parents in a circle";
    const auto tables = source.Descendants<CTableTable>();
    const CTableTable* const table = transfer.Append(*tables.begin(), target);
    const CStyleStyle* const cell = styles.StyleOf(*table->Descendants<CTableTableCell>().begin());
    ASSERT_TRUE(cell && cell->StyleDataStyleName());
    EXPECT_NE(styles.Find<CNumberNumberStyle>(cell->StyleDataStyleName()->utf8()), nullptr);
    EXPECT_TRUE(transfer.Missing().empty());
}

} // namespace

TEST(Styles, AreTheSameForAllKindsOfDocuments) {
    const test::TemporaryFolder folder;
    Document document = Sample();
    for (const Fidelity fidelity : {Fidelity::Listed, Fidelity::Everything}) {
        const auto listed = InFolder(folder, document, fidelity);
        CheckStyles(Styles(*listed), *listed->GetContentClass(), *listed->GetStylesClass());
    }
    CheckStyles(Styles(document), *document.Content(), *document.Styles());
    std::vector<unsigned char> bytes;
    EXPECT_TRUE(document.Save(bytes));
}

TEST(Styles, AreMadeWhereADocumentHasNoPlaceForThem) {
    Document document = Document::New(DocumentKind::MasterText);
    ASSERT_TRUE(document.RemoveMember("styles.xml"));
    ASSERT_EQ(document.Styles(), nullptr);
    ODF::Styles styles(document);
    auto& paragraph = document.Text()->Append<CTextP>();
    ASSERT_NE(styles.Make(ST_StyleFamily::Paragraph, "1st"), nullptr);
    ASSERT_TRUE(styles.Use(paragraph, *styles.Find(ST_StyleFamily::Paragraph, "1st")));
    EXPECT_EQ(paragraph.TextStyleName(), CTulStringW("_31_st"));
    ASSERT_TRUE(
        styles.Format<CStyleTextProperties>(paragraph, [](auto& text) { text.SetFoColor("#010203"); }));
    ASSERT_EQ(document.Content()->Children().begin()->GetID(), COfficeAutomaticStyles::kId)
        << "before the body";

    Document closed;
    ODF::Styles none(closed);
    EXPECT_EQ(none.Make(ST_StyleFamily::Paragraph, "A"), nullptr);
    EXPECT_EQ(none.Automatic(ODF::Styles::Draft(ST_StyleFamily::Text)), nullptr);
    EXPECT_EQ(none.Default(ST_StyleFamily::Text), nullptr);
}

TEST(Styles, ManyParagraphsAreFormattedInLinearTime) {
    Document document = Document::New(DocumentKind::Text);
    ODF::Styles styles(document);
    for (int i = 0; i < 20000; ++i) // each with a style of its own: quadratic time would take minutes
        ASSERT_TRUE(styles.Format<CStyleTextProperties>(
            document.Text()->Append<CTextP>(), [&](auto& text) { text.SetFoFontSize(Length::Points(i)); }));
    EXPECT_EQ(AutomaticCount(*document.Content()), 20000U);
}

TEST(Transfer, BringsWhatContentStandsOn) {
    const test::TemporaryFolder folder;
    Document source = Sample();
    {
        Document target = Document::New(DocumentKind::Text);
        CheckTransfer(source, *source.Content(), target, *target.Text());
        EXPECT_TRUE(target.HasMember("Pictures/dot.png"));
        EXPECT_EQ(std::ranges::count_if(target.Members(),
                                        [](const auto& name) { return name.starts_with("Pictures/"); }),
                  1)
            << "each picture once";
        std::vector<unsigned char> bytes;
        EXPECT_TRUE(target.Save(bytes));
    }
    const auto listed = InFolder(folder, source, Fidelity::Listed);
    {
        Document target = Document::New(DocumentKind::Text);
        CheckTransfer(*listed, *listed->GetContentClass(), target, *target.Text());
        std::vector<unsigned char> bytes;
        ASSERT_TRUE(target.ReadMember("Pictures/dot.png", bytes));
        EXPECT_TRUE(std::ranges::equal(bytes, BytesOf(kPng)));
    }
    CODFDoc target;
    ASSERT_EQ(target.CreateMainPart(sd::SDDocType::DocTypeOdfText), 1);
    COfficeText& text = *target.GetContentClass()->SetOfficeBody()->SetOfficeText();
    CheckTransfer(source, *source.Content(), target, text);
    ASSERT_EQ(target.Save(folder / "target.odt"), 1);
    Document again;
    ASSERT_TRUE(again.Open(folder / "target.odt"));
    std::vector<unsigned char> bytes;
    ASSERT_TRUE(again.ReadMember("Pictures/dot.png", bytes));
    EXPECT_TRUE(std::ranges::equal(bytes, BytesOf(kPng)));
}

TEST(Transfer, KeepsTheTargetsCommonStylesAndTellsWhatIsMissing) {
    Document source = Sample();
    Document target = Document::New(DocumentKind::Text);
    ODF::Styles styles(target);
    PropertiesOf<CStyleTextProperties>(*styles.Make(ST_StyleFamily::Paragraph, "My Base"))
        .SetFoColor("#0a0b0c");
    ASSERT_TRUE(source.RemoveMember("Pictures/dot.png"));
    Transfer transfer(source, target);
    const CTextP* const one = transfer.Append(Paragraph(*source.Content(), 0), *target.Text());
    EXPECT_EQ(styles.Value(*one, &CStyleTextProperties::FoColor), CTulStringW("#0a0b0c"));
    EXPECT_EQ(transfer.Missing(), std::vector<std::string>{"Pictures/dot.png"});

    Document self = Sample();
    Transfer within(self, self);
    const std::size_t count = AutomaticCount(*self.Content());
    const CTextP* const copy = within.Append(Paragraph(*self.Content(), 0), *self.Text());
    EXPECT_EQ(copy->TextStyleName(), CTulStringW("P1"));
    EXPECT_EQ(AutomaticCount(*self.Content()), count);
    auto& header = *self.Styles()->Descendants<CStyleHeader>().begin();
    const CTextP* const moved = within.Append(Paragraph(*self.Content(), 0), header);
    EXPECT_EQ(ODF::Styles(self).Value(*moved, &CStyleTextProperties::FoFontSize), CTulStringW("20pt"))
        << "the header's own P1 is another style";
}

TEST(Pictures, ArePlacedInOneCall) {
    const test::TemporaryFolder folder;
    test::WriteFile(folder / "dot.png", kPng);
    const std::filesystem::path file = folder / "dot.png";
    Document document = Document::New(DocumentKind::Text);
    auto& paragraph = document.Text()->Append<CTextP>();
    const CDrawFrame* frame = PlacePicture(document, paragraph, file, {.description = "a dot"});
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->SvgWidth(), CTulStringW("2.54cm"));
    EXPECT_EQ(frame->SvgHeight(), CTulStringW("1.27cm"));
    EXPECT_EQ(frame->Child<CDrawImage>()->XlinkHref(), CTulStringW("Pictures/dot.png"));
    EXPECT_EQ(document.MediaTypeOf("Pictures/dot.png"), "image/png");
    frame = PlacePicture(document, paragraph, file, {.height = Length::Centimeters(5)});
    EXPECT_EQ(frame->SvgWidth(), CTulStringW("10cm")) << "keeps its shape";
    const std::size_t members = document.Members().size();
    Result told;
    EXPECT_EQ(PlacePicture(document, paragraph, folder / "none.png", {}, &told), nullptr);
    EXPECT_EQ(told.Code(), Status::NotReadable);
    EXPECT_EQ(document.Members().size(), members);

    const auto listed = InFolder(folder, document, Fidelity::Listed);
    frame = PlacePicture(*listed, Paragraph(*listed->GetContentClass(), 0), file);
    ASSERT_TRUE(frame);
    ASSERT_EQ(listed->Save(folder / "listed.odt"), 1);
    Document again;
    ASSERT_TRUE(again.Open(folder / "listed.odt"));
    EXPECT_TRUE(again.HasMember(frame->Child<CDrawImage>()->XlinkHref()->utf8()));

    // Sizes by the bytes; cut off at any place they tell nothing or the same.
    const struct {
        std::string bytes;
        const char* width;
    } kImages[] = {{std::string("GIF89a\x60\0\x30\0", 10), "2.54cm"},
                   {std::string("\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1\1\0\x60\0\x60\0\0"
                                "\xFF\xC0\0\x11\x08\0\x30\0\x60\3",
                                30),
                    "2.54cm"},
                   {"<svg/>", nullptr}};
    for (const auto& row : kImages)
        for (std::size_t length = 0; length <= row.bytes.size(); ++length) {
            frame = PlacePicture(document, paragraph, BytesOf(std::string_view(row.bytes).substr(0, length)),
                                 "x");
            const auto width = frame->SvgWidth();
            if (length == row.bytes.size())
                EXPECT_EQ(width.value_or("").utf8(), row.width ? row.width : "");
            else
                EXPECT_TRUE(!width || *width == row.width) << length;
        }
}

TEST(Pictures, EmbeddedDocumentsAreObjects) {
    Document chart = Document::New(DocumentKind::Chart);
    Document sheet = Document::New(DocumentKind::Spreadsheet);
    CSDObject& cell = *Sheets(sheet)[0].MakeCell(0, 0);
    const CDrawFrame* const frame = PlaceObject(sheet, cell, chart);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Child<CDrawObject>()->XlinkHref(), CTulStringW("./Object 1"));
    EXPECT_EQ(sheet.Objects(), std::vector<std::string>{"Object 1"});
    EXPECT_EQ(sheet.MediaTypeOf("Object 1/"), "application/vnd.oasis.opendocument.chart");

    Document target = Document::New(DocumentKind::Text);
    ASSERT_EQ(target.AddObject(chart), "Object 1");
    Transfer transfer(sheet, target);
    const CDrawFrame* const copy = transfer.Append(*frame, target.Text()->Append<CTextP>());
    EXPECT_EQ(copy->Child<CDrawObject>()->XlinkHref(), CTulStringW("./Object 2"));
    EXPECT_EQ(target.MediaTypeOf("Object 2/"), "application/vnd.oasis.opendocument.chart");
    EXPECT_NE(target.Root("Object 2/content.xml"), nullptr);
}
