// Typed access: names that depart from the rule, overloads, comparison, merging.

#include "support/element_xml.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

namespace {

using namespace ODF;

/// An object of a class, with typed access.
template<typename Class>
struct Made {
    std::unique_ptr<CSDObject> object{Class::Create()};
    Class* operator->() const { return static_cast<Class*>(object.get()); }
    Class& operator*() const { return static_cast<Class&>(*object); }
    std::string at(std::string_view attribute) const { return test::AttributeOf(*object, attribute); }
};

TEST(Accessors, OptionalOnesTellWhetherTheAttributeIsThere) {
    const Made<CTextList> list;
    CTulStringW name(u"before");
    bool goesOn = true;
    EXPECT_FALSE(list->GetTextStyleName(name));
    EXPECT_FALSE(list->GetTextContinueNumbering(goesOn));
    EXPECT_EQ(name, "before") << "left alone";
    EXPECT_TRUE(goesOn);
    list->SetTextStyleName(u"");
    list->SetTextContinueNumbering(false);
    EXPECT_TRUE(list->GetTextStyleName(name));
    EXPECT_TRUE(list->GetTextContinueNumbering(goesOn));
    EXPECT_EQ(name, "");
    EXPECT_FALSE(goesOn);
    EXPECT_EQ(test::Written(*list), R"(<text:list text:style-name="" text:continue-numbering="0"/>)");

    const Made<CTextPageNumber> number;
    int adjust = 5;
    ST_TextSelectPage page = ST_TextSelectPage::Current;
    EXPECT_FALSE(number->GetTextPageAdjust(adjust));
    EXPECT_FALSE(number->GetTextSelectPage(page));
    EXPECT_EQ(adjust, 5);
    EXPECT_EQ(page, ST_TextSelectPage::Current);
    number->SetTextPageAdjust(-1);
    number->SetTextSelectPage(ST_TextSelectPage::Next);
    EXPECT_TRUE(number->GetTextPageAdjust(adjust));
    EXPECT_TRUE(number->GetTextSelectPage(page));
    EXPECT_EQ(adjust, -1);
    EXPECT_EQ(page, ST_TextSelectPage::Next);

    const Made<CMathMstyle> style;
    float multiplier = 2;
    EXPECT_FALSE(style->GetMathScriptsizemultiplier(multiplier));
    style->SetMathScriptsizemultiplier(0.71F);
    EXPECT_TRUE(style->GetMathScriptsizemultiplier(multiplier));
    EXPECT_EQ(multiplier, 0.71F);
    EXPECT_EQ(style.at("math:scriptsizemultiplier"), "0.71");
}

TEST(Accessors, RequiredOnesGiveTheirDefault) {
    const Made<CDrawGluePoint> point;
    EXPECT_EQ(point->GetDrawId(), 0U);
    EXPECT_EQ(point->GetSvgX(), "");
    EXPECT_EQ(test::Written(*point), R"(<draw:glue-point draw:id="0" svg:x="" svg:y=""/>)");
    EXPECT_EQ(Made<CTextChapter>()->GetTextDisplay(), ST_TextDisplay::Name);
    EXPECT_EQ(Made<CTableInsertion>()->GetTableType(), ST_TableType::Row);
    EXPECT_EQ(Made<CDrawHatch>()->GetDrawStyle(), ST_DrawStyle::Single);
    EXPECT_EQ(Made<CTextVariableSet>()->GetOfficeValue(), 0.0);
    EXPECT_FALSE(Made<CTextVariableSet>()->GetOfficeBooleanValue());
    EXPECT_EQ(Made<CTableCellAddress>()->GetTableColumn(), 0);
    EXPECT_EQ(Made<CStyleTextProperties>()->GetTextCondition(), "");
}

TEST(Accessors, AnEnumeratorOutsideTheTableIsWrittenEmpty) {
    const Made<CDrawGluePoint> point;
    point->SetDrawAlign(static_cast<ST_DrawAlign>(8));
    EXPECT_EQ(point.at("draw:align"), "");
    point->SetDrawAlign(static_cast<ST_DrawAlign>(-1));
    EXPECT_EQ(test::Written(*point), R"(<draw:glue-point draw:id="0" svg:x="" svg:y="" draw:align=""/>)");
    point->SetDrawAlign(ST_DrawAlign::BottomRight);
    EXPECT_EQ(point.at("draw:align"), "bottom-right");
}

TEST(Accessors, NamesThatDepartFromTheRule) {
    const Made<CMetaDocumentStatistic> statistic;
    statistic->SetFrameCount(1);
    statistic->SetSentenceCount(2);
    statistic->SetSyllableCount(3);
    statistic->SetNonWhitespaceCharacterCount(4);
    unsigned count = 0;
    EXPECT_TRUE(statistic->GetNonWhitespaceCharacterCount(count));
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(test::Written(*statistic), R"(<meta:document-statistic frame-count="1" sentence-count="2" )"
                                         R"(syllable-count="3" non-whitespace-character-count="4"/>)");
    const Made<CStyleChartProperties> chart;
    chart->SetChartRightAngledAxies(true);
    EXPECT_EQ(chart.at("chart:right-angled-axes"), "true");
    const Made<CStyleGraphicProperties> graphic;
    graphic->SetDrawStrokeLinecap(ST_DrawStrokeLinecap::Butt);
    EXPECT_EQ(graphic.at("svg:stroke-linecap"), "butt");
    const Made<CStyleDrawingPageProperties> page;
    page->SetSmilSubType(ST_SmilSubType::OneBlade);
    EXPECT_EQ(page.at("smil:subtype"), "oneBlade");
    const Made<CAnimTransitionFilter> filter;
    filter->SetSmilSubType(ST_SmilSubType::Circle);
    EXPECT_EQ(filter.at("smil:subtype"), "circle");
    const Made<CStyleListLevelProperties> level;
    level->SetListLevelPositionAndSpaceMode(u"label-alignment");
    EXPECT_EQ(level.at("text:list-level-position-and-space-mode"), "label-alignment");
    const Made<CStyleTableProperties> properties;
    properties->SetTableoooTabColor(u"#fff");
    EXPECT_EQ(properties.at("tableooo:tab-color"), "#fff");
    const Made<CTableTable> table;
    table->SetTableUseBandingColsStyles(true);
    EXPECT_EQ(table.at("table:use-banding-columns-styles"), "true");
}

TEST(Accessors, Overloads) {
    const Made<CPresentationSettings> settings;
    settings->SetPresentationShow(u"name");
    EXPECT_EQ(settings->SetPresentationShow()->GetID(), CPresentationShow::kId);
    EXPECT_EQ(settings.at("presentation:show"), "name");
    EXPECT_EQ(settings->GetChildCount(), 1U);

    const Made<CTableTableCell> cell;
    const std::pair<const char16_t*, bool> kTexts[] = {{u"", false},   {u"0", false},     {u"FALSE", false},
                                                       {u"yes", true}, {u"falsey", true}, {u"1", true}};
    for (const auto& [text, expected] : kTexts) {
        cell->SetOfficeBooleanValue(!expected);
        cell->SetOfficeBooleanValue(CTulStringW(text));
        bool value = !expected;
        EXPECT_TRUE(cell->GetOfficeBooleanValue(value));
        EXPECT_EQ(value, expected) << CTulStringW(text).utf8();
        cell->SetOfficeBooleanValue(!expected);
        cell->SetOfficeBooleanValue(text);
        EXPECT_TRUE(cell->GetOfficeBooleanValue(value));
        EXPECT_EQ(value, expected);
    }
    cell->SetOfficeValue(u"12.50");
    EXPECT_EQ(cell.at("office:value"), "12.50");
    const Made<CTableCoveredTableCell> covered;
    covered->SetOfficeValue(12.50);
    EXPECT_EQ(covered.at("office:value"), "12.5");

    const Made<CStyleTextProperties> text;
    text->SetFoFontFamily(u"Arial, sans-serif");
    text->SetStyleFontName(u"Arial, sans-serif");
    EXPECT_EQ(text.at("fo:font-family"), "Arial");
    EXPECT_EQ(text.at("style:font-name"), "Arial, sans-serif");
}

/// Sets the attributes one by one on either of two objects: they are equal exactly while both have the same.
template<typename Class>
void CheckComparison() {
    const Made<Class> fresh;
    EXPECT_EQ(*fresh == *Made<Class>(), 1);
    for (const AttributeInfo& attribute : ClassOf(*fresh)->attributes()) {
        const Made<Class> a;
        const Made<Class> b;
        const auto keys = ClassOf(*a)->keys(attribute.name);
        const std::string one = keys.empty() ? "1" : keys.back();
        const std::string other = keys.empty() ? "0" : keys.front();
        SetAttributeText(*a, attribute.name, one);
        EXPECT_EQ(*a == *b, 0) << attribute.name;
        EXPECT_EQ(*b == *a, 0) << attribute.name;
        SetAttributeText(*b, attribute.name, other);
        EXPECT_EQ(*a == *b, 0) << attribute.name;
        SetAttributeText(*b, attribute.name, one);
        EXPECT_EQ(*a == *b, 1) << attribute.name;
        // Present though empty, 0 or the first key is not the same as absent, but for required ones.
        const Made<Class> empty;
        SetAttributeText(*empty, attribute.name, keys.empty() ? "" : keys.front());
        const bool isAtItsDefault = fresh.at(attribute.name) == empty.at(attribute.name);
        EXPECT_EQ(*empty == *fresh, isAtItsDefault ? 1 : 0) << attribute.name;
    }
}

TEST(Comparison, EveryAttributeCounts) {
    CheckComparison<CStyleTextProperties>();
    CheckComparison<CStyleParagraphProperties>();
    CheckComparison<CStyleGraphicProperties>();
    CheckComparison<CDrawGradient>();
    CheckComparison<CDrawHatch>();
    CheckComparison<CDrawStrokeDash>();
}

TEST(Comparison, NothingElseCounts) {
    const Made<CStyleParagraphProperties> a;
    const Made<CStyleParagraphProperties> b;
    a->SetStyleTabStops();
    a->SetErrorCode(5);
    a->SetIsFallback(true);
    EXPECT_EQ(*a == *b, 1);
    a->SetFoMarginLeft(u"2cm");
    b->SetFoMarginLeft(u"20mm");
    EXPECT_EQ(*a == *b, 0);
    b->SetFoMarginLeft(u"2CM");
    EXPECT_EQ(*a == *b, 0);
}

TEST(Links, MergeFillsWhatIsLacking) {
    const char* const full =
        R"(<text:a office:name="n" office:title="t" xlink:href="h" xlink:type="y" xlink:actuate="a" )"
        R"(office:target-frame-name="f" xlink:show="replace" text:style-name="s" text:visited-style-name="v">T<text:s/></text:a>)";
    const auto read = test::Read(full);
    const auto& other = static_cast<CTextA&>(*read);
    const Made<CTextA> empty;
    empty->Merge(*Made<CTextA>());
    EXPECT_EQ(test::Written(*empty), R"(<text:a xlink:href=""/>)");
    empty->Merge(other);
    EXPECT_EQ(
        test::Written(*empty),
        R"(<text:a office:name="n" office:title="t" xlink:href="h" xlink:type="y" xlink:actuate="a" )"
        R"(office:target-frame-name="f" xlink:show="replace" text:style-name="s" text:visited-style-name="v"/>)");
    empty->SetXlinkShow(ST_XlinkShow::New);
    ST_XlinkShow show = ST_XlinkShow::New;
    EXPECT_TRUE(other.GetXlinkShow(show));
    EXPECT_EQ(show, ST_XlinkShow::Replace) << "copied by value";

    const char* const set =
        R"(<text:a office:name="" office:title="2" xlink:href="3" xlink:type="4" xlink:actuate="5" )"
        R"(office:target-frame-name="6" xlink:show="new" text:style-name="8" text:visited-style-name="9"/>)";
    const auto kept = test::Read(set);
    static_cast<CTextA&>(*kept).Merge(other);
    EXPECT_EQ(test::Written(*kept), set) << "a present empty text is not lacking";
    const auto half = test::Read(R"(<text:a xlink:href=""/>)");
    static_cast<CTextA&>(*half).Merge(static_cast<CTextA&>(*test::Read(R"(<text:a xlink:href="h"/>)")));
    EXPECT_EQ(test::Written(*half), R"(<text:a xlink:href="h"/>)") << "an empty target is";
}

TEST(Paragraphs, RunsAreMadeAndFoundById) {
    const auto read = test::Read("<text:p>a<text:s/>b</text:p>");
    auto& paragraph = static_cast<CTextP&>(*read);
    EXPECT_EQ(static_cast<CSDStringValueObject*>(paragraph.GetObjectByID(0x800002CC))->Getval(), "a");
    std::vector<CSDObject*> runs;
    EXPECT_EQ(paragraph.GetObjectListByID(0x800002CC, runs), 2U);
    EXPECT_FALSE(paragraph.ReadNodeValue(nullptr, 3));
    EXPECT_FALSE(paragraph.ReadNodeValue(ToUnits(u"x"), 0));
    EXPECT_EQ(paragraph.GetChildCount(), 3U);
    EXPECT_TRUE(paragraph.ReadNodeValue(ToUnits(u"cd"), 1));
    paragraph.SetText()->Setval(u"d");
    EXPECT_EQ(test::Written(paragraph), "<text:p>a<text:s/>bcd</text:p>");
    const auto link = test::Read(R"(<text:a xlink:href="">x</text:a>)");
    EXPECT_FALSE(link->HasChildList());
    EXPECT_EQ(static_cast<CTextA&>(*link).Getval(), "x");
}

TEST(Pi, IsAClassThatNoMapLists) {
    const auto info = ClassOfElement("math:pi");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->id(), 0x800002A4U);
    EXPECT_FALSE(info->isInMaps());
    const Made<CMathPi> pi;
    pi->SetMathDefinitionURL(u"u");
    EXPECT_EQ(test::Written(*pi), R"(<math:pi math:definitionURL="u"/>)");
    for (const ClassInfo& other : AllClasses())
        for (const ChildInfo& row : other.children())
            EXPECT_NE(row.id, info->id()) << other.className();
}

} // namespace
