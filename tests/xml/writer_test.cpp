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
    constexpr const char* kThree = "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz";
    constexpr const char* kBeyond = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBD";
    const std::u16string beyond = u"\u00E4\u20AC\U0001F600\U0010FFFD";
    const std::u16string halves{u'a', 0xD83D, 0xFFFE, 0xDE00, u'z'};
    return {
        {"Markup", u"<&>\"'", "&lt;&amp;&gt;&quot;'", "&lt;&amp;&gt;\"'", u"<&>\"'"},
        {"EscapedAlready", u"&amp;&#10;", "&amp;amp;&amp;#10;", "&amp;amp;&amp;#10;", u"&amp;&#10;"},
        {"WhiteSpace", u" a  b\t\n\r\r\n ", " a  b&#9;&#10;&#13;&#13;&#10; ", " a  b\t\n&#13;&#13;\n ",
         u" a  b\t\n\r\r\n "},
        {"CdataEnd", u"]]>", "]]&gt;", "]]&gt;", u"]]>"},
        {"Controls", u"a\x01\x0B\x1Fz", kThree, kThree, u"a\uFFFD\uFFFD\uFFFDz"},
        {"HalvesAndNonCharacters", halves, kThree, kThree, u"a\uFFFD\uFFFD\uFFFDz"},
        {"LowHalfFirst",
         {0xDE00, 0xD83D},
         "\xEF\xBF\xBD\xEF\xBF\xBD",
         "\xEF\xBF\xBD\xEF\xBF\xBD",
         u"\uFFFD\uFFFD"},
        {"Delete", u"\x7F\uFFFF", "\x7F\xEF\xBF\xBD", "\x7F\xEF\xBF\xBD", u"\x7F\uFFFD"},
        {"BeyondAscii", beyond, kBeyond, kBeyond, beyond},
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

    // Long enough that the text is at every place of the output buffer's end.
    const auto title = test::Make("dc:title");
    std::u16string units;
    std::string expected;
    while (units.size() < 700'000) {
        units += given.units + u"-";
        expected += given.text + std::string("-");
    }
    static_cast<ODF::CDcTitle&>(*title).Setval(units);
    EXPECT_TRUE(test::Written(*title) == "<dc:title>" + expected + "</dc:title>");
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

TEST(WriteTree, TheRootHasItsOwnNameOrTheOneThatIsGiven) {
    EXPECT_EQ(ODF::ToXml(*test::Read("<text:p><text:span><text:s/></text:span></text:p>")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<text:p xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\">"
              "<text:span><text:s/></text:span></text:p>")
        << "no indentation";
    const auto object = test::Make("office:document-content");
    auto& root = static_cast<ODF::COfficeDocumentContent&>(*object);
    EXPECT_EQ(test::Written(root), "<office:document-content/>");
    root.SetElemName("office:document-styles");
    EXPECT_EQ(test::Written(root), "<office:document-styles/>");
    EXPECT_EQ(test::Bare(ODF::ToXml(root, "office:body")), "<office:body/>");
    EXPECT_EQ(ODF::ToXml(root, "no name"), "");
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

    Writer raw;
    EXPECT_TRUE(raw.serializer->OpenFile(folder / "a/b/c.xml"));
    raw.serializer->WriteRaw(u"<a&\u00E4\U0001F600\"");
    for (const int length : {2, 0, -1})
        raw.serializer->WriteRaw(ToUnits(u"xyz"), length);
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
    const unsigned short* const none = nullptr;
    EXPECT_FALSE(nothing.serializer->SerializeToFile(none, root.get()));
    EXPECT_FALSE(nothing.serializer->SerializeToFile(folder / "a.xml", nullptr));
    EXPECT_FALSE(nothing.serializer->OpenMemory(nullptr, 5));
    EXPECT_FALSE(nothing.serializer->OpenMemory(&nothing, -1));
    fs::permissions(folder / "locked", fs::perms::owner_all);
}

TEST(WriteFile, AFullDiskIsTold) {
    if (!fs::exists("/dev/full")) GTEST_SKIP();
    const auto large = test::Make("dc:title");
    static_cast<ODF::CDcTitle&>(*large).Setval(std::u16string(1'000'000, u'x'));
    const auto small = test::Make("text:p");
    for (CSDObject* const root : {large.get(), small.get()}) {
        Writer writer;
        EXPECT_FALSE(writer.serializer->SerializeToFile("/dev/full", root));
        EXPECT_TRUE(writer.isNoted());
    }
    Writer raw;
    ASSERT_TRUE(raw.serializer->OpenFile("/dev/full"));
    raw.serializer->WriteRaw("some text");
    EXPECT_EQ(raw.serializer->Close(), -1);
    EXPECT_TRUE(raw.isNoted());
}

TEST(WriteMemory, CountsBytesAndStaysInside) {
    // A few characters of all lengths, and more than one output buffer.
    const std::u16string characters = u"\u00E4\u20AC\U0001F600x";
    for (const std::size_t pieces : {std::size_t{1}, std::size_t{100'000}}) {
        std::string expected;
        for (std::size_t i = 0; i < pieces; ++i)
            expected += ODF::ToUtf8(characters);
        for (std::size_t missing = 0; missing <= 10; ++missing) {
            std::string buffer(expected.size() + 10, '#');
            const std::size_t capacity = expected.size() - missing;
            Writer writer;
            ASSERT_TRUE(writer.serializer->OpenMemory(buffer.data(), static_cast<int>(capacity)));
            for (std::size_t i = 0; i < pieces; ++i)
                writer.serializer->WriteRaw(characters);
            const bool fits = missing == 0;
            EXPECT_EQ(writer.serializer->Close(), fits ? static_cast<int>(expected.size()) : -1) << missing;
            EXPECT_EQ(writer.isNoted(), !fits);
            EXPECT_EQ(buffer.find_first_not_of('#', capacity), std::string::npos) << "beyond the capacity";
            EXPECT_EQ(buffer.starts_with(expected), fits);
        }
    }
    Writer unbound;
    unbound.serializer->WriteRaw("x");
    EXPECT_EQ(unbound.serializer->Close(), -1) << "nowhere to write to";
    std::string buffer(20, '#');
    Writer halves;
    ASSERT_TRUE(halves.serializer->OpenMemory(buffer.data(), 20));
    halves.serializer->WriteRaw(std::u16string_view(u"\U0001F600").substr(0, 1));
    halves.serializer->WriteRaw(std::u16string_view(u"\U0001F600").substr(1));
    EXPECT_EQ(halves.serializer->Close(), 6) << "each half is one character that is none";
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
