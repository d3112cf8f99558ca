// Reading XML into a tree: namespaces, character data, what is unknown, faults and limits.

#include "support/element_xml.h"
#include "support/files.h"
#include "support/texts.h"
#include "xml/reading.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ctime>

namespace {

using ODF::NoteCode;
using test::ChildrenOf;
using test::Declared;
using test::Make;
using test::Reader;

constexpr const char* kText = "urn:oasis:names:tc:opendocument:xmlns:text:1.0";

/// Reads a document in which capitals stand for namespaces and gives what is written for it.
std::string ReadAs(std::string_view element, std::string xml) {
    for (const auto& [name, uri] : std::initializer_list<std::pair<const char*, const char*>>{
             {"TEXT", kText},
             {"META", "urn:oasis:names:tc:opendocument:xmlns:meta:1.0"},
             {"XLINK", "http://www.w3.org/1999/xlink"},
             {"MATH", "http://www.w3.org/1998/Math/MathML"}})
        xml = test::Replaced(xml, name, uri);
    const auto object = Make(element);
    EXPECT_TRUE(ODF::FromXml(xml, *object));
    return test::Written(*object);
}

struct Namespaces {
    const char *name, *xml, *written;
};

constexpr Namespaces kNamespaces[] = {
    {"DefaultNamespace", R"(<p xmlns="TEXT" xmlns:t="TEXT" t:id="1"><s t:c="2"/></p>)",
     R"(<text:p text:id="1"><text:s text:c="2"/></text:p>)"},
    {"DefaultNamespaceDoesNotReachAttributes", R"(<p xmlns="TEXT" id="1"><s c="2"/></p>)",
     R"(<text:p><text:s/></text:p>)"},
    {"DefaultNamespaceTakenBack", R"(<p xmlns="TEXT"><s xmlns=""/><s/></p>)",
     R"(<text:p><text:s/></text:p>)"},
    {"TwoPrefixesOfOneUri", R"(<a:p xmlns:a="TEXT" xmlns:b="TEXT" b:id="1"><b:s a:c="2"/><a:s/></a:p>)",
     R"(<text:p text:id="1"><text:s text:c="2"/><text:s/></text:p>)"},
    {"OneAttributeByTwoPrefixes",
     R"(<a:p xmlns:a="TEXT" xmlns:b="TEXT" a:id="1" a:style-name="s" b:id="2"/>)",
     R"(<text:p text:style-name="s" text:id="2"/>)"},
    {"PrefixSwitchedBelowTheRoot",
     R"(<a:p xmlns:a="TEXT"><a:s a:c="1"/><a:s xmlns:a="urn:x" a:c="1"/><b:s xmlns:b="TEXT" b:c="2"/><a:s a:c="3"/></a:p>)",
     R"(<text:p><text:s text:c="1"/><text:s text:c="2"/><text:s text:c="3"/></text:p>)"},
    {"PrefixSwitchedDeeper",
     R"(<t:p xmlns:t="TEXT"><t:span><u:span xmlns:u="TEXT" xmlns:t="urn:x"><u:s/><t:s/></u:span><t:s/></t:span></t:p>)",
     R"(<text:p><text:span><text:span><text:s/></text:span><text:s/></text:span></text:p>)"},
    {"SamePrefixForTwoUrisInTurn",
     R"(<t:p xmlns:t="TEXT"><s xmlns="TEXT" t:c="1"/><s xmlns="urn:x" t:c="2"/><s xmlns="TEXT" t:c="3"/><s t:c="4"/></t:p>)",
     R"(<text:p><text:s text:c="1"/><text:s text:c="3"/></text:p>)"},
    {"CustomaryPrefixOfAForeignUri",
     R"(<t:p xmlns:t="TEXT" xmlns:text="urn:x" text:id="1"><text:s/><t:s text:c="1" t:c="2"/></t:p>)",
     R"(<text:p><text:s text:c="2"/></text:p>)"},
    {"CustomaryPrefixesSwapped",
     R"(<xlink:a xmlns:xlink="TEXT" xmlns:text="XLINK" text:href="h" xlink:style-name="s"/>)",
     R"(<text:a xlink:href="h" text:style-name="s"/>)"},
    {"UndeclaredPrefix", R"(<t:p xmlns:t="TEXT"><text:s/><t:s/></t:p>)", R"(<text:p><text:s/></text:p>)"},
    {"ForeignPrefixLikeALocalName", R"(<t:p xmlns:t="TEXT" xmlns:p="urn:x"><p:s/>a<s/>b</t:p>)",
     R"(<text:p>ab</text:p>)"},
    {"MathWithoutPrefixes", R"(<math xmlns="MATH" display="block"><mi mathvariant="italic">x</mi></math>)",
     R"(<math:math math:display="block"><math:mi math:mathvariant="italic">x</math:mi></math:math>)"},
    {"MathWithAnyPrefix",
     R"(<m:math xmlns:m="MATH" m:display="block"><m:mi mathvariant="italic">x</m:mi></m:math>)",
     R"(<math:math math:display="block"><math:mi math:mathvariant="italic">x</math:mi></math:math>)"},
    {"MathAttributesOfOthers", R"(<mi xmlns="MATH" xmlns:xlink="XLINK" xlink:href="h" href="no"/>)",
     R"(<math:mi xlink:href="h"/>)"},
    {"UnprefixedAttributesOfOneElement",
     R"(<m:document-statistic xmlns:m="META" m:page-count="3" frame-count="4" m:frame-count="9"/>)",
     R"(<meta:document-statistic meta:page-count="3" frame-count="4"/>)"},
};

class ReadNamespaces : public testing::TestWithParam<Namespaces> {};
TEST_P(ReadNamespaces, AreResolved) {
    const std::string_view written = GetParam().written;
    EXPECT_EQ(ReadAs(written.substr(1, written.find_first_of(" >") - 1), GetParam().xml), written);
}
INSTANTIATE_TEST_SUITE_P(All, ReadNamespaces, testing::ValuesIn(kNamespaces),
                         [](const auto& given) { return given.param.name; });

/// Texts of the children of a paragraph; "<>" for an element.
std::vector<std::string> Runs(const CSDObject& paragraph) {
    std::vector<std::string> runs;
    for (const CSDObject* const child : ChildrenOf(paragraph))
        runs.push_back(ODF::IsTextRun(*child) ? ODF::TextOf(*child) : "<>");
    return runs;
}

struct Text {
    const char* name;
    std::string xml;
    std::vector<std::string> runs;
};

std::vector<Text> Texts() {
    const std::string large(200'000, 'x');
    std::string mixed;
    for (int i = 0; i < 30'000; ++i)
        mixed += "a&lt;<!--c--><![CDATA[]]]]>\xC3\xA4&#228;";
    std::string plain;
    for (int i = 0; i < 30'000; ++i)
        plain += "a<]]\xC3\xA4\xC3\xA4";
    return {
        {"Plain", "<text:p>abc</text:p>", {"abc"}},
        {"Nothing", "<text:p></text:p>", {}},
        {"Blank", "<text:p> </text:p>", {" "}},
        {"Entities", "<text:p>a&amp;b&#65;&#x42;&lt;&quot;&apos;&gt;c</text:p>", {"a&bAB<\"'>c"}},
        {"Cdata", "<text:p>a<![CDATA[<b>&amp;]]>c<![CDATA[]]></text:p>", {"a<b>&amp;c"}},
        {"Comments", "<text:p>a<!-- x -->b<!---->c</text:p>", {"abc"}},
        {"Instructions", "<text:p>a<?pi data?>b</text:p>", {"ab"}},
        {"LineEnds", "<text:p>a\r\nb\rc\nd\te&#13;</text:p>", {"a\nb\nc\nd\te\r"}},
        {"AroundElements",
         "<text:p>a<text:s/>b<text:s/><text:s/>c</text:p>",
         {"a", "<>", "b", "<>", "<>", "c"}},
        {"AroundUnknown", "<text:p>a<text:foo>lost<text:s/></text:foo>b</text:p>", {"a", "b"}},
        {"PrettyPrinted", "<text:p>\n  <text:s/>\n</text:p>", {"\n  ", "<>", "\n"}},
        {"BeyondTheBmp", "<text:p>\xF0\x9F\x98\x80&#x1F600;</text:p>", {"\xF0\x9F\x98\x80\xF0\x9F\x98\x80"}},
        {"Large", "<text:p>" + large + "</text:p>", {large}},
        {"LargeMixed", "<text:p>" + mixed + "</text:p>", {plain}},
        {"LargeAroundElements", "<text:p>" + large + "<text:s/>" + large + "</text:p>", {large, "<>", large}},
    };
}

class ReadTexts : public testing::TestWithParam<Text> {};

TEST_P(ReadTexts, GiveOneRunForEachUnbrokenStretch) {
    const auto& [name, xml, runs] = GetParam();
    const auto paragraph = test::Read(xml);
    EXPECT_EQ(Runs(*paragraph), runs);
    EXPECT_EQ(ODF::TextOf(*paragraph), "");

    const test::TemporaryFolder folder;
    test::WriteFile(folder / "content.xml", Declared(xml));
    const auto fromFile = Make("text:p");
    Reader reader;
    EXPECT_TRUE(reader.reader->ParseFile(folder / "content.xml", fromFile.get()));
    EXPECT_EQ(Runs(*fromFile), runs);
    EXPECT_TRUE(reader.diagnostics.notes().empty());

    std::string value; // of an element without runs
    for (const std::string& run : runs)
        if (run != "<>") value += run;
    EXPECT_EQ(ODF::TextOf(*test::Read(test::Replaced(xml, "text:p>", "text:ruby-base>"))), value);
}

INSTANTIATE_TEST_SUITE_P(All, ReadTexts, testing::ValuesIn(Texts()),
                         [](const auto& given) { return given.param.name; });

TEST(ReadUnknown, IsPassedOverAndCounted) {
    Reader reader;
    const auto root = Make("office:text");
    ASSERT_TRUE(reader.parse(
        Declared(
            R"(<office:text xml:id="i" text:global="true" other="1" xmlns:x="urn:x" x:y="2">lost)"
            R"(<text:p xml:id="a" text:style-name="S" office:name="n"/><text:p xml:id="b"/>  )"
            R"(<text:foo text:c="9"><text:p>deep</text:p><text:foo/></text:foo><x:foo/><foo xmlns="urn:y"/>)"
            R"(<text:list>lost<text:list-item>lost<text:p>kept</text:p>lost</text:list-item></text:list></office:text>)"),
        *root));
    EXPECT_EQ(test::Written(*root),
              R"(<office:text text:global="1"><text:p text:style-name="S"/><text:p/>)"
              R"(<text:list><text:list-item><text:p>kept</text:p></text:list-item></text:list>)"
              R"(</office:text>)");
    using Counts = ODF::Diagnostics::NameCounts;
    EXPECT_EQ(reader.diagnostics.unknownElements(), (Counts{{"text:foo", 1}, {"x:foo", 1}, {"foo", 1}}));
    EXPECT_EQ(reader.diagnostics.unknownAttributes(), (Counts{{"office:text@xml:id", 1},
                                                              {"office:text@other", 1},
                                                              {"office:text@x:y", 1},
                                                              {"text:p@xml:id", 2},
                                                              {"text:p@office:name", 1}}));
    EXPECT_EQ(reader.diagnostics.droppedText(),
              (Counts{{"office:text", 1}, {"text:list", 1}, {"text:list-item", 2}}));
    EXPECT_TRUE(reader.diagnostics.notes().empty());
}

TEST(ReadUnknown, ManyNamesAreCountedInABoundedPlace) {
    std::string xml = R"(<office:text>)";
    for (int i = 0; i < 20'000; ++i)
        xml += "<n" + std::to_string(i) + "/><text:p a" + std::to_string(i) + "=\"\" text:id=\"" +
               std::to_string(i) + "\"/>";
    Reader reader;
    const auto root = Make("office:text");
    ASSERT_TRUE(reader.parse(Declared(xml + "</office:text>"), *root));
    for (const auto* const names :
         {&reader.diagnostics.unknownElements(), &reader.diagnostics.unknownAttributes()}) {
        std::size_t sum = 0;
        for (const auto& [name, count] : *names)
            sum += count;
        EXPECT_EQ(sum, 20'000U);
    }
    EXPECT_LE(reader.diagnostics.unknownElements().size(), 10'001U);
    ASSERT_EQ(ChildrenOf(*root).size(), 20'000U);
    EXPECT_EQ(test::AttributeOf(*ChildrenOf(*root).back(), "text:id"), "19999");
}

TEST(ReadRoot, AnotherElementIsNotedAndReadAllTheSame) {
    Reader reader;
    const auto root = Make("office:document-content");
    EXPECT_TRUE(reader.parse(Declared(R"(<office:document-styles office:version="1.2"/>)"), *root));
    EXPECT_FALSE(reader.reader->HasMatchedRoot());
    EXPECT_EQ(reader.note().severity, ODF::Severity::Warning);
    EXPECT_EQ(reader.note().member, "content.xml");
    EXPECT_NE(reader.note().text.find("office:document-styles"), std::string::npos);
    EXPECT_TRUE(reader.parse(Declared(R"(<office:document-content/>)"), *root));
    EXPECT_TRUE(reader.reader->HasMatchedRoot());
    EXPECT_EQ(reader.diagnostics.notes().size(), 1U);
}

struct Broken {
    const char *name, *xml, *kept;
    unsigned long line, column;
};

constexpr Broken kBroken[] = {
    {"EndsEarly", "<text:p>a<text:s/>b", "<text:p>a<text:s/>b</text:p>", 1, 0},
    {"EndsInATag", "<text:p>a<text:s/>b<text:s", "<text:p>a<text:s/>b</text:p>", 1, 0},
    {"EndsInAnAttribute", "<text:p>\n<text:s/><text:s text:c=\"", "<text:p>\n<text:s/></text:p>", 2, 10},
    {"TagsCross", "<text:p>\nab<text:span>c</text:p></text:span>",
     "<text:p>\nab<text:span>c</text:span></text:p>", 2, 17},
    {"BareAmpersand", "<text:p>\n\na & b</text:p>", "<text:p>\n\na </text:p>", 3, 4},
    {"UnknownEntity", "<text:p>ab&nbsp;c</text:p>", "<text:p>ab</text:p>", 1, 0},
    {"AttributeTwice", "<text:p><text:s text:c=\"1\" text:c=\"2\"/></text:p>", "<text:p/>", 1, 0},
    {"ForbiddenCharacter", "<text:p>ab\x01</text:p>", "<text:p>ab</text:p>", 1, 0},
    {"BadUtf8", "<text:p>ab\xC3(</text:p>", "<text:p>ab</text:p>", 1, 0},
    {"ForbiddenReference", "<text:p>ab&#0;</text:p>", "<text:p>ab</text:p>", 1, 0},
    {"SurrogateReference", "<text:p>ab&#xD800;</text:p>", "<text:p>ab</text:p>", 1, 0},
    {"TextBehindTheRoot", "<text:p>a</text:p>b", "<text:p>a</text:p>", 1, 0},
    {"SecondRoot", "<text:p>a</text:p>\n<text:p/>", "<text:p>a</text:p>", 2, 1},
    {"UnquotedAttribute", "<text:p>a<text:s text:c=1/></text:p>", "<text:p>a</text:p>", 1, 0},
};

class ReadBroken : public testing::TestWithParam<Broken> {};
TEST_P(ReadBroken, KeepsWhatCameBeforeAndTellsWhere) {
    const Broken& given = GetParam();
    Reader reader;
    const auto root = Make("text:p");
    EXPECT_FALSE(reader.parse(Declared(given.xml), *root));
    EXPECT_EQ(test::Written(*root), given.kept);
    EXPECT_EQ(reader.note().code, NoteCode::XmlNotWellFormed);
    EXPECT_EQ(reader.note().severity, ODF::Severity::Error);
    EXPECT_EQ(reader.note().member, "content.xml");
    EXPECT_FALSE(reader.note().text.empty());
    EXPECT_EQ(reader.note().line, given.line);
    if (given.column) {
        EXPECT_EQ(reader.note().column, given.column);
    } else {
        EXPECT_GT(reader.note().column, 0U);
    }
}
INSTANTIATE_TEST_SUITE_P(All, ReadBroken, testing::ValuesIn(kBroken),
                         [](const auto& given) { return given.param.name; });

TEST(ReadBroken, NothingAtAll) {
    const auto root = Make("text:p");
    for (const std::string xml :
         {"", " ", "<", "text", "<?xml version=\"1.0\"?>", "\xEF\xBB\xBF", "PK\x03\x04"}) {
        Reader reader;
        EXPECT_FALSE(reader.parse(xml, *root));
        EXPECT_EQ(test::Written(*root), "<text:p/>");
        EXPECT_EQ(reader.note().code, NoteCode::XmlNotWellFormed);
    }
    Reader reader;
    EXPECT_FALSE(reader.reader->ParseMemory(nullptr, 5, root.get()));
    EXPECT_FALSE(reader.reader->ParseMemory("<a/>", 4, nullptr));
    EXPECT_FALSE(reader.reader->ParseFile("/nowhere/content.xml", root.get()));
    EXPECT_EQ(reader.note().code, NoteCode::MemberUnreadable);
    EXPECT_FALSE(reader.reader->ParseFile("/", root.get()));
    EXPECT_FALSE(reader.reader->ParseFile(static_cast<const unsigned short*>(nullptr), root.get()));
}

std::string Utf16(std::string_view utf8, bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char16_t unit : ODF::ToUtf16(utf8)) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

TEST(ReadEncodings, Utf8Utf16AndLatin1) {
    const std::string xml = "<text:p text:style-name=\"\xC3\xA4\">\xE2\x82\xAC\xF0\x9F\x98\x80</text:p>";
    const std::string body = Declared(xml);
    const auto read = [](const std::string& input) {
        const auto root = Make("text:p");
        return ODF::FromXml(input, *root) ? test::Written(*root) : "(refused)";
    };
    for (const std::string& input :
         {body, "\xEF\xBB\xBF" + body, "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + body,
          Utf16(body, false), Utf16(body, true),
          Utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + body, false)})
        EXPECT_EQ(read(input), xml);
    EXPECT_EQ(read("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + Declared("<text:p>\xE4</text:p>")),
              "<text:p>\xC3\xA4</text:p>");
    EXPECT_EQ(read("<?xml version=\"1.0\" encoding=\"no-such\"?>" + body), "(refused)");
}

std::string Nested(unsigned depth, const char* element = "text:section") {
    std::string xml;
    for (unsigned i = 0; i < depth; ++i)
        xml += '<' + std::string(element) + '>';
    for (unsigned i = 0; i < depth; ++i)
        xml += "</" + std::string(element) + '>';
    return xml;
}

unsigned DepthOf(const CSDObject* object) {
    unsigned depth = 0;
    for (; object; ++depth)
        object = ChildrenOf(*object).empty() ? nullptr : ChildrenOf(*object)[0];
    return depth;
}

TEST(ReadLimits, Depth) {
    ODF::Limits limits;
    for (const unsigned limit : {1U, 5U, limits.depth}) {
        limits.depth = limit;
        Reader fitting(limits);
        EXPECT_TRUE(fitting.parse(Declared(Nested(limit)), *Make("text:section")));
        EXPECT_TRUE(fitting.diagnostics.notes().empty());
        const auto root = Make("text:section");
        // What is passed over counts too.
        for (const std::string& xml :
             {Nested(limit + 1), "<text:section>" + Nested(limit, "x") + "</text:section>"}) {
            Reader reader(limits);
            EXPECT_FALSE(reader.parse(Declared(xml), *root));
            EXPECT_EQ(reader.note().code, NoteCode::DepthLimit);
            EXPECT_EQ(DepthOf(root.get()), limit);
        }
    }
    Reader hostile;
    EXPECT_FALSE(hostile.parse(Declared(Nested(1'000'000)), *Make("text:section")));
}

TEST(ReadLimits, Sizes) {
    const auto paragraph = [](const std::string& more, const std::string& text) {
        return "<t:p xmlns:t=\"" + std::string(kText) + '"' + more + '>' + text + "</t:p>";
    };
    const test::TemporaryFolder folder;
    ODF::Limits limits;
    limits.attributes = 10;
    limits.textBytes = 100;
    limits.partBytes = 1000;
    for (const std::size_t more : {0U, 1U}) {
        std::string many = "<t:s";
        for (std::size_t i = 0; i < limits.attributes + more; ++i)
            many += " a" + std::to_string(i) + "=\"\"";
        const std::string longText(limits.textBytes + more, 'x');
        for (const std::string& xml : {paragraph("", many + "/>"), paragraph(" t:id=\"" + longText + '"', ""),
                                       paragraph("", longText)}) {
            Reader reader(limits);
            EXPECT_EQ(reader.parse(xml, *Make("text:p")), more == 0) << xml;
            EXPECT_EQ(reader.note().code == NoteCode::SizeLimit, more == 1) << xml;
        }
        std::string xml = paragraph("", "");
        xml.resize(limits.partBytes + more, '\n');
        test::WriteFile(folder / "a.xml", xml);
        Reader reader(limits);
        EXPECT_EQ(reader.reader->ParseFile(folder / "a.xml", Make("text:p").get()), more == 0);
        EXPECT_EQ(reader.note().code == NoteCode::SizeLimit, more == 1);
    }
}

TEST(ReadEntities, OfTheDocumentAreExpanded) {
    const auto root = Make("text:p");
    EXPECT_TRUE(ODF::FromXml("<!DOCTYPE p [<!ENTITY a \"x<t:s xmlns:t='" + std::string(kText) +
                                 "'/>y\"><!ENTITY b \"&a;&a;\">]>" +
                                 Declared("<text:p text:id=\"\">1&b;2</text:p>"),
                             *root));
    EXPECT_EQ(test::Written(*root), "<text:p text:id=\"\">1x<text:s/>yx<text:s/>y2</text:p>");
}

TEST(ReadEntities, NothingOutsideIsLoaded) {
    const test::TemporaryFolder folder;
    test::WriteFile(folder / "secret.txt", "secret");
    test::WriteFile(folder / "more.dtd", "<!ENTITY e \"secret\"><!ATTLIST text:p text:id CDATA \"secret\">");
    const std::string secret = "file://" + folder / "secret.txt";
    const std::string dtd = "file://" + folder / "more.dtd";
    const std::string types[] = {
        "<!DOCTYPE a SYSTEM \"" + dtd + "\">",
        "<!DOCTYPE a PUBLIC \"-//x//y\" \"http://127.0.0.1:9/more.dtd\">",
        "<!DOCTYPE a [<!ENTITY e SYSTEM \"" + secret + "\">]>",
        "<!DOCTYPE a [<!ENTITY % p SYSTEM \"" + dtd + "\"> %p;]>",
    };
    for (const std::string& type : types) {
        for (const char* const body : {"<text:p>a&e;b</text:p>", "<text:p>ab</text:p>"}) {
            Reader reader;
            reader.reader->SetFeature("http://apache.org/xml/features/nonvalidating/load-external-dtd", true);
            const auto root = Make("text:p");
            reader.parse(type + Declared(body), *root);
            EXPECT_EQ(test::Written(*root).find("secret"), std::string::npos) << type;
            if (!std::strstr(body, "&e;")) {
                EXPECT_EQ(test::Written(*root), "<text:p>ab</text:p>") << type;
            }
        }
    }
}

TEST(ReadEntities, ABombIsBounded) {
    std::string type = "<!DOCTYPE a [<!ENTITY a0 \"0123456789\">";
    for (int i = 1; i < 12; ++i) {
        std::string row;
        for (int k = 0; k < 10; ++k)
            row += "&a" + std::to_string(i - 1) + ";";
        type += "<!ENTITY a" + std::to_string(i) + " \"" + row + "\">";
    }
    type += "]>";
    for (const char* const body : {"<text:p>&a11;</text:p>", "<text:p text:id=\"&a11;\"/>"}) {
        Reader reader;
        const auto root = Make("text:p");
        EXPECT_FALSE(reader.parse(type + Declared(body), *root));
        EXPECT_LT(ODF::ToXml(*root).size(), 64U << 20);
        ASSERT_EQ(reader.diagnostics.notes().size(), 1U);
        EXPECT_EQ(reader.note().code, NoteCode::SizeLimit) << reader.note().text;
    }
    Reader recursive;
    EXPECT_FALSE(recursive.parse("<!DOCTYPE a [<!ENTITY e \"&e;\">]>" + Declared("<text:p>&e;</text:p>"),
                                 *Make("text:p")));
}

TEST(ReadEntities, WhatADocumentGrowsByDoesNotDependOnItsBlanks) {
    ODF::Limits limits;
    limits.entityFreeBytes = 1'000'000;
    std::string stops;
    for (int i = 0; i < 1000; ++i)
        stops += "<text:s/>";
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += "&a;";
    const std::string type = "<!DOCTYPE p [<!ENTITY a \"" + stops + "\">]>";
    const std::string blanks(1'000'000, ' ');
    Reader reader(limits);
    const auto root = Make("text:p");
    EXPECT_FALSE(reader.parse(type + blanks + Declared("<text:p>" + many + "</text:p>"), *root));
    EXPECT_EQ(reader.note().code, NoteCode::SizeLimit) << reader.note().text;
    EXPECT_LT(ChildrenOf(*root).size(), 400'000U);
    Reader modest(limits);
    EXPECT_TRUE(modest.parse(type + Declared("<text:p>&a;&a;</text:p>"), *Make("text:p")));
}

// A tag or comment that comes in many pieces may not be read again with each of them.
TEST(ReadTime, OfLongTokensIsLinear) {
    const std::string filling(4'000'000, 'x');
    const test::TemporaryFolder folder;
    const std::string start = "<t:p xmlns:t=\"" + std::string(kText) + '"';
    const std::string documents[] = {
        "<!--" + filling + "-->" + start + "/>", start + " t:id=\"" + filling + "\"/>",
        "<?pi " + filling + "?>" + start + "/>", start + "><![CDATA[" + filling + "]]></t:p>",
        "<!DOCTYPE p [<!ENTITY e \"" + filling + "\">]>" + start + "/>"};
    for (const std::string& xml : documents) {
        test::WriteFile(folder / "a.xml", xml);
        const std::clock_t before = std::clock();
        Reader chunks;
        chunks.reader->BeginChunks();
        for (std::size_t at = 0; at < xml.size(); at += 1024)
            ASSERT_TRUE(chunks.reader->ParseChunk(
                xml.data() + at, static_cast<int>(std::min<std::size_t>(xml.size() - at, 1024)), 0));
        chunks.reader->EndChunks();
        EXPECT_TRUE(chunks.diagnostics.notes().empty());
        Reader file;
        EXPECT_TRUE(file.reader->ParseFile(folder / "a.xml", Make("text:p").get()));
        EXPECT_LT(std::clock() - before, 5 * CLOCKS_PER_SEC / 2) << xml.substr(0, 12);
    }
    // And one that is longer than any value may be isn't waited for.
    ODF::Limits limits;
    limits.textBytes = 1'000'000;
    Reader bounded(limits);
    test::WriteFile(folder / "a.xml", "<text:p text:id=\"" + std::string(50'000'000, 'x'));
    EXPECT_FALSE(bounded.reader->ParseFile(folder / "a.xml", Make("text:p").get()));
    EXPECT_EQ(bounded.note().code, NoteCode::SizeLimit);
}

TEST(ReadNamespaces, ManyDeclarationsCostNoMoreThanTheyWeigh) {
    constexpr int kLevels = 25;
    std::string xml;
    for (int level = 0; level < kLevels; ++level) {
        xml += "<text:section";
        for (int i = 0; i < 4000; ++i)
            xml += " xmlns:p" + std::to_string(level * 4000 + i) + "=\"urn:x\"";
        xml += '>';
    }
    // Names that are new each time look for the prefix that was declared first.
    for (int i = 0; i < 100'000; ++i)
        xml += "<p0:e" + std::to_string(i) + "/>";
    for (int level = 0; level < kLevels; ++level)
        xml += "</text:section>";
    Reader reader;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(reader.parse(Declared(xml), *Make("text:section")));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

} // namespace
