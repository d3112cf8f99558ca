// What came with which version of the format: typed, told, and written with the version that it needs.

#include "support/corpus.h"
#include "support/element_xml.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <ranges>

using namespace ODF;
using Bytes = std::vector<unsigned char>;

namespace {

template<typename T>
T& As(const std::unique_ptr<CSDObject>& object) {
    return static_cast<T&>(*object);
}

/// As "name since count" lines.
std::string Told(const std::vector<LaterUse>& uses) {
    std::string told;
    for (const LaterUse& use : uses)
        told += use.name + ' ' + std::string(VersionName(use.since)) + ' ' + std::to_string(use.count) + '\n';
    return told;
}

Document Saved(Document& document) {
    Bytes bytes;
    EXPECT_TRUE(document.Save(bytes));
    Document again;
    EXPECT_TRUE(again.Open(bytes));
    return again;
}

std::string ManifestOf(Document& document) {
    Bytes bytes;
    EXPECT_TRUE(document.Save(bytes));
    Document again;
    EXPECT_TRUE(again.Open(bytes));
    Bytes manifest;
    EXPECT_TRUE(again.ReadFileEntry("META-INF/manifest.xml", manifest));
    return {manifest.begin(), manifest.end()};
}

} // namespace

TEST(Versions, HaveNames) {
    for (const FormatVersion version : {FormatVersion::Base, FormatVersion::V1_2, FormatVersion::V1_3,
                                        FormatVersion::V1_4, FormatVersion::Extended})
        EXPECT_EQ(ParseVersion(VersionName(version)), version);
    EXPECT_EQ(VersionName(FormatVersion::V1_3), "1.3");
    for (const char* const name : {"", "1", "1.30", " 1.2", "2.0"})
        EXPECT_FALSE(ParseVersion(name)) << name;
    EXPECT_EQ(ClassOfElement("text:p")->since(), FormatVersion::Base);
    EXPECT_EQ(ClassOfElement("db:query")->since(), FormatVersion::V1_2);
    EXPECT_EQ(ClassOfElement("style:background-fill")->since(), FormatVersion::V1_4);
    EXPECT_EQ(ClassOfElement("loext:theme")->since(), FormatVersion::Extended);
}

TEST(Versions, WhatATreeUsesIsToldByNameAndCount) {
    const auto tree = test::Read(
        R"(<office:text><text:p xml:id="a">a<text:meta xml:id="b">b</text:meta></text:p><text:p xml:id="c"/>)"
        R"(<draw:a><draw:g/></draw:a><text:p><text:drop-down text:name="n"><text:label text:value="v"/></text:drop-down>)"
        R"(</text:p><text:p loext:x="1"><office:annotation><meta:creator-initials>x</meta:creator-initials>)"
        R"(</office:annotation><loext:y/></text:p><draw:rect><table:table table:name="t"><table:table-row>)"
        R"(<table:table-cell office:value-type="error"/></table:table-row></table:table></draw:rect></office:text>)",
        Fidelity::Everything);
    const std::string later = "draw:rect/table:table 1.4 1\nloext:y extended 1\nmeta:creator-initials 1.3 1\n"
                              "table:table-cell@office:value-type=error 1.4 1\ntext:drop-down 1.3 1\n"
                              "text:label 1.3 1\ntext:p@loext:x extended 1\n";
    EXPECT_EQ(Told(UsesAfter(FormatVersion::V1_2, *tree)), later);
    EXPECT_EQ(Told(UsesAfter(FormatVersion::V1_4, *tree)), "loext:y extended 1\ntext:p@loext:x extended 1\n");
    EXPECT_EQ(Told(UsesAfter(FormatVersion::Base, *tree)),
              "draw:a/draw:g 1.2 1\n" + later.substr(0, later.rfind("text:p@")) +
                  "text:meta 1.2 1\ntext:p@loext:x extended 1\ntext:p@xml:id 1.2 2\n");
}

TEST(Versions, WhatTheClassesListMayHaveComeLaterToo) {
    const auto tree = test::Read(
        R"(<style:master-page style:page-layout-name="p"><style:header-first/></style:master-page>)");
    EXPECT_EQ(Told(UsesAfter(FormatVersion::V1_2, *tree)), "style:header-first 1.3 1\n");
    EXPECT_EQ(Told(UsesAfter(FormatVersion::V1_3, *tree)), "");
    const auto layout = test::Read(R"(<style:page-layout-properties style:scale-to-X="1"/>)");
    EXPECT_EQ(Told(UsesAfter(FormatVersion::V1_2, *layout)),
              "style:page-layout-properties@style:scale-to-X 1.3 1\n");
}

TEST(Versions, ADocumentTellsTheVersionThatItsContentNeeds) {
    struct Row {
        const char* what;
        std::function<void(Document&)> change;
        const char* version;
        const char* manifest = version;
    };
    const Row rows[] = {
        {"nothing", [](Document&) {}, "1.2"},
        {"what is old", [](Document& document) { document.Text()->SetTextP()->SetText("a"); }, "1.2"},
        {"an attribute of 1.2", [](Document& document) { document.Text()->SetTextP()->SetXmlId("a"); },
         "1.2"},
        {"an element of 1.3", [](Document& document) { document.Text()->SetTextP()->SetTextDropDown(); },
         "1.3"},
        {"a place of 1.4",
         [](Document& document) { document.Text()->SetDrawRect()->SetTableTable()->SetTableName("t"); },
         "1.4"},
        {"an extension",
         [](Document& document) { document.Text()->SetTextP()->Append<CLoextContentControl>(); }, "1.2"},
        {"a version that the caller sets",
         [](Document& document) { document.Content()->SetOfficeVersion("1.4"); }, "1.4", "1.2"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Document document = Document::New(DocumentKind::Text);
        row.change(document);
        Document saved = Saved(document);
        EXPECT_EQ(saved.VersionOf("content.xml"), row.version);
        EXPECT_EQ(saved.VersionOf("styles.xml"), "1.2");
        const std::string manifest = ManifestOf(document);
        EXPECT_NE(manifest.find("manifest:version=\"" + std::string(row.manifest) + "\""), manifest.npos)
            << manifest;
    }
    EXPECT_EQ(Document().VersionOf("content.xml"), "");
}

TEST(Versions, AFileThatUnderstatesItselfStaysAsItIs) {
    Document made = Document::New(DocumentKind::Text);
    made.Text()->SetTextP()->SetTextDropDown();
    Bytes content;
    ASSERT_TRUE(made.ReadMember("content.xml", content));
    std::string xml(content.begin(), content.end());
    xml.replace(xml.find("office:version=\"1.3\""), 20, "office:version=\"1.2\"");
    content.assign(xml.begin(), xml.end());
    Document document = Document::New(DocumentKind::Text);
    ASSERT_TRUE(document.WriteMember("content.xml", content));
    Document file = Saved(document);
    EXPECT_EQ(file.VersionOf("content.xml"), "1.2");
    file.Text()->SetTextP()->SetText("more");
    file = Saved(file);
    EXPECT_EQ(file.VersionOf("content.xml"), "1.2") << "it was so before";
    file.Text()->SetDrawRect()->SetTableTable();
    file = Saved(file);
    EXPECT_EQ(file.VersionOf("content.xml"), "1.4");
}

TEST(Versions, KeysThatCameLaterAreUnknownToTheListed) {
    const char* const xml = R"(<style:chart-properties chart:interpolation="step-end"/>)";
    EXPECT_EQ(test::RoundTrip(xml), R"(<style:chart-properties chart:interpolation="none"/>)");
    const auto whole = test::Read(xml, Fidelity::Everything);
    EXPECT_EQ(As<CStyleChartProperties>(whole).ChartInterpolation(), ST_ChartInterpolation::StepEnd);
    EXPECT_EQ(test::Written(*whole, Fidelity::Everything), xml);
}

TEST(Versions, ANameThatTheParentHasForAnotherElementStaysTheFilesOwn) {
    const std::string xml =
        R"(<draw:page draw:master-page-name="m"><office:annotation/><officeooo:annotation/></draw:page>)";
    const auto page = test::Read(xml, Fidelity::Everything);
    for (const CSDObject* const child : test::ChildrenOf(*page))
        EXPECT_EQ(child->GetID(), COfficeAnnotation::kId);
    EXPECT_EQ(test::Written(*page, Fidelity::Everything), xml);
    const std::unique_ptr<CSDObject> copy = page->Clone();
    ASSERT_TRUE(copy);
    EXPECT_EQ(test::Written(*copy, Fidelity::Everything), xml);
}

TEST(WholeValues, AreNumbersWordsAndLists) {
    struct Row {
        const char* text;
        std::optional<double> number;
        std::vector<std::string_view> words;
    };
    const Row rows[] = {{"7", 7, {"7"}},        {"-1.5", -1.5, {"-1.5"}}, {" 3\n", 3, {"3"}},
                        {"auto", {}, {"auto"}}, {"90deg", {}, {"90deg"}}, {"1 2", {}, {"1", "2"}},
                        {"", {}, {}},           {" \t", {}, {}},          {"a b  c", {}, {"a", "b", "c"}}};
    for (const Row& row : rows) {
        const WholeValue value(row.text);
        EXPECT_EQ(value.text(), row.text);
        EXPECT_EQ(value.number(), row.number) << row.text;
        EXPECT_EQ(value.words(), row.words) << row.text;
        for (const std::string_view word : row.words)
            EXPECT_TRUE(value.has(word)) << row.text;
        EXPECT_FALSE(value.has("b c")) << row.text;
        EXPECT_FALSE(value.has("")) << row.text;
    }
}

TEST(WholeValues, AreWhatTheFileHasUntilSomebodySetsAnother) {
    const auto read =
        test::Read(R"(<style:paragraph-properties style:page-number="auto"/>)", Fidelity::Everything);
    auto& properties = As<CStyleParagraphProperties>(read);
    EXPECT_EQ(properties.StylePageNumber(), 0U);
    EXPECT_EQ(properties.WholeStylePageNumber()->text(), "auto");
    properties.SetStylePageNumber(7);
    EXPECT_EQ(properties.WholeStylePageNumber()->number(), 7);
    properties.SetWholeStylePageNumber("auto");
    EXPECT_TRUE(properties.WholeStylePageNumber()->has("auto"));
    EXPECT_EQ(test::Written(properties, Fidelity::Everything),
              R"(<style:paragraph-properties style:page-number="auto"/>)");
    properties.UnsetStylePageNumber();
    EXPECT_FALSE(properties.WholeStylePageNumber());

    const auto shape =
        test::Read(R"(<style:graphic-properties style:protect="position size"/>)", Fidelity::Everything);
    EXPECT_TRUE(As<CStyleGraphicProperties>(shape).WholeStyleProtect()->has("size"));
    const auto listed = test::Read(R"(<style:graphic-properties style:protect="position size"/>)");
    EXPECT_EQ(As<CStyleGraphicProperties>(listed).WholeStyleProtect()->text(), "position size");
}

TEST(Versions, HardlyAnythingOfRealDocumentsIsForeign) {
    std::size_t all = 0;
    std::size_t foreign = 0;
    std::size_t documents = 0;
    for (const test::Sample& sample : test::AllSamples()) {
        Document document;
        if (sample.isDamaged() || !document.Open(sample.path, {.password = sample.password})) continue;
        ++documents;
        for (const CSDObject* const root : document.Roots()) {
            const auto count = [&](const CSDObject& object) {
                const std::size_t own = ForeignAttributesOf(object).size();
                const bool isForeign = object.GetID() == kForeignElementId;
                all += own + (ClassOf(object) ? 1 : 0) + (ClassOf(object) ? AttributesOf(object).size() : 0);
                foreign += own + (isForeign ? 1 : 0);
            };
            count(*root);
            for (const CSDObject& object : root->Descendants())
                count(object);
        }
    }
    if (!test::HasCollection()) GTEST_SKIP() << "the collection isn't here";
    EXPECT_GT(documents, 50U);
    EXPECT_LT(static_cast<double>(foreign), 0.001 * static_cast<double>(all)) << foreign << " of " << all;
}

TEST(Versions, ChangedDocumentsOfEachKeepTheirsAndTheirTrees) {
    if (!test::HasCollection()) GTEST_SKIP() << "the collection isn't here";
    std::map<std::string, int> counts;
    for (const test::Sample& sample : test::GoodSamples()) {
        SCOPED_TRACE(sample.path);
        Document document;
        ASSERT_TRUE(document.Open(sample.path, {.password = sample.password}));
        if (!document.Body() || std::ranges::empty(document.Body()->Descendants<CTextP>())) continue;
        CTextP& paragraph = *document.Body()->Descendants<CTextP>().begin();
        SetText(paragraph, "Of its version.");
        document.RemovePassword();
        CSDObject& changed = *document.Roots().front(); // the content comes first
        Document again = Saved(document);
        ASSERT_FALSE(again.Roots().empty());
        EXPECT_EQ(ToXml(*again.Roots().front(), {}, Fidelity::Everything),
                  ToXml(changed, {}, Fidelity::Everything));
        EXPECT_EQ(again.Version(), document.Version());
        ++counts[document.Version()];
    }
    for (const char* const version : {"1.0", "1.1", "1.2", "1.3", "1.4"})
        EXPECT_GT(counts[version], 0) << version;
}
