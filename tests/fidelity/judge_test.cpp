// The judge of round trips notices what is lost, and nothing that the same document may be spelled with.

#include "support/canonical.h"
#include "support/files.h"

#include <gtest/gtest.h>

using test::CanonicalDifference;

namespace {

struct Pair {
    const char* about;
    std::string before;
    std::string after;
};

} // namespace

TEST(Judge, TakesTwoSpellingsOfOneDocumentForTheSame) {
    const Pair kPairs[] = {
        {"prefixes", R"(<a:x xmlns:a="urn:1" a:y="1"/>)", R"(<x xmlns="urn:1" xmlns:b="urn:1" b:y="1"/>)"},
        {"declarations that nothing uses", R"(<x xmlns:a="urn:1"/>)", "<x/>"},
        {"a declaration at another place", R"(<x><a:y xmlns:a="urn:1"/></x>)",
         R"(<x xmlns:a="urn:1"><a:y/></x>)"},
        {"the order of attributes, quotes", R"(<x a="1" b='"'/>)", R"(<x b="&quot;" a='1'/>)"},
        {"empty tags", "<x></x>", "<x/>"},
        {"CDATA and references", "<x>a<![CDATA[<b>]]>&#99;</x>", "<x>a&lt;b&gt;c</x>"},
        {"line ends", "<x>a\r\nb</x>", "<x>a\nb</x>"},
        {"encodings", "<?xml version='1.0' encoding='ISO-8859-1'?><x>\xE4</x>", "<x>\xC3\xA4</x>"},
        {"blank text between elements", "<x>\n  <y/>\n  <!--c-->\n</x>\n", "<x><y/><!--c--></x>"},
        {"the document type", "<!DOCTYPE x SYSTEM 'x.dtd'><x/>", "<x/>"},
        {"an entity of the document", "<!DOCTYPE x [<!ENTITY e 'b<y/>c'>]><x k='&#38;'>a&e;d</x>",
         "<x k='&amp;'>ab<y/>cd</x>"},
        {"entities within entities, in an attribute too",
         "<!DOCTYPE x [<!ENTITY e 'b'><!ENTITY f '&e;&e;'>]><x k='&f;'>&f;</x>", "<x k='bb'>bb</x>"},
        {"a default of the document type", "<!DOCTYPE x [<!ATTLIST x k CDATA 'v'>]><x/>", "<x k='v'/>"},
        {"the prefix of a value", R"(<x xmlns:of="urn:of" f="of:=A1"/>)",
         R"(<x xmlns:f="urn:of" f="f:=A1"/>)"},
        {"what only looks like a prefix", R"(<x l="http://a/b" t="12:30" c=":"/>)",
         R"(<x c=":" t="12:30" l="http://a/b"/>)"},
    };
    for (const auto& [about, before, after] : kPairs) {
        EXPECT_EQ(CanonicalDifference(before, after), "") << about;
        EXPECT_EQ(CanonicalDifference(after, before), "") << about;
    }
}

TEST(Judge, NoticesEachLoss) {
    const std::string text = R"(xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0")";
    const Pair kPairs[] = {
        {"an element's name", "<x><y/></x>", "<x><z/></x>"},
        {"its namespace", R"(<x><a:y xmlns:a="urn:1"/></x>)", R"(<x><a:y xmlns:a="urn:2"/></x>)"},
        {"the default namespace", R"(<x xmlns="urn:1"/>)", "<x/>"},
        {"a last element", "<x><y/><z/></x>", "<x><y/></x>"},
        {"an element between", "<x><y/><w/><z/></x>", "<x><y/><z/></x>"},
        {"the order of elements", "<x><y/><z/></x>", "<x><z/><y/></x>"},
        {"the depth of an element", "<x><y/><z/></x>", "<x><y><z/></y></x>"},
        {"an attribute", "<x a='1'/>", "<x/>"},
        {"an empty attribute", "<x a=''/>", "<x/>"},
        {"another spelling of a value", "<x a='true'/>", "<x a='1'/>"},
        {"a blank in a value", "<x a='b '/>", "<x a='b'/>"},
        {"an attribute's namespace", R"(<x xmlns:a="urn:1" a:y="1"/>)", R"(<x y="1"/>)"},
        {"xml:id", "<x xml:id='a'/>", "<x id='a'/>"},
        {"text", "<x>ab</x>", "<x>aB</x>"},
        {"text at another place", "<x>a<y/>b</x>", "<x>ab<y/></x>"},
        {"text on the other side of a comment", "<x>a<!--c-->b</x>", "<x>ab<!--c--></x>"},
        {"a blank within text", "<x>a  b</x>", "<x>a b</x>"},
        {"a blank next to an element in text", "<x>a <y/></x>", "<x>a<y/></x>"},
        {"a text that is only blank", "<x> </x>", "<x/>"},
        {"the space between two runs",
         "<text:p " + text + "><text:span>a</text:span> <text:span>b</text:span></text:p>",
         "<text:p " + text + "><text:span>a</text:span><text:span>b</text:span></text:p>"},
        {"a no-break space between elements", "<x><y/>\xC2\xA0<y/></x>", "<x><y/><y/></x>"},
        {"a comment", "<x><!--c--></x>", "<x/>"},
        {"a comment's text", "<x><!--c--></x>", "<x><!--d--></x>"},
        {"a comment before the root", "<!--c--><x/>", "<x/>"},
        {"a comment on the other side of the root", "<!--c--><x/>", "<x/><!--c-->"},
        {"a processing instruction", "<x/><?p a?>", "<x/><?p b?>"},
        {"a processing instruction's name", "<?p a?><x/>", "<?q a?><x/>"},
        {"an external entity", "<!DOCTYPE x [<!ENTITY e SYSTEM '/etc/hostname'>]><x>&e;</x>", "<x/>"},
        {"an entity of the document", "<!DOCTYPE x [<!ENTITY e 'b'>]><x>a&e;</x>", "<x>a</x>"},
        {"a default of the document type", "<!DOCTYPE x [<!ATTLIST x k CDATA 'v'>]><x/>", "<x/>"},
        {"a value's prefix, free", R"(<x xmlns:of="urn:of" f="of:=A1"/>)", R"(<x f="of:=A1"/>)"},
        {"a value's prefix, bound otherwise", R"(<x xmlns:of="urn:1" f="of:=A1"/>)",
         R"(<x xmlns:of="urn:2" f="of:=A1"/>)"},
        {"a value's prefix, bound otherwise nearby", R"(<x xmlns:of="urn:1"><y f="of:=A1"/></x>)",
         R"(<x xmlns:of="urn:1"><y xmlns:of="urn:2" f="of:=A1"/></x>)"},
        {"two prefixes that mean two things", R"(<x xmlns:a="urn:1" f="a:b"/>)",
         R"(<x xmlns:c="urn:2" f="c:b"/>)"},
        {"a value after its prefix", R"(<x xmlns:of="urn:of" f="of:=A1"/>)",
         R"(<x xmlns:of="urn:of" f="of:=A2"/>)"},
        {"a document that is cut off", "<x><y/></x>", "<x><y/>"},
        {"all", "<x/>", ""},
    };
    for (const auto& [about, before, after] : kPairs) {
        EXPECT_NE(CanonicalDifference(before, after), "") << about;
        if (std::string_view(about) == "a value's prefix, free") continue;
        EXPECT_NE(CanonicalDifference(after, before), "") << about << ", the other way";
    }
    EXPECT_EQ(CanonicalDifference(R"(<x f="of:=A1"/>)", R"(<x xmlns:of="urn:of" f="of:=A1"/>)"), "")
        << "a prefix that meant nothing may be bound";
    EXPECT_NE(CanonicalDifference("<x>", "<x>"), "") << "nothing can be said of two broken documents";
}

TEST(Judge, LoadsNothing) {
    const test::TemporaryFolder folder;
    test::WriteFile(folder / "outside.dtd", "<!ATTLIST x k CDATA 'v'>");
    test::WriteFile(folder / "outside.txt", "secret");
    const std::string at = "SYSTEM '" + folder.path().string();
    for (const std::string& type : {at + "/outside.dtd'", "[<!ENTITY % p " + at + "/outside.dtd'> %p;]"})
        EXPECT_EQ(CanonicalDifference("<!DOCTYPE x " + type + "><x/>", "<x/>"), "") << type;
    const std::string entity = "<!DOCTYPE x [<!ENTITY e " + at + "/outside.txt'>]><x>&e;</x>";
    EXPECT_EQ(CanonicalDifference(entity, entity), "");
    EXPECT_EQ(CanonicalDifference(entity, "<x>secret</x>"), R"(/x[1]: entity e before, text "secret" after)");
}

TEST(Judge, SaysWhereAndGoesOn) {
    EXPECT_EQ(CanonicalDifference("<x><y/><y><z a='1'/></y></x>", "<x><y/><y><z a='2'/></y></x>"),
              R"(/x[1]/y[2]/z[1]: attribute a: "1" before, "2" after)");
    const std::string before = "<x a='1' b='2'><y>t<z/></y><w>s</w></x>";
    const std::string after = "<x a='0' c='3'><y>T</y><w>S</w></x>";
    const std::vector<std::string> expected{R"(/x[1]: attribute a: "1" before, "0" after)",
                                            R"(/x[1]: attribute b: "2" lost)",
                                            R"(/x[1]: attribute c: "3" added)",
                                            R"(/x[1]/y[1]: text "t" before, "T" after)",
                                            R"(/x[1]/y[1]: lost: element z of "")",
                                            R"(/x[1]/w[2]: text "s" before, "S" after)"};
    EXPECT_EQ(test::CanonicalDifferences(before, after), expected);
    EXPECT_EQ(test::CanonicalDifferences(before, after, 2).size(), 2U);
}

TEST(Judge, TakesDeepDocumentsAndEndsOnBombs) {
    std::string deep;
    for (int i = 0; i < 50'000; ++i)
        deep += "<x>";
    std::string other = deep + "<y/>";
    for (int i = 0; i < 50'000; ++i) {
        deep += "</x>";
        other += "</x>";
    }
    EXPECT_EQ(CanonicalDifference(deep, deep), "");
    EXPECT_NE(CanonicalDifference(deep, other), "");

    std::string bomb = "<!DOCTYPE x [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 30; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ';';
        bomb += "<!ENTITY e" + std::to_string(i) + " '" + inner + inner + inner + "'>";
    }
    bomb += "]><x>&e29;</x>";
    EXPECT_NE(CanonicalDifference(bomb, bomb), "");
}
