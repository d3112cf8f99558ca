// Writing: escaping, namespaces, raw output, targets that fail.

#include "support/element_xml.h"
#include "support/files.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>
#include <odfmodel/serial/sax_reader.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <thread>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct SerializerRelease {
    void operator()(CSDSerializer* serializer) const { ReleaseSerialize(serializer); }
};
using Serializer = std::unique_ptr<CSDSerializer, SerializerRelease>;

struct Writer {
    Writer() { serializer->SetDiagnostics(&diagnostics); }
    bool isNoted() const {
        return diagnostics.notes().size() == 1 && diagnostics.notes()[0].code == ODF::NoteCode::WriteFailed;
    }
    ODF::Diagnostics diagnostics;
    Serializer serializer{CreateSerialize()};
};

struct Escape {
    const char* name;
    std::u16string units;
    const char *attribute, *text;
    std::u16string back; ///< what is read again
};

std::vector<Escape> Escapes() {
    const std::u16string high = u"a" + std::u16string(1, char16_t{0xD83D}) + u"b";
    const std::u16string low = std::u16string(1, char16_t{0xDE00}) + u"\uFFFE\uFFFF";
    return {
        {"Markup", u"<&>\"'", "&lt;&amp;&gt;&quot;'", "&lt;&amp;&gt;\"'", u"<&>\"'"},
        {"EscapedAlready", u"&amp;&#10;", "&amp;amp;&amp;#10;", "&amp;amp;&amp;#10;", u"&amp;&#10;"},
        {"WhiteSpace", u" a  b\t\n\r\r\n ", " a  b&#9;&#10;&#13;&#13;&#10; ", " a  b\t\n&#13;&#13;\n ",
         u" a  b\t\n\r\r\n "},
        {"CdataEnd", u"]]>", "]]&gt;", "]]&gt;", u"]]>"},
        {"Controls", u"a\x01\x0B\x1F\x7Fz", "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\x7Fz",
         "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\x7Fz", u"a\uFFFD\uFFFD\uFFFD\x7Fz"},
        {"LoneHighSurrogate", high,
         "a\xEF\xBF\xBD"
         "b",
         "a\xEF\xBF\xBD"
         "b",
         u"a\uFFFDb"},
        {"LowSurrogateAndNonCharacters", low, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD",
         "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD", u"\uFFFD\uFFFD\uFFFD"},
        {"BeyondAscii", u"\u00E4\u20AC\U0001F600\U0010FFFD",
         "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBD",
         "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBD", u"\u00E4\u20AC\U0001F600\U0010FFFD"},
    };
}

class WriteEscapes : public testing::TestWithParam<Escape> {};
TEST_P(WriteEscapes, SoThatTheTextComesBack) {
    const Escape& given = GetParam();
    const auto object = test::Make("text:p");
    auto& paragraph = static_cast<ODF::CTextP&>(*object);
    paragraph.SetTextStyleName(given.units);
    paragraph.SetText(given.units);
    EXPECT_EQ(test::Written(paragraph),
              std::string("<text:p text:style-name=\"") + given.attribute + "\">" + given.text + "</text:p>");
    const auto again = test::Make("text:p");
    ASSERT_TRUE(ODF::FromXml(ODF::ToXml(paragraph), *again));
    CTulStringW name;
    EXPECT_TRUE(static_cast<ODF::CTextP&>(*again).GetTextStyleName(name));
    EXPECT_EQ(name.view(), given.back);
    ASSERT_EQ(test::ChildrenOf(*again).size(), 1U);
    EXPECT_EQ(static_cast<CSDStringValueObject*>(test::ChildrenOf(*again)[0])->Getval().view(), given.back);
}

TEST_P(WriteEscapes, AlsoAcrossBuffers) {
    // Long enough that the text stands at every place of the output buffer's end.
    const auto object = test::Make("dc:title");
    auto& title = static_cast<ODF::CDcTitle&>(*object);
    std::u16string units;
    while (units.size() < 700'000)
        units += GetParam().units + u"-";
    title.Setval(units);
    const std::string written = test::Written(title);
    std::string expected;
    while (expected.size() + std::string_view(GetParam().text).size() < written.size() - 21)
        expected += std::string(GetParam().text) + "-";
    EXPECT_TRUE(written == "<dc:title>" + expected + "</dc:title>");
}

INSTANTIATE_TEST_SUITE_P(All, WriteEscapes, testing::ValuesIn(Escapes()),
                         [](const auto& given) { return given.param.name; });

std::set<std::string> DeclaredIn(const std::string& xml) {
    std::set<std::string> prefixes;
    for (std::size_t at = 0; (at = xml.find(" xmlns:", at)) != std::string::npos; ++at)
        prefixes.insert(xml.substr(at + 7, xml.find('=', at) - at - 7));
    return prefixes;
}

TEST(WriteNamespaces, TheRootDeclaresExactlyWhatIsUsed) {
    const struct {
        const char* xml;
        std::set<std::string> prefixes;
    } kRows[] = {
        {"<text:p/>", {"text"}},
        {"<text:p><text:s/>x</text:p>", {"text"}},
        {"<text:p><text:a/></text:p>", {"text", "xlink"}},
        {R"(<text:p><text:a office:name="n"/></text:p>)", {"text", "xlink", "office"}},
        {"<office:meta><dc:date/></office:meta>", {"office", "dc"}},
        {"<draw:page><officeooo:annotation/></draw:page>", {"draw", "officeooo"}},
        {"<meta:document-statistic frame-count=\"1\"/>", {"meta"}},
        {"<style:text-properties text:condition=\"\"/>", {"style"}},
        {"<style:text-properties text:condition=\"x\"/>", {"style", "text"}},
        {"<table:table-template/>", {"table"}},
        {"<style:table-properties tableooo:tab-color=\"#ff0000\"/>", {"style", "tableooo"}},
        {"<math:math><math:mi xlink:href=\"\"/></math:math>", {"math", "xlink"}},
        {"<office:forms><xforms:model/></office:forms>", {"office", "xforms"}},
        // Prefixes in values.
        {"<table:table-cell table:formula=\"of:=1\"/>", {"table", "of"}},
        {"<table:table-cell table:formula=\"nothing:=1\" office:date-value=\":\"/>", {"table", "office"}},
    };
    for (const auto& row : kRows) {
        const std::string xml = ODF::ToXml(*test::Read(row.xml));
        EXPECT_EQ(DeclaredIn(xml), row.prefixes) << row.xml;
        EXPECT_LT(xml.rfind(" xmlns:"), xml.find('>', xml.find("?>") + 2)) << "on the root alone";
    }
}

TEST(WriteNamespaces, AClassWhereNoMapListsItIsWrittenUnderItsName) {
    const auto paragraph = test::Make("text:p");
    paragraph->SetObject(test::Make("table:table").release(), 1);
    const std::string xml = ODF::ToXml(*paragraph);
    EXPECT_EQ(DeclaredIn(xml), (std::set<std::string>{"text", "table"}));
    EXPECT_EQ(test::Written(*paragraph), "<text:p><table:table/></text:p>");
    const auto list = test::Make("text:list");
    list->SetObject(test::Read("<dc:date>2013-05-07</dc:date>").release(), 1);
    EXPECT_EQ(test::Written(*list), "<text:list><dc:date>2013-05-07T00:00:00.000</dc:date></text:list>");
}

TEST(WriteTree, HasADeclarationAndNoIndentation) {
    EXPECT_EQ(ODF::ToXml(*test::Read("<text:p><text:span><text:s/></text:span></text:p>")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<text:p xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\">"
              "<text:span><text:s/></text:span></text:p>");
}

TEST(WriteTree, TheRootHasItsOwnNameOrTheOneThatIsGiven) {
    const auto object = test::Make("office:document-content");
    auto& root = static_cast<ODF::COfficeDocumentContent&>(*object);
    EXPECT_EQ(test::Written(root), "<office:document-content/>");
    root.SetElemName("office:document-styles");
    EXPECT_EQ(test::Written(root), "<office:document-styles/>");
    EXPECT_EQ(test::Bare(ODF::ToXml(root, "office:body")), "<office:body/>");
    EXPECT_EQ(ODF::ToXml(root, "no name"), "");
    EXPECT_EQ(test::Written(*test::Read("<dc:date>2013</dc:date>")),
              "<dc:date>2013-00-00T00:00:00.000</dc:date>");
    const auto run = std::unique_ptr<CSDObject>(CSDStringValueObject::Create(ODF::kTextRunId));
    EXPECT_EQ(ODF::ToXml(*run), "") << "a run is no document";
}

TEST(WriteTree, OwnTextStandsBeforeTheChildren) {
    const auto object = test::Make("text:p");
    auto& paragraph = static_cast<ODF::CTextP&>(*object);
    paragraph.SetText(u"run");
    paragraph.SetTextS();
    paragraph.Setval(u"own<");
    paragraph.SetText();
    EXPECT_EQ(test::Written(paragraph), "<text:p>own&lt;run<text:s/></text:p>");
}

TEST(WriteFile, GoesToTheFileWithItsMissingFolders) {
    const test::TemporaryFolder folder;
    const auto root = test::Read("<text:p>\xC3\xA4</text:p>");
    Writer tree;
    EXPECT_TRUE(tree.serializer->SerializeToFile(folder / "a/b/c.xml", root.get()));
    tree.serializer.reset();
    EXPECT_EQ(test::ReadFile(folder / "a/b/c.xml"), ODF::ToXml(*root));
    EXPECT_TRUE(tree.diagnostics.notes().empty());

    test::WriteFile(folder / "a/b/c.xml", std::string(100'000, 'x'));
    Writer raw;
    EXPECT_TRUE(raw.serializer->OpenFile(folder / "a/b/c.xml"));
    raw.serializer->WriteRaw(u"<a&\u00E4\U0001F600\"");
    raw.serializer->WriteRaw(ToUnits(u"xyz"), 2);
    raw.serializer->WriteRaw(ToUnits(u"xyz"), 0);
    raw.serializer->WriteRaw(ToUnits(u"xyz"), -1);
    raw.serializer->WriteRaw(static_cast<const unsigned short*>(nullptr), 5);
    raw.serializer.reset(); // finishes the file without a Close
    EXPECT_EQ(test::ReadFile(folder / "a/b/c.xml"), "<a&\xC3\xA4\xF0\x9F\x98\x80\"xy");
}

TEST(WriteFile, FailingTargetsAreTold) {
    const test::TemporaryFolder folder;
    const auto root = test::Read("<text:p>x</text:p>");
    test::WriteFile(folder / "file", "x");
    std::vector<std::string> targets{folder / "file/below.xml", folder.path().string(), "/proc/none/a.xml"};
    fs::create_directory(folder / "locked");
    fs::permissions(folder / "locked", fs::perms::owner_read | fs::perms::owner_exec);
    if (geteuid() != 0) targets.push_back(folder / "locked/a.xml");
    for (const std::string& target : targets) {
        Writer writer;
        EXPECT_FALSE(writer.serializer->SerializeToFile(target, root.get())) << target;
        EXPECT_TRUE(writer.isNoted()) << target;
        Writer opener;
        EXPECT_FALSE(opener.serializer->OpenFile(target)) << target;
        EXPECT_TRUE(opener.isNoted()) << target;
    }
    Writer nothing;
    EXPECT_FALSE(nothing.serializer->SerializeToFile("", root.get()));
    EXPECT_FALSE(
        nothing.serializer->SerializeToFile(static_cast<const unsigned short*>(nullptr), root.get()));
    EXPECT_FALSE(nothing.serializer->SerializeToFile(folder / "a.xml", nullptr));
    EXPECT_FALSE(nothing.serializer->OpenMemory(nullptr, 5));
    EXPECT_FALSE(nothing.serializer->OpenMemory(&nothing, -1));
    fs::permissions(folder / "locked", fs::perms::owner_all);
}

TEST(WriteFile, AFullDiskIsTold) {
    if (!fs::exists("/dev/full")) GTEST_SKIP();
    const auto title = test::Make("dc:title");
    static_cast<ODF::CDcTitle&>(*title).Setval(std::u16string(1'000'000, u'x'));
    for (CSDObject* const root : {title.get(), test::Make("text:p").release()}) {
        Writer writer;
        EXPECT_FALSE(writer.serializer->SerializeToFile("/dev/full", root));
        EXPECT_TRUE(writer.isNoted());
        if (root != title.get()) CSDObject::Delete(root);
    }
    Writer raw;
    ASSERT_TRUE(raw.serializer->OpenFile("/dev/full"));
    raw.serializer->WriteRaw("some text");
    EXPECT_EQ(raw.serializer->Close(), -1);
    EXPECT_TRUE(raw.isNoted());
}

TEST(WriteMemory, CountsBytesAndStaysInside) {
    const std::u16string text = u"\u00E4\u20AC\U0001F600x";
    constexpr int kBytes = 2 + 3 + 4 + 1;
    for (int capacity = 0; capacity <= kBytes + 2; ++capacity) {
        std::string buffer(kBytes + 10, '#');
        Writer writer;
        ASSERT_TRUE(writer.serializer->OpenMemory(buffer.data(), capacity));
        writer.serializer->WriteRaw(text);
        const bool fits = capacity >= kBytes;
        EXPECT_EQ(writer.serializer->Close(), fits ? kBytes : -1) << capacity;
        EXPECT_EQ(writer.isNoted(), !fits);
        EXPECT_EQ(buffer.substr(static_cast<std::size_t>(capacity)),
                  std::string(buffer.size() - static_cast<std::size_t>(capacity), '#'))
            << "beyond the capacity";
        if (fits) {
            EXPECT_EQ(buffer.substr(0, kBytes), ODF::ToUtf8(text));
        }
    }
    // More than one output buffer, too large and just large enough.
    const std::string large(1'000'000, 'x');
    for (const int capacity : {999'999, 1'000'000}) {
        std::string buffer(1'000'100, '#');
        Writer writer;
        ASSERT_TRUE(writer.serializer->OpenMemory(buffer.data(), capacity));
        for (std::size_t at = 0; at < large.size(); at += 1000)
            writer.serializer->WriteRaw(large.substr(at, 1000));
        EXPECT_EQ(writer.serializer->Close(), capacity == 1'000'000 ? 1'000'000 : -1);
        EXPECT_EQ(buffer.find('x', static_cast<std::size_t>(capacity)), std::string::npos);
    }
    Writer unbound;
    unbound.serializer->WriteRaw("x");
    EXPECT_EQ(unbound.serializer->Close(), -1) << "nowhere to write to";
}

TEST(WriteMemory, ASurrogatePairMayComeInTwoPieces) {
    std::string buffer(20, '#');
    Writer writer;
    ASSERT_TRUE(writer.serializer->OpenMemory(buffer.data(), 20));
    const std::u16string_view pair = u"\U0001F600";
    writer.serializer->WriteRaw(pair.substr(0, 1));
    writer.serializer->WriteRaw(pair.substr(1));
    EXPECT_EQ(writer.serializer->Close(), 6) << "each half is one character that is none";
}

TEST(WriteTree, TreesMayBeReadAndWrittenOnSeveralThreads) {
    const auto work = [] {
        for (int i = 0; i < 100; ++i) {
            const char* const xml =
                "<text:p>a<text:span>b<draw:frame draw:name=\"n\" svg:x=\"1cm\"/></text:span></text:p>";
            EXPECT_EQ(test::RoundTrip(xml), xml);
        }
    };
    std::thread other(work);
    work();
    other.join();
}

} // namespace
