// Sheets from the outside: references, repeats, values, writing, and that all of it is in the saved file.

#include "support/element_xml.h"
#include "support/process.h"
#include "support/texts.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>

using namespace ODF;

namespace {

Document Opened(std::span<const unsigned char> bytes) {
    Document document;
    const Result opened = document.Open(bytes);
    EXPECT_TRUE(opened) << opened.Text();
    return document;
}

/// A flat document whose spreadsheet has this in it.
Document Flat(std::string_view content) {
    const std::string xml = test::Declared(
        R"(<office:document office:version="1.2" xmlns:x="urn:x")"
        R"( office:mimetype="application/vnd.oasis.opendocument.spreadsheet"><office:body><office:spreadsheet>)" +
        std::string(content) + "</office:spreadsheet></office:body></office:document>");
    return Opened(test::BytesOf(xml));
}

Document FlatTable(std::string_view rows) {
    return Flat(R"(<table:table table:name="T">)" + std::string(rows) + "</table:table>");
}

Document SavedAndOpened(Document& document) {
    std::vector<unsigned char> bytes;
    EXPECT_TRUE(document.Save(bytes));
    return Opened(bytes);
}

std::string Xml(const Sheet& sheet) {
    return ToXml(sheet.Table(), {}, Fidelity::Everything);
}

std::size_t Count(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

using Model = std::map<std::pair<std::uint32_t, std::uint32_t>, CellValue>;

/// Everything that the iteration tells, with repeats expanded up to a bound.
Model Used(const Sheet& sheet, std::uint32_t bound) {
    Model model;
    for (const SheetRow& row : sheet.UsedRows())
        for (const SheetCell& cell : row.UsedCells())
            for (std::uint32_t r = row.Index(); r < std::min(row.Index() + row.Repeat(), bound); ++r)
                for (std::uint32_t c = cell.Column();
                     c < std::min(cell.Column() + cell.ColumnRepeat(), bound); ++c)
                    model[{r, c}] = cell.Value();
    return model;
}

} // namespace

TEST(Sheet, ReferencesAreReadAndPrinted) {
    const struct {
        const char* name;
        std::uint32_t row, column;
        const char* printed;
    } kGood[] = {{"A1", 0, 0, "A1"},
                 {"b3", 2, 1, "B3"},
                 {"Z9", 8, 25, "Z9"},
                 {"AA10", 9, 26, "AA10"},
                 {"$AZ$100", 99, 51, "AZ100"},
                 {"XFD1048576", 1048575, 16383, "XFD1048576"},
                 {"ZZZ1", 0, 18277, "ZZZ1"},
                 {"FXSHRXX2147483648", kMaxSheetIndex, kMaxSheetIndex, "FXSHRXX2147483648"}};
    for (const auto& row : kGood) {
        const auto cell = ParseCell(row.name);
        ASSERT_TRUE(cell) << row.name;
        EXPECT_EQ(*cell, (CellAddress{row.row, row.column})) << row.name;
        EXPECT_EQ(PrintCell(*cell), row.printed);
    }
    for (const char* const bad :
         {"", "A", "1", "A0", "1A", "A1 ", " A1", "$$A1", "A-1", "A1:B2", "Ä1", "FXSHRXY1", "A2147483649",
          "A99999999999999999999", "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAA1"})
        EXPECT_FALSE(ParseCell(bad)) << bad;
    for (std::uint32_t column = 0; column < 20000; ++column)
        ASSERT_EQ(ParseColumn(PrintColumn(column)), column);

    EXPECT_EQ(ParseRange("C4:$A$2"), (CellRange{{1, 0}, {3, 2}}));
    EXPECT_EQ(PrintRange({{1, 0}, {3, 2}}), "A2:C4");
    EXPECT_EQ(PrintRange(*ParseRange("B2")), "B2");
    for (const char* const bad : {"", ":", "A1:", "A1:B2:C3", "A:B"})
        EXPECT_FALSE(ParseRange(bad)) << bad;
}

TEST(Sheet, RepeatsAndGroupsAreResolvedInPlace) {
    Document document = FlatTable(
        R"(<table:table-column table:number-columns-repeated="3"/>
        <table:table-column-group><table:table-header-columns><table:table-column table:style-name="wide"/>
        </table:table-header-columns></table:table-column-group><x:odd/>
        <table:table-column table:number-columns-repeated="16380"/>
        <!-- rows --><table:table-header-rows><table:table-row><table:table-cell office:value-type="string">
        <text:p>head</text:p></table:table-cell></table:table-row></table:table-header-rows>
        <table:table-row-group><table:table-row-group><table:table-row table:number-rows-repeated="10">
        <!-- cells --><table:table-cell table:number-columns-repeated="4"/><x:odd/>
        <table:table-cell table:number-columns-repeated="2" office:value-type="float" office:value="7"/>
        <table:table-cell/><table:table-cell office:value-type="float" office:value="8"/></table:table-row>
        </table:table-row-group></table:table-row-group><text:soft-page-break/>
        <table:table-rows><table:table-row table:number-rows-repeated="1048565"><table:table-cell
        table:number-columns-repeated="16384"/></table:table-row></table:table-rows>)");
    Sheets sheets(document);
    ASSERT_EQ(sheets.size(), 1U);
    const Sheet& sheet = sheets[0];
    EXPECT_EQ(sheet.Name(), "T");
    EXPECT_EQ(sheet.RowCount(), 1048576U);
    EXPECT_EQ(sheet.ColumnCount(), 16384U);
    EXPECT_EQ(sheet.Column("D").element, sheet.Column(3).element);
    CTulStringW style;
    EXPECT_TRUE(sheet.Column("D").element->GetTableStyleName(style));
    EXPECT_EQ(sheet.Column(1).repeat, 2U);
    EXPECT_EQ(sheet.Column(16384).element, nullptr);

    const struct {
        const char* name;
        CellValue value;
        std::uint32_t repeat;
    } kCells[] = {{"A1", "head", 1}, {"B1", {}, 1}, {"A2", {}, 4}, {"C2", {}, 2},      {"E2", 7, 2},
                  {"F11", 7, 1},     {"G5", {}, 1}, {"H11", 8, 1}, {"A12", {}, 16384}, {"XFD1048576", {}, 1}};
    for (const auto& row : kCells) {
        const SheetCell cell = sheet.Cell(row.name);
        EXPECT_EQ(cell.Value(), row.value) << row.name;
        EXPECT_EQ(cell.ColumnRepeat(), row.repeat) << row.name;
        EXPECT_EQ(cell.IsEmpty(), row.value.IsEmpty()) << row.name;
    }
    EXPECT_EQ(sheet.Cell("A1048577").Element(), nullptr);
    EXPECT_EQ(sheet.Cell("nonsense").Element(), nullptr);
    EXPECT_EQ(sheet.Cell(~0U, ~0U).Element(), nullptr);
    EXPECT_EQ(sheet.Row(4).Repeat(), 7U);
    EXPECT_EQ(sheet.UsedRange(), ParseRange("A1:H11"));
    EXPECT_EQ(Used(sheet, 100).size(), 1U + 10 * 3);
    EXPECT_EQ(std::distance(sheet.AllRows().begin(), sheet.AllRows().end()), 3);
}

TEST(Sheet, RepeatsOfBillionsAreBounded) {
    for (const char* const huge : {"4294967295", "99999999999999999999", "4000000000"}) {
        const std::string repeat = huge;
        std::string rows;
        for (int i = 0; i < 4; ++i)
            rows +=
                R"(<table:table-row table:number-rows-repeated=")" + repeat +
                R"("><table:table-cell office:value-type="float" office:value="1" table:number-columns-repeated=")" +
                repeat + R"("/><table:table-cell table:number-columns-repeated=")" + repeat +
                R"("/></table:table-row>)";
        Document document =
            FlatTable(R"(<table:table-column table:number-columns-repeated=")" + repeat + R"("/>)" + rows);
        Sheets sheets(document);
        Sheet& sheet = sheets[0];
        EXPECT_EQ(sheet.RowCount(), kMaxSheetIndex + 1);
        EXPECT_EQ(sheet.ColumnCount(), kMaxSheetIndex + 1);
        EXPECT_EQ(sheet.UsedRange(), (CellRange{{0, 0}, {kMaxSheetIndex, kMaxSheetIndex}}));
        EXPECT_EQ(sheet.Cell(kMaxSheetIndex, kMaxSheetIndex).Value(), CellValue(1));
        EXPECT_FALSE(sheet.AppendRow({1}));
        EXPECT_FALSE(sheet.Set(kMaxSheetIndex + 1, 0, 1));
        EXPECT_FALSE(sheet.Set(0, kMaxSheetIndex + 1, 1));
        EXPECT_TRUE(sheet.Set(kMaxSheetIndex, kMaxSheetIndex, "end"));
        EXPECT_TRUE(sheet.Set(5, 5, "middle"));
        EXPECT_EQ(sheet.Cell(5, 5).Text(), "middle");
        EXPECT_EQ(sheet.Cell(5, 6).Value(), CellValue(1));
        EXPECT_EQ(sheet.Cell(6, 5).Value(), CellValue(1));
        EXPECT_EQ(sheet.Cell(kMaxSheetIndex, kMaxSheetIndex).Text(), "end");
    }
    Document document = FlatTable(R"(<table:table-row table:number-rows-repeated="0"><table:table-cell
        table:number-columns-repeated="-1"/></table:table-row>)");
    Sheets sheets(document);
    EXPECT_EQ(sheets[0].RowCount(), 1U);
    EXPECT_TRUE(sheets[0].Set("B2", 1));
    EXPECT_EQ(sheets[0].UsedRange(), ParseRange("B2"));
}

TEST(Sheet, ValuesAreWrittenAsOfficeSuitesDoAndComeBack) {
    const struct {
        CellValue value;
        const char* xml;
        const char* shown;
    } kValues[] = {
        {12.5, R"(office:value-type="float" office:value="12.5"><text:p>12.5</text:p>)", "12.5"},
        {0.1, R"(office:value="0.1">)", "0.1"},
        {1.0 / 3, R"(office:value="0.3333333333333333">)", "0.3333333333333333"},
        {1e300, nullptr, nullptr},
        {-5e-324, nullptr, nullptr},
        {9007199254740993.0, R"(office:value="9007199254740992">)", "9007199254740992"},
        {true, R"(office:value-type="boolean" office:boolean-value="true"><text:p>TRUE</text:p>)", "TRUE"},
        {false, R"(office:boolean-value="false">)", "FALSE"},
        {CellValue::Percentage(0.07),
         R"(office:value-type="percentage" office:value="0.07"><text:p>7%</text:p>)", "7%"},
        {CellValue::Currency(-3.5, "EUR"), R"(office:value="-3.5" office:currency="EUR">)", "-3.5 EUR"},
        {CellValue::Currency(1, ""), R"(office:value-type="currency" office:value="1">)", "1"},
        {CellValue::Date("2024-02-29"), R"(office:date-value="2024-02-29"><text:p>2024-02-29</text:p>)",
         "2024-02-29"},
        {CellValue::Date("2024-02-29T23:59:59.5"), nullptr, nullptr},
        {CellValue::Date(1999, 12, 31), nullptr, "1999-12-31"},
        {CellValue::Time("PT12H30M05S"), R"(office:time-value="PT12H30M05S"><text:p>12:30:05</text:p>)",
         "12:30:05"},
        {CellValue::Time("-PT1H2M3.004S"), nullptr, "-01:02:03.004"},
        {CellValue::Time(30, 5), R"(office:time-value="PT30H05M00S">)", "30:05:00"},
        {CellValue::Time("PT5M"), nullptr, "00:05:00"},
        {CellValue::Time("P1DT1H"), nullptr, "P1DT1H"},
        {"text & <more>", nullptr, "text & <more>"},
        {"&amp;", nullptr, "&amp;"},
        {"", nullptr, ""},
        {"naïve 😀", R"(office:value-type="string"><text:p>naïve 😀</text:p>)", nullptr},
        {"  two  blanks ", R"(<text:p><text:s text:c="2"/>two <text:s/>blanks<text:s/></text:p>)", nullptr},
        {"a\tb \t c", R"(a<text:tab/>b <text:tab/><text:s/>c)", nullptr},
        {"one\ntwo\n\nfour\n",
         R"(<text:p>one</text:p><text:p>two</text:p><text:p/><text:p>four</text:p><text:p/>)", nullptr},
        {std::string(10000, ' ') + "x", R"(text:c="4096")", nullptr},
    };
    Document document = Document::New(DocumentKind::Spreadsheet);
    Sheets sheets(document);
    std::uint32_t at = 0;
    for (const auto& row : kValues) {
        ASSERT_TRUE(sheets[0].Set(at, at % 3, row.value)) << at;
        const SheetCell cell = sheets[0].Cell(at, at % 3);
        EXPECT_EQ(cell.Value(), row.value) << at;
        if (row.shown) {
            EXPECT_EQ(cell.Text(), row.shown) << at;
        }
        if (row.xml) {
            const std::string xml = test::Written(*cell.Element(), Fidelity::Everything);
            EXPECT_NE(xml.find(row.xml), std::string::npos) << xml;
        }
        ++at;
    }
    Document again = SavedAndOpened(document);
    Sheets read(again);
    at = 0;
    for (const auto& row : kValues) {
        EXPECT_EQ(read[0].Cell(at, at % 3).Value(), row.value) << at;
        ++at;
    }
    const std::string before = Xml(read[0]);
    for (const CellValue& bad :
         {CellValue(std::numeric_limits<double>::infinity()),
          CellValue(std::numeric_limits<double>::quiet_NaN()),
          CellValue::Percentage(std::numeric_limits<double>::infinity()), CellValue::Date("2023-02-29"),
          CellValue::Date("today"), CellValue::Date(2024, 13, 1), CellValue::Date(""),
          CellValue::Date("2024-01-01T25:00:00"), CellValue::Time("12:30"), CellValue::Time("PT"),
          CellValue::Time("P"), CellValue::Time("PT1S1H")}) {
        EXPECT_FALSE(read[0].Set("A1", bad)) << bad.Text();
        EXPECT_FALSE(read[0].AppendRow({1, bad}));
    }
    EXPECT_EQ(Xml(read[0]), before);
}

TEST(Sheet, WhatFilesSayIsReadAsTheirProgramsMeanIt) {
    const struct {
        const char* cell; ///< attributes and content
        CellValue value;
        const char* text;
    } kCells[] = {
        {R"(><text:p>no type</text:p>)", "no type", "no type"},
        {R"( office:value-type="float" office:value="1.5e3"><text:p>1,500.00</text:p>)", 1500, "1,500.00"},
        {R"( office:value-type="float" office:value="1.50">)", 1.5, "1.5"},
        {R"( office:value-type="float">)", {}, ""},
        {R"( office:value-type="void">)", {}, ""},
        {R"( office:value-type="string" office:string-value="raw"><text:p>shown</text:p>)", "raw", "shown"},
        {R"( office:value-type="boolean" office:boolean-value="true"><text:p>WAHR</text:p>)", true, "WAHR"},
        {R"(><text:p> a
            <text:span>b <text:s text:c="2"/></text:span>c<text:tab/>d<text:line-break/><!-- no -->e</text:p>)",
         "a b   c\td\ne", nullptr},
        {R"(><text:p>a</text:p><!-- - --><text:list><text:list-item><text:p>b</text:p></text:list-item></text:list>
            <x:odd>no</x:odd><text:h>c</text:h>)",
         "a\nb\nc", nullptr},
        {R"(><office:annotation><text:p>note</text:p></office:annotation><text:p>a<text:note><text:note-body>
            <text:p>no</text:p></text:note-body></text:note>b</text:p><draw:frame><draw:text-box><text:p>no</text:p>
            </draw:text-box></draw:frame>)",
         "ab", nullptr},
        {R"(><text:p>a<x:control>b<text:a>c</text:a></x:control></text:p>)", "abc", nullptr},
        {R"(><text:p><text:s text:c="4000000000"/>x</text:p>)", CellValue(std::string(4096, ' ') + "x"),
         nullptr},
    };
    for (const auto& row : kCells) {
        for (const std::string name : {"table:table-cell", "table:covered-table-cell"}) {
            Document document =
                FlatTable("<table:table-row><" + name + row.cell + "</" + name + "></table:table-row>");
            Sheets sheets(document);
            const SheetCell cell = sheets[0].Cell("A1");
            EXPECT_EQ(cell.Value(), row.value) << row.cell;
            EXPECT_EQ(cell.Text(), row.text ? row.text : row.value.Text()) << row.cell;
            EXPECT_EQ(cell.IsCovered(), name != "table:table-cell");
        }
    }
}

TEST(Sheet, NothingOfTheOldValueStays) {
    constexpr std::string_view kCell =
        R"( table:style-name="ce1" office:value-type="currency" office:value="1.50" office:currency="EUR"
        calcext:value-type="currency" x:own="kept" table:formula="of:=1+0.5"><office:annotation><text:p>note</text:p>
        </office:annotation><!-- c --><text:p>1.50</text:p><text:p>old</text:p><draw:frame/>)";
    for (const std::string name : {"table:table-cell", "table:covered-table-cell"}) {
        for (const CellValue& value : {CellValue("new"), CellValue(2), CellValue(), CellValue(true)}) {
            Document document = FlatTable("<table:table-row><" + name + std::string(kCell) + "</" + name +
                                          "></table:table-row>");
            Sheets sheets(document);
            EXPECT_EQ(sheets[0].Cell("A1").Formula(), "of:=1+0.5");
            ASSERT_TRUE(sheets[0].Set("A1", value));
            EXPECT_EQ(sheets[0].Cell("A1").Value(), value);
            const std::string xml = Xml(sheets[0]);
            for (const char* const gone : {"formula", "EUR", "calcext:value-type", "old", "1.5"})
                EXPECT_EQ(xml.find(gone), std::string::npos) << gone << xml;
            for (const char* const kept : {"ce1", "x:own=\"kept\"", "note", "<!-- c -->", "draw:frame"})
                EXPECT_NE(xml.find(kept), std::string::npos) << kept << xml;
        }
    }
}

TEST(Sheet, FormulasHaveTheirResults) {
    Document document = Document::New(DocumentKind::Spreadsheet);
    Sheets sheets(document);
    ASSERT_TRUE(sheets[0].SetFormula("A1", "=1+1", 2));
    ASSERT_TRUE(sheets[0].SetFormula("A2", "msoxl:=NOW()"));
    EXPECT_FALSE(sheets[0].SetFormula("bad", "=1"));
    Document again = SavedAndOpened(document);
    Sheets read(again);
    EXPECT_EQ(read[0].Cell("A1").Formula(), "of:=1+1");
    EXPECT_EQ(read[0].Cell("A1").Value(), CellValue(2));
    EXPECT_EQ(read[0].Cell("A2").Formula(), "msoxl:=NOW()");
    EXPECT_FALSE(read[0].Cell("A2").IsEmpty());
    EXPECT_TRUE(read[0].Set("A1", 3));
    EXPECT_EQ(read[0].Cell("A1").Formula(), "");
}

TEST(Sheet, WritingDividesRepeatsAndKeepsWhatTheyHad) {
    constexpr std::string_view kRow =
        R"(<table:table-column table:number-columns-repeated="9"/><table:table-row-group>
        <table:table-row table:number-rows-repeated="9" table:style-name="ro1" x:own="1" xml:id="r">
        <!-- c --><table:table-cell table:number-columns-repeated="9" table:style-name="ce1" office:value-type="float"
        office:value="07"><office:annotation><dc:date xmlns:dc="http://purl.org/dc/elements/1.1/">2024-01-01T00:00:00</dc:date>
        <text:p>note</text:p></office:annotation><text:p>7<x:odd>!</x:odd></text:p></table:table-cell></table:table-row>
        </table:table-row-group>)";
    for (const auto& [row, column, rows, cells] : {std::tuple{0U, 0U, 2U, 3U},
                                                   {4U, 4U, 3U, 5U},
                                                   {8U, 8U, 2U, 3U},
                                                   {0U, 8U, 2U, 3U},
                                                   {9U, 0U, 2U, 2U}}) {
        Document document = FlatTable(kRow);
        Sheets sheets(document);
        Sheet& sheet = sheets[0];
        ASSERT_TRUE(sheet.Set(row, column, "new"));
        const std::string xml = Xml(sheet);
        EXPECT_EQ(Count(xml, "<table:table-row>") + Count(xml, "<table:table-row "), rows) << xml;
        EXPECT_EQ(Count(xml, "<table:table-cell"), cells) << xml;
        const std::size_t old = rows - (row == 9 ? 1 : 0);
        EXPECT_EQ(Count(xml, "ro1"), old);
        EXPECT_EQ(Count(xml, "x:own=\"1\""), old);
        EXPECT_EQ(Count(xml, "<!-- c -->"), old);
        EXPECT_EQ(Count(xml, "xml:id=\"r\""), 1U) << "an id is unique";
        EXPECT_EQ(Count(xml, "office:value=\"07\""), cells - 1) << xml;
        EXPECT_EQ(Count(xml, "2024-01-01T00:00:00</dc:date>"), Count(xml, "<office:annotation>")) << xml;
        EXPECT_EQ(Count(xml, "<x:odd>!</x:odd>"), cells - 1) << xml;
        Document again = SavedAndOpened(document);
        Sheets read(again);
        for (std::uint32_t r = 0; r < 10; ++r)
            for (std::uint32_t c = 0; c < 9; ++c) {
                const CellValue wanted = r == row && c == column ? CellValue("new")
                                         : r < 9                 ? CellValue(7)
                                                                 : CellValue();
                ASSERT_EQ(read[0].Cell(r, c).Value(), wanted) << r << ' ' << c;
            }
    }
}

TEST(Sheet, DividingRepeatsLeavesOutOnlyWhatCannotBeCopied) {
    class OwnElement : public CSDCustomObject {};
    Document document = FlatTable(R"(<table:table-row table:number-rows-repeated="3"><table:table-cell
        table:number-columns-repeated="3" office:value-type="float" office:value="7"/></table:table-row>)");
    Sheets sheets(document);
    Sheet& sheet = sheets[0];
    CSDObject* const cell = sheet.Table().Child<CTableTableRow>()->Child<CTableTableCell>();
    ASSERT_EQ(cell->Append(std::make_unique<OwnElement>()), TreeChange::Done);
    ASSERT_TRUE(sheet.Set(1, 1, "new"));
    for (std::uint32_t at = 0; at < 9; ++at)
        EXPECT_EQ(sheet.Cell(at / 3, at % 3).Value(), at == 4 ? CellValue("new") : CellValue(7)) << at;
}

TEST(Sheet, RandomWritesEqualAPlainMap) {
    constexpr std::uint32_t kSize = 12;
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); };
        Model model;
        std::string rows;
        std::uint32_t row = 0;
        for (const std::uint32_t elements = below(4); rows.empty() || row < elements;) {
            const std::uint32_t rowRepeat = 1 + below(4);
            std::string cells = below(3) ? "" : "<!-- c -->";
            std::uint32_t column = 0;
            for (std::uint32_t i = 1 + below(4); i > 0; --i) {
                const std::uint32_t repeat = 1 + below(4);
                const bool isUsed = below(2) == 0;
                cells += (below(4) ? "<table:table-cell" : "<table:covered-table-cell") +
                         std::string(R"( table:number-columns-repeated=")") + std::to_string(repeat) + '"' +
                         (isUsed ? " office:value-type=\"float\" office:value=\"" + std::to_string(i) + "\"/>"
                                 : "/>") +
                         (below(5) ? "" : "<x:odd/>");
                for (std::uint32_t r = row; r < row + rowRepeat && isUsed; ++r)
                    for (std::uint32_t c = column; c < column + repeat; ++c)
                        model[{r, c}] = i;
                column += repeat;
            }
            const bool isGrouped = below(3) == 0;
            rows += (isGrouped ? "<table:table-row-group>" : "") +
                    std::string(R"(<table:table-row table:number-rows-repeated=")") +
                    std::to_string(rowRepeat) + "\">" + cells + "</table:table-row>" +
                    (isGrouped ? "</table:table-row-group>" : "");
            row += rowRepeat;
        }
        Document document = FlatTable(rows);
        Sheets sheets(document);
        Sheet& sheet = sheets[0];
        ASSERT_EQ(Used(sheet, 100), model) << seed;
        const auto check = [&](const Sheet& checked) {
            ASSERT_EQ(Used(checked, 100), model) << seed << rows << Xml(checked);
            for (std::uint32_t r = 0; r < 2 * kSize; ++r)
                for (std::uint32_t c = 0; c < 2 * kSize; ++c) {
                    const auto at = model.find({r, c});
                    ASSERT_EQ(checked.Cell(r, c).Value(), at == model.end() ? CellValue() : at->second)
                        << seed << ' ' << r << ' ' << c << Xml(checked);
                }
        };
        for (int step = 0; step < 40; ++step) {
            const std::uint32_t r = below(kSize);
            const std::uint32_t c = below(kSize);
            const CellValue value = below(4) == 0   ? CellValue()
                                    : below(2) == 0 ? CellValue(step)
                                                    : CellValue("text " + std::to_string(step));
            if (below(8) == 0 && model.size() < 200) {
                std::uint32_t next = 0;
                for (const auto& [place, ignored] : model)
                    next = std::max(next, place.first + 1);
                if (next >= 2 * kSize) continue;
                ASSERT_EQ(sheet.AppendRow({value, 1, value}), next) << seed;
                model[{next, 1}] = 1;
                for (const std::uint32_t column : {0U, 2U})
                    if (!value.IsEmpty()) model[{next, column}] = value;
                continue;
            }
            ASSERT_TRUE(sheet.Set(r, c, value));
            model.erase({r, c});
            if (!value.IsEmpty()) model[{r, c}] = value;
            if (step % 8 == 0) check(sheet);
        }
        check(sheet);
        check(Sheet(sheet.Table()));
        Document again = SavedAndOpened(document);
        check(Sheets(again)[0]);
    }
}

TEST(Sheet, RowsAreAppendedBehindTheLastUsedOne) {
    // As an office suite fills a sheet up, with what is after the rows.
    Document document = FlatTable(R"(<table:table-column table:number-columns-repeated="16384"/>
        <table:table-row><table:table-cell office:value-type="string"><text:p>a</text:p></table:table-cell>
        <table:table-cell table:number-columns-repeated="16383"/></table:table-row>
        <table:table-row table:number-rows-repeated="1048575"><table:table-cell table:number-columns-repeated="16384"/>
        </table:table-row><table:named-expressions/>)");
    Sheets sheets(document);
    for (std::uint32_t i = 1; i <= 50; ++i)
        ASSERT_EQ(sheets[0].AppendRow({i, "x", {}, i}), i);
    EXPECT_EQ(sheets[0].RowCount(), 1048576U);
    EXPECT_EQ(sheets[0].UsedRange(), ParseRange("A1:D51"));
    EXPECT_EQ(sheets[0].Cell("D51").Value(), CellValue(50));
    ASSERT_TRUE(sheets[0].Set("A51", {}));
    EXPECT_EQ(sheets[0].AppendRow({1}), 51U);
    sheets[0].MakeRow(60);
    EXPECT_EQ(sheets[0].AppendRow({1}), 52U) << "an empty row isn't used";

    Document small =
        FlatTable(R"(<table:table-row-group><table:table-row><table:table-cell office:value-type="float"
        office:value="1"/></table:table-row></table:table-row-group><table:named-expressions/><x:behind/>)");
    Sheets smallSheets(small);
    EXPECT_EQ(smallSheets[0].AppendRow({2, 3}), 1U);
    const std::string xml = Xml(smallSheets[0]);
    EXPECT_LT(xml.find("<table:table-column table:number-columns-repeated=\"2\""),
              xml.find("table-row-group"));
    EXPECT_LT(xml.find("office:value=\"3\""), xml.find("named-expressions"));
    EXPECT_GT(xml.find("office:value=\"3\""), xml.find("</table:table-row-group"));
}

TEST(Sheet, ColumnsFollowTheCellsAndAreDivided) {
    Document document = Document::New(DocumentKind::Spreadsheet);
    Sheets sheets(document);
    Sheet& sheet = sheets[0];
    ASSERT_TRUE(sheet.Set("F2", 1));
    EXPECT_EQ(sheet.ColumnCount(), 6U);
    ASSERT_TRUE(sheet.Set("H2", 1));
    EXPECT_EQ(sheet.ColumnCount(), 8U);
    EXPECT_EQ(sheet.Column("B").repeat, 7U);
    sheet.MakeColumn(3)->SetTableStyleName("wide");
    EXPECT_EQ(sheet.Column("B").repeat, 2U);
    EXPECT_EQ(sheet.Column("E").repeat, 4U);
    EXPECT_EQ(sheet.MakeColumn(3), sheet.Column("D").element);
    CTableTableColumn* const made = sheet.MakeColumn(9);
    EXPECT_EQ(made, sheet.Column("J").element);
    EXPECT_EQ(Count(Xml(sheet), "\"wide\""), 1U);
    EXPECT_EQ(sheet.MakeCell(~0U, 0), nullptr);
    EXPECT_EQ(sheet.MakeColumn(~0U), nullptr);
    EXPECT_EQ(sheet.MakeRow(~0U), nullptr);
}

TEST(Sheet, CoveredCellsLeadToTheMergedOne) {
    Document document = FlatTable(
        R"(<table:table-row><table:table-cell table:number-columns-spanned="2" table:number-rows-spanned="2"/>
        <table:covered-table-cell/><table:table-cell/></table:table-row>
        <table:table-row><table:covered-table-cell table:number-columns-repeated="2"/><table:table-cell/></table:table-row>
        <table:table-row table:number-rows-repeated="5"><table:table-cell/>
        <table:table-cell table:number-columns-spanned="3"/><table:covered-table-cell table:number-columns-repeated="2"/>
        </table:table-row>)");
    Sheets sheets(document);
    const struct {
        const char* cell;
        const char* merged;
        bool isCovered;
    } kCells[] = {{"A1", "A1:B2", false}, {"B1", "A1:B2", true},  {"A2", "A1:B2", true},
                  {"B2", "A1:B2", true},  {"C1", nullptr, false}, {"A3", nullptr, false},
                  {"B3", "B3:D3", false}, {"D5", "B5:D5", true},  {"D7", "B7:D7", true},
                  {"E7", nullptr, false}, {"B8", nullptr, false}};
    for (const auto& row : kCells) {
        EXPECT_EQ(sheets[0].MergedRange(*ParseCell(row.cell)),
                  row.merged ? ParseRange(row.merged) : std::nullopt)
            << row.cell;
        EXPECT_EQ(sheets[0].Cell(row.cell).IsCovered(), row.isCovered) << row.cell;
    }
    EXPECT_EQ(sheets[0].Cell("B4").ColumnsSpanned(), 3U);
    EXPECT_EQ(sheets[0].Cell("A1").RowsSpanned(), 2U);
}

TEST(Sheets, AreFoundAddedAndNamed) {
    Document document = Flat(
        R"(<table:table table:name="It's"/><!-- c --><x:odd/><table:table table:name="B"><table:named-expressions>
        <table:named-range table:name="local" table:cell-range-address="$B.$A$1"/></table:named-expressions></table:table>
        <table:named-expressions><table:named-range table:name="all" table:cell-range-address="$'It''s'.$A$1:.$B$3"/>
        <table:named-range table:name="full" table:cell-range-address="B.A1:B.C4"/>
        <table:named-range table:name="lost" table:cell-range-address="#REF!"/>
        <table:named-range table:name="across" table:cell-range-address="A.A1:B.C4"/>
        <table:named-range table:name="open" table:cell-range-address="'A.A1"/>
        <table:named-expression table:name="sum" table:expression="1+1"/></table:named-expressions>)");
    Sheets sheets(document);
    ASSERT_EQ(sheets.size(), 2U);
    EXPECT_EQ(sheets.Find("It's"), &sheets[0]);
    EXPECT_EQ(sheets.Find("C"), nullptr);
    std::vector<std::string> told;
    for (const NamedRange& range : sheets.NamedRanges())
        told.push_back(range.name + "=" + range.sheet + "." + PrintRange(range.range) + "@" + range.scope);
    EXPECT_EQ(told, (std::vector<std::string>{"all=It's.A1:B3@", "full=B.A1:C4@", "local=B.A1@B"}));

    EXPECT_EQ(sheets.Add("B"), nullptr);
    EXPECT_EQ(sheets.Add(""), nullptr);
    Sheet* const added = sheets.Add("C");
    ASSERT_NE(added, nullptr);
    EXPECT_TRUE(added->Set("A1", 1));
    EXPECT_EQ(Sheets(*document.Flat()).size(), 3U);
    const std::string xml = ToXml(*document.Spreadsheet(), {}, Fidelity::Everything);
    EXPECT_LT(xml.find("table:name=\"C\""), xml.rfind("<table:named-expressions")) << xml;

    Document text = Document::New(DocumentKind::Text);
    EXPECT_TRUE(Sheets(text).empty());
    EXPECT_EQ(Sheets(text).Add("A"), nullptr);
    Document closed;
    EXPECT_TRUE(Sheets(closed).empty());
}

TEST(Sheet, ATableBuiltByHandIsASheet) {
    const std::unique_ptr<CSDObject> object(CTableTable::Create());
    auto& table = static_cast<CTableTable&>(*object);
    Sheet sheet(table);
    EXPECT_EQ(sheet.UsedRange(), std::nullopt);
    EXPECT_EQ(sheet.RowCount(), 0U);
    EXPECT_TRUE(sheet.Set("B2", {})) << "nothing to do";
    EXPECT_EQ(sheet.RowCount(), 0U);
    EXPECT_TRUE(sheet.Set("B3", "x"));
    EXPECT_EQ(sheet.AppendRow({}), 3U);
    EXPECT_EQ(ToXml(table, {}, Fidelity::Listed).find("<table:table-row/>"), std::string::npos)
        << "a row has a cell";
    EXPECT_EQ(sheet.UsedRange(), ParseRange("B3"));
}

class SheetGuide : public test::InWorkspace<> {};

TEST_F(SheetGuide, ShowsTheProgramsThatWriteAndExport) {
    const std::string source = ODFMODEL_SOURCE_DIR;
    const std::string page = test::ReadFile(source + "/docs/guide/sheets.md");
    for (const char* const name : {"csv_export", "workbook"}) {
        const std::string program = test::ReadFile(source + "/examples/" + name + ".cpp");
        EXPECT_NE(page.find(program.substr(program.find("#include"))), std::string::npos) << name;
    }
    const std::string examples = std::string(ODFMODEL_BUILD_DIR) + "/examples/";
    if (!test::HasProgram(examples + "workbook")) GTEST_SKIP() << "a build without examples";
    const std::chrono::seconds time(60);
    ASSERT_EQ(test::Run({examples + "workbook", file("out.ods"), "3"}, time).code, 0);
    ASSERT_EQ(test::Run({examples + "csv_export", file("out.ods"), file("out")}, time).code, 0);
    EXPECT_EQ(test::ReadFile(file("out1.csv")),
              R"("Order","Customer","Day","Time","Price","Discount","Paid"
"1","Customer 0","2024-01-01","00:00:00","5 EUR","0%","TRUE"
"2","Customer 1","2024-01-02","00:01:00","5.125 EUR","1%","FALSE"
"3","Customer 2","2024-01-03","00:02:00","5.25 EUR","2%","FALSE"
)");
    EXPECT_EQ(test::ReadFile(file("out2.csv")),
              "\"Total of all orders\",\"15.375\"\n\n\"A note of two lines,\n  and\ttabs and  blanks\"\n");
    Document repeats =
        FlatTable(R"(<table:table-row/><table:table-row table:number-rows-repeated="2"><table:table-cell/>
        <table:table-cell table:number-columns-repeated="2"><text:p>a"b"</text:p></table:table-cell><table:table-cell/>
        <table:table-cell><text:p>c</text:p></table:table-cell></table:table-row>)");
    ASSERT_TRUE(repeats.Save(file("repeats.fods")));
    ASSERT_EQ(test::Run({examples + "csv_export", file("repeats.fods"), file("r")}, time).code, 0);
    const std::string line = R"(,"a""b""","a""b""",,"c")";
    EXPECT_EQ(test::ReadFile(file("r1.csv")), "\n" + line + "\n" + line + "\n");
}
