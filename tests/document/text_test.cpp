// Text as people read it: getting, setting and replacing it.
#include "support/element_xml.h"
#include "support/texts.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using ODF::Fidelity;

constexpr Fidelity kFidelities[] = {Fidelity::Listed, Fidelity::Everything};

std::unique_ptr<CSDObject> Read(std::string_view xml, Fidelity fidelity) {
    std::unique_ptr<CSDObject> root = test::Make(xml.substr(1, xml.find_first_of(" />") - 1));
    EXPECT_TRUE(ODF::FromXml(test::Declared(xml), *root, fidelity)) << xml;
    return root;
}

TEST(Text, IsWhatIsRead) {
    struct Row {
        const char* xml;
        const char* text;
    };
    const Row rows[] = {
        {"<text:p/>", ""},
        {"<text:p>\n  a\n  <text:span> b </text:span> c\n</text:p>", "a b c"},
        {"<text:p>a<text:s/><text:s text:c=\"2\"/>b<text:tab/>c<text:line-break/>d</text:p>", "a   b\tc\nd"},
        {"<text:p>see <text:a xlink:href=\"#x\">the <text:span>link</text:span></text:a>!</text:p>",
         "see the link!"},
        {"<text:p>page <text:page-number>7</text:page-number> of<text:s/><text:page-count>9</text:page-count>"
         "</text:p>",
         "page 7 of 9"},
        {"<text:p><text:ruby><text:ruby-base>base</text:ruby-base><text:ruby-text>gloss</text:ruby-text>"
         "</text:ruby></text:p>",
         "base"},
        {"<text:p>a<text:variable-set text:name=\"v\" text:display=\"none\">9</text:variable-set>b</text:p>",
         "ab"},
        {"<text:p>a<text:note text:note-class=\"footnote\"><text:note-citation>1</text:note-citation>"
         "<text:note-body><text:p>n</text:p></text:note-body></text:note>b</text:p>",
         "ab"},
        {"<office:text><text:tracked-changes><text:changed-region text:id=\"c\"><text:deletion><text:p>old"
         "</text:p></text:deletion></text:changed-region></text:tracked-changes><text:h>H</text:h><text:list>"
         "<text:list-item><text:p>a<text:note text:note-class=\"footnote\"><text:note-body><text:p>n</text:p>"
         "</text:note-body></text:note></text:p></text:list-item></text:list><text:p>b<office:annotation>"
         "<text:p>c</text:p></office:annotation></text:p></office:text>",
         "H\na\nn\nb"},
        {"<dc:title>A  title</dc:title>", "A  title"},
    };
    for (const Row& row : rows)
        for (const Fidelity fidelity : kFidelities) {
            const std::unique_ptr<CSDObject> root = Read(row.xml, fidelity);
            EXPECT_EQ(ODF::Text(*root), row.text) << row.xml;
            EXPECT_EQ(ODF::Text16(*root), ODF::ToUtf16(row.text));
        }
}

TEST(Text, OfABlankElementWithAnAbsurdCountIsBounded) {
    EXPECT_EQ(ODF::Text(*Read("<text:p><text:s text:c=\"4000000000\"/></text:p>", Fidelity::Listed)).size(),
              4096U);
}

TEST(SetText, WritesElementsForWhatAReaderWouldDrop) {
    struct Row {
        const char* text;
        const char* content;
    };
    const Row rows[] = {
        {"", ""},
        {"plain text", "plain text"},
        {"a   b", "a <text:s text:c=\"2\"/>b"},
        {" a ", "<text:s/>a<text:s/>"},
        {"a\tb\r\nc\rd\n e",
         "a<text:tab/>b<text:line-break/>c<text:line-break/>d<text:line-break/><text:s/>e"},
        {"<&>", "&lt;&amp;&gt;"},
    };
    for (const Row& row : rows) {
        const std::unique_ptr<CSDObject> paragraph =
            test::Read("<text:p text:style-name=\"s\">old<text:span>x</text:span></text:p>");
        ASSERT_TRUE(ODF::SetText(*paragraph, row.text));
        const std::string begin = "<text:p text:style-name=\"s\"";
        EXPECT_EQ(test::Written(*paragraph, Fidelity::Everything),
                  *row.content ? begin + ">" + row.content + "</text:p>" : begin + "/>");
    }
}

TEST(SetText, IsForElementsWithTextAlone) {
    const std::unique_ptr<CSDObject> cell =
        test::Read("<table:table-cell><text:p>a</text:p></table:table-cell>");
    EXPECT_FALSE(ODF::SetText(*cell, "b"));
    EXPECT_FALSE(ODF::SetText(*test::Make("dc:date"), "2020"));
    EXPECT_EQ(ODF::Text(*cell), "a");
    const std::unique_ptr<CSDObject> title = test::Make("dc:title");
    EXPECT_TRUE(ODF::SetText(*title, "a  b\tc"));
    EXPECT_EQ(test::Written(*title, Fidelity::Everything), "<dc:title>a  b\tc</dc:title>");
}

std::string RandomText(std::mt19937& random, std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i)
        text += "aab   \t\n"[random() % 8];
    return text;
}

TEST(SetText, ComesBackThroughAFile) {
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
    for (int i = 0; i < 500; ++i)
        for (const char* const element : {"text:p", "text:h", "text:span", "text:a"}) {
            const std::string text = RandomText(random, random() % 12);
            const std::unique_ptr<CSDObject> object = test::Make(element);
            ASSERT_TRUE(ODF::SetText(*object, text));
            ASSERT_EQ(ODF::Text(*object), text);
            const std::unique_ptr<CSDObject> read = test::Make(element);
            ASSERT_TRUE(
                ODF::FromXml(ODF::ToXml(*object, {}, Fidelity::Everything), *read, Fidelity::Everything));
            ASSERT_EQ(ODF::Text(*read), text) << element;
        }
}

TEST(ReplaceText, KeepsTheFormattingOfTheFirstCharacter) {
    struct Row {
        const char* from;
        const char* to;
        unsigned count;
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"b", "x", 2, "abcb", "axcx"},
        {"aa", "a", 2, "aaaaa", "aaa"}, // what was put in isn't searched
        {"", "x", 0, "abc", "abc"},
        {"abc", "X", 1, "<text:span>a</text:span>b<text:span>cd</text:span>",
         "<text:span>X</text:span><text:span>d</text:span>"},
        {"bc", "X", 1, "ab<text:bookmark text:name=\"m\"/>cd", "aX<text:bookmark text:name=\"m\"/>d"},
        {"a  b", "c", 1, "a <text:s/>b", "c"},
        {"b", "x  y\tz", 1, "a<text:span>b</text:span>", "a<text:span>x <text:s/>y<text:tab/>z</text:span>"},
        {"\t", "\n", 1, "a<text:tab/>b", "a<text:line-break/>b"},
        {" ", "-", 3, "a<text:s text:c=\"3\"/>b", "a---b"},
        {"  ", "", 1, "a<text:s text:c=\"3\"/>b", "a b"},
        // A blank that others come to stand next to would be dropped by a reader.
        {"x", "", 1, "a <text:span>x</text:span> b", "a <text:span/><text:s/>b"},
        {"x", "", 1, "a x", "a<text:s/>"},
        {"x", "", 1, "x a", "<text:s/>a"},
        {"1", "2", 0, "a<text:page-number>1</text:page-number>b", "a<text:page-number>1</text:page-number>b"},
        {"ab", "x", 0, "a<text:page-number>1</text:page-number>b",
         "a<text:page-number>1</text:page-number>b"},
        {"b", "x", 1, "<text:a xlink:href=\"#\">abc</text:a>", "<text:a xlink:href=\"#\">axc</text:a>"},
        {"b", "\t", 1, "<text:a xlink:href=\"#\">abc</text:a>",
         "<text:a xlink:href=\"#\">a<text:tab/>c</text:a>"},
        {" ", "x", 1, "<text:a xlink:href=\"#\">a<text:s/></text:a>b",
         "<text:a xlink:href=\"#\">ax</text:a>b"},
        {"b", "x", 2, "b<text:note><text:note-body><text:p>b</text:p></text:note-body></text:note>",
         "x<text:note><text:note-body><text:p>x</text:p></text:note-body></text:note>"},
        {"b", "x", 1, "b<office:annotation><text:p>b</text:p></office:annotation>",
         "x<office:annotation><text:p>b</text:p></office:annotation>"},
    };
    for (const Row& row : rows) {
        const std::string before = std::string("<text:p>") + row.before + "</text:p>";
        const std::unique_ptr<CSDObject> root = Read(before, Fidelity::Everything);
        EXPECT_EQ(ODF::ReplaceText(*root, row.from, row.to), row.count) << before;
        EXPECT_EQ(test::Written(*root, Fidelity::Everything),
                  std::string("<text:p>") + row.after + "</text:p>")
            << before;
    }
}

TEST(ReplaceText, SaysTheSameAsReplacingInAString) {
    std::mt19937 random(11); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
    int replaced = 0;
    for (int i = 0; i < 4000; ++i) {
        std::string xml = "<text:p>";
        for (auto part = random() % 6; part > 0; --part) {
            static constexpr const char* kParts[] = {"<text:s text:c=\"2\"/>", "<text:tab/>", "a", " ", "ab"};
            const std::string content = kParts[random() % 5] + std::string(kParts[random() % 5]);
            static constexpr const char* kElements[] = {"text:span", "text:a"};
            const char* const element = kElements[random() % 2];
            xml += random() % 2 ? content : std::string("<") + element + ">" + content + "</" + element + ">";
        }
        xml += "</text:p>";
        const std::unique_ptr<CSDObject> root =
            Read(xml, random() % 2 ? Fidelity::Everything : Fidelity::Listed);
        const std::string from = RandomText(random, 1 + random() % 2);
        const std::string to = RandomText(random, random() % 4);
        const std::string expected = test::Replaced(ODF::Text(*root), from, to);
        const std::size_t count = ODF::ReplaceText(*root, from, to);
        replaced += count > 0 ? 1 : 0;
        ASSERT_EQ(ODF::Text(*root), expected) << xml << '[' << from << "] by [" << to << ']';
        const std::unique_ptr<CSDObject> read = test::Make("text:p");
        ASSERT_TRUE(ODF::FromXml(ODF::ToXml(*root, {}, Fidelity::Everything), *read, Fidelity::Everything));
        ASSERT_EQ(ODF::Text(*read), expected) << xml << '[' << from << "] by [" << to << ']';
    }
    EXPECT_GT(replaced, 600);
}

TEST(ReplaceText, OfAParagraphInVeryManyPiecesTakesLinearTime) {
    constexpr int kPieces = 100'000;
    const std::unique_ptr<CSDObject> paragraph = test::Make("text:p");
    std::string all;
    for (int i = 0; i < kPieces; ++i)
        static_cast<ODF::CTextP&>(*paragraph).Append<ODF::CTextSpan>().SetText("ab");
    EXPECT_EQ(ODF::ReplaceText(*paragraph, "ba", "\t"), unsigned{kPieces} - 1);
    for (int i = 0; i < kPieces - 1; ++i)
        all += "\t";
    EXPECT_EQ(ODF::Text(*paragraph), "a" + all + "b");
    EXPECT_EQ(ODF::ReplaceText(*paragraph, all, ""), 1U);
    EXPECT_EQ(ODF::Text(*paragraph), "ab");
}

} // namespace
