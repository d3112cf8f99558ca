// The tokeniser accepts nothing that libexpat doesn't, and gives the same events.

#include "serial/xml/tokenizer.h"
#include "serial/xml/window.h"
#include "support/corpus.h"
#include "support/files.h"
#include "support/packages.h"
#include "two_readers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace {

/// By the productions of XML 1.0. Whether the tokeniser is sure is told for what it must not leave to
/// libexpat; '-' is for documents that may be read by either.
struct Row {
    const char* xml;
    char isSure = '-';
};

constexpr Row kWellFormed[] = {
    // document, prolog, Misc
    {"<a/>", 'y'},
    {" \n<a></a>\r\n\t ", 'y'},
    {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>", 'y'},
    {"<?xml version='1.0' encoding='utf-8' standalone='yes' ?>\n<a/>", 'y'},
    {"\xEF\xBB\xBF<?xml version=\"1.0\"?><a/>", 'y'},
    {"\xEF\xBB\xBF<a>x</a>", 'y'},
    {"<!--c--><?p d?><a/><!--c--><?p?>", 'y'},
    {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a b=\"\xE4\">\xE4</a>", 'n'},
    {"<!DOCTYPE a [<!ENTITY e \"x<b/>y\">]><a>1&e;2</a>", 'n'},
    {"<!DOCTYPE a><a>x</a>", 'n'},
    // STag, ETag, EmptyElemTag, Attribute
    {"<a b=\"1\" c='2'\n\td = \"3\"/>", 'y'},
    {"<a b=\"'\" c='\"'><b ></b ></a >", 'y'},
    {"<a:b:c _x=\"\" y-.9=\"\"/>", 'y'},
    {"<:a/>", 'y'},
    {"<a xmlns=\"u\" xmlns:x=\"v\" x:b=\"1\" b=\"2\"/>", 'y'},
    {"<\xC3\xA4 \xC3\xB6=\"1\"/>", 'n'},
    {"<a b=\"1\" c=\"1\" d=\"1\" e=\"1\" f=\"1\" g=\"1\" h=\"1\" i=\"1\" j=\"1\" k=\"1\" l=\"1\" m=\"1\" "
     "n=\"1\" "
     "o=\"1\" p=\"1\" q=\"1\" r=\"1\" s=\"1\"/>",
     'y'},
    // AttValue normalisation
    {"<a b=\" x\ty\nz\r\nw\rv \"/>", 'y'},
    {"<a b=\"&#9;&#10;&#13;&#32;\" c=\"&lt;&gt;&amp;&quot;&apos;\" d=\"plain\" e=\"&amp;amp;\"/>", 'y'},
    {"<a b=\"x>y]]>\"/>", 'y'},
    {"<a b=\"0123456789abcdef&amp;0123456789abcdef\" c=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\"/>", 'y'},
    // CharData, references, line ends
    {"<a>x<b/>y<b/>z</a>", 'y'},
    {"<a>x &lt; y &#x41;&#66;\n&amp; z</a>", 'y'},
    {"<a>one\r\ntwo\rthree\n\r\nfour\r</a>", 'y'},
    {"<a>] ]] ]> ]]</a>", 'y'},
    {"<a>>\"'</a>", 'y'},
    {"<a>\xC3\xA4\xD0\xB6\xE4\xB8\xAD\xED\x9F\xBF\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\x7F</a>", 'y'},
    {"<a>a text that is longer than one step of sixteen bytes, with \xC3\xA4 in it</a>", 'y'},
    {"<a>&#x10FFFF;&#xD7FF;&#xE000;&#xFFFD;&#x0000041;</a>", 'y'},
    // Comment, PI, CDSect
    {"<a>x<!-- - c\r\n --><!---->y<?p  some ? > data?>z<?q?></a>", 'y'},
    {"<a>x<![CDATA[<&]] ]> \r\n ]]]>y<![CDATA[]]></a>", 'y'},
    {"<?xmla ?><?x?><a/>", 'y'},
};

constexpr const char* kFaulty[] = {
    "",
    " ",
    "x",
    "<",
    "<a",
    "<a>",
    "<a/",
    "<a></b>",
    "<a></a",
    "<a/><b/>",
    "<a/>x",
    "x<a/>",
    "<a>&#10;</a>&#10;",
    "<a/>&lt;",
    "<a/><![CDATA[x]]>",
    "< a/>",
    "<1a/>",
    "<-a/>",
    "<a b/>",
    "<a b=/>",
    "<a b=1/>",
    "<a b=\"1/>",
    "<a b=\"1\"c=\"2\"/>",
    "<a b=\"1\" b=\"2\"/>",
    "<a b=\"<\"/>",
    "<a b=\"&\"/>",
    "<a b=\"&x\"/>",
    "<a b=\"&#1;\"/>",
    "<a / >",
    "<a b=\"1\" / >",
    "<a></a b=\"1\">",
    "</a>",
    "<a><b></a></b>",
    "<a>&</a>",
    "<a>& </a>",
    "<a>&;</a>",
    "<a>&lt</a>",
    "<a>&LT;</a>",
    "<a>&e;</a>",
    "<a>&#;</a>",
    "<a>&#x;</a>",
    "<a>&#X41;</a>",
    "<a>&#-1;</a>",
    "<a>&#+1;</a>",
    "<a>&#xD800;</a>",
    "<a>&#xFFFE;</a>",
    "<a>&#x110000;</a>",
    "<a>&#0;</a>",
    "<a>&#99999999999;</a>",
    "<a>]]></a>",
    "<a>x]]>y</a>",
    "<a>\x01</a>",
    "<a b=\"\x1F\"/>",
    "<a>\x80</a>",
    "<a>\xC0\x80</a>",
    "<a>\xC3</a>",
    "<a>\xE0\x80\x80</a>",
    "<a>\xED\xA0\x80</a>",
    "<a>\xEF\xBF\xBE</a>",
    "<a>\xF0\x80\x80\x80</a>",
    "<a>\xF4\x90\x80\x80</a>",
    "<a>\xF8\x88\x80\x80\x80</a>",
    "<a b=\"\xC3\"/>",
    "<a>\xE2\x82</a>",
    "<a>\xE2\x82",
    "<a><!-- -- --></a>",
    "<a><!-- --->",
    "<a><!--",

    "<a><!- x --></a>",
    "<a><![CDATA[</a>",
    "<a><![cdata[x]]></a>",
    "<a><!x></a>",
    "<a><?></a>",
    "<a><? p?></a>",
    "<a><?p",
    "<a><?p?</a>",
    "<a><?p+?></a>",
    "<a><?xml version=\"1.0\"?></a>",
    "<a><?XmL x?></a>",
    " <?xml version=\"1.0\"?><a/>",
    "<?xml?><a/>",
    "<?xm? ?><a/>",
    "<?xml version=\"1.0'?><a/>",
    "<?xml version=\"1.0\" encoding=\"UTF-8'?><a/>",
    "<?xml encoding=\"UTF-8\"?><a/>",
    "<?xml version=\"1.0\"encoding=\"UTF-8\"?><a/>",
    "<?xml version=\"1.0\" standalone=\"maybe\"?><a/>",
    "<?xml version=\"1.0\" encoding=\"none-such\"?><a/>",
    "<a><!DOCTYPE a></a>",
    "\xFF\xFE<\0a",
    "\xEF\xBB<a/>",
};

} // namespace

TEST(Tokenizer, ReadsWellFormedDocumentsLikeLibexpat) {
    for (const Row& row : kWellFormed) {
        const test::TwoReaders both = test::ReadTwice(row.xml, 7);
        EXPECT_EQ(both.difference, "") << row.xml;
        EXPECT_TRUE(both.isWellFormed) << row.xml;
        EXPECT_EQ(both.isSure, row.isSure == 'y') << row.xml;
    }
}

TEST(Tokenizer, LeavesFaultsToLibexpat) {
    for (const char* const xml : kFaulty) {
        const test::TwoReaders both = test::ReadTwice(xml, 7);
        EXPECT_EQ(both.difference, "") << xml;
        EXPECT_FALSE(both.isWellFormed) << xml;
        EXPECT_FALSE(both.isSure) << xml;
    }
}

TEST(Tokenizer, ReadsTheMembersOfRealDocumentsByItself) {
    for (const test::Sample& sample : test::AllSamples()) {
        test::Members members;
        if (sample.isFlat())
            members[sample.name] = test::ReadFile(sample.path);
        else
            members = test::ReadPackage(sample.path, sample.password);
        for (const auto& [name, bytes] : members) {
            if (!name.ends_with(".xml") && !name.ends_with(".rdf") && !sample.isFlat()) continue;
            const test::TwoReaders both = test::ReadTwice(bytes, 3);
            EXPECT_EQ(both.difference.substr(0, 2000), "") << sample.name << ' ' << name;
            const bool isPlain = bytes.find("<!DOCTYPE") == std::string::npos;
            EXPECT_EQ(both.isSure, both.isWellFormed && isPlain) << sample.name << ' ' << name;
        }
    }
}

TEST(Tokenizer, ReadsWhatIsLongAFewTimesAtMost) {
    struct Nothing final : ODF::xml::ParserEvents {
        void startElement(std::string_view, ODF::xml::Attributes) override {}
        void endElement(std::string_view) override {}
        void characterData(std::string_view, bool) override {}
    } events;
    const std::string filling(3'000'000, 'x');
    for (const std::string& xml :
         {"<a><!--" + filling + "--></a>", "<a b='" + filling + "'/>", "<a>" + filling + "</a>",
          "<a><?x " + filling + "?></a>", "<" + filling + "/>", "<a><![CDATA[" + filling + "]]></a>"}) {
        ODF::xml::ParseControl control;
        ODF::xml::Tokenizer tokenizer(events, control, true);
        ODF::xml::Window window(xml.size());
        std::size_t given = 0;
        std::size_t parsed = 0;
        auto outcome = ODF::xml::Tokenizer::Outcome::More;
        while (outcome == ODF::xml::Tokenizer::Outcome::More) {
            ASSERT_TRUE(window.grow());
            const std::size_t count = std::min(window.roomBytes(), xml.size() - given);
            std::copy_n(xml.data() + given, count, window.room());
            window.add(count);
            given += count;
            parsed += window.view().size();
            outcome = tokenizer.parse(window.view(), given == xml.size());
            window.drop(tokenizer.consumed());
        }
        EXPECT_EQ(outcome, ODF::xml::Tokenizer::Outcome::Done);
        EXPECT_GE(parsed, xml.size());
        EXPECT_LE(parsed, xml.size() * 4) << xml.substr(0, 10);
    }
}

/// Changes of well-formed documents, a few bytes each. ODFMODEL_LONG_TESTS makes it a million.
TEST(Tokenizer, AgreesWithLibexpatOnChangedDocuments) {
    constexpr std::string_view kPieces[] = {
        "<",  ">",  "&",   ";",         "\"",  "'",     "]]>",  "<!--",         "-->",
        "<?", "?>", "/",   "=",         " ",   "\r",    "\xC3", "\xE2\x82\xAC", "\xEF\xBF\xBF",
        "#",  "x",  "xml", "<![CDATA[", "&#x", "&amp;", "</a>", "<a>",          "-",
        "1"};
    const unsigned rounds = std::getenv("ODFMODEL_LONG_TESTS") ? 1'000'000 : 20'000;
    std::mt19937 random(20261125);
    unsigned sure = 0;
    for (unsigned i = 0; i < rounds; ++i) {
        std::string xml = kWellFormed[random() % std::size(kWellFormed)].xml;
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            const std::size_t at = random() % (xml.size() + 1);
            const std::string_view piece = kPieces[random() % std::size(kPieces)];
            switch (random() % 3) {
            case 0:
                xml.insert(at, piece);
                break;
            case 1:
                xml.erase(at, 1 + random() % 4);
                break;
            default:
                xml.replace(at, piece.size(), piece);
            }
        }
        const test::TwoReaders both = test::ReadTwice(xml, i + 1);
        ASSERT_EQ(both.difference, "") << xml;
        sure += both.isSure;
    }
    EXPECT_GT(sure, rounds / 20);
}
