// What a tree of full fidelity keeps, gives and writes, on small pieces of XML.

#include "support/element_xml.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <functional>

using namespace ODF;

namespace {

struct ReadTree {
    std::unique_ptr<CSDObject> root;
    bool isGood = false;
};

ReadTree Open(std::string_view element, std::string_view xml) {
    ReadTree tree{test::Make(element)};
    tree.isGood = FromXml(test::Declared(xml), *tree.root, Fidelity::Everything);
    return tree;
}

std::string Whole(CSDObject& object) {
    return test::Written(object, Fidelity::Everything);
}

template<typename T>
T& First(CSDObject& parent) {
    return static_cast<T&>(*parent.GetObjectByID(T::kId));
}

} // namespace

TEST(Kept, WhatNobodyChangesIsWrittenAsItWas) {
    const std::pair<const char*, const char*> rows[] = {
        {"text:p", "<text:p>a<text:a xlink:href=\"x\">one<text:span>two</text:span>three</text:a>b</text:p>"},
        {"text:p", "<text:p><!--c-->a<?target data?></text:p>"},
        {"text:p", "<text:p xml:id=\"i\" own=\"v\" xml:space=\"preserve\">  a  </text:p>"},
        {"text:p",
         "<text:p><text:bookmark/>a<text:unknown text:style-name=\"s\">b<text:tab/></text:unknown></text:p>"},
        {"text:p", "<text:p><text:ruby><text:ruby-base>a<text:span>b</text:span>c</text:ruby-base></"
                   "text:ruby></text:p>"},
        {"table:table", "<table:table table:protected=\"TRUE\" table:print=\"1\"/>"},
        {"table:table", "<table:table table:print=\"false\"/>"},
        {"style:paragraph-properties", "<style:paragraph-properties style:page-number=\"auto\"/>"},
        {"text:sequence-decls", "<text:sequence-decls><text:sequence-decl/></text:sequence-decls>"},
        {"text:p", "<text:p><text:variable-set text:name=\"n\">v</text:variable-set></text:p>"},
        {"office:annotation",
         "<office:annotation><dc:date>2001-02-03T04:05:06Z</dc:date></office:annotation>"},
        {"office:annotation",
         "<office:annotation><dc:date own=\"v\">not a date</dc:date></office:annotation>"},
        {"office:annotation", "<office:annotation><dc:date/></office:annotation>"},
        {"office:annotation",
         "<office:annotation><dc:date>2001<!--c-->-02<text:p/></dc:date></office:annotation>"},
        {"math:math", "<math:math display=\"block\"><math:mi>a</math:mi></math:math>"},
        {"math:math", "<math:math math:display=\"block\" display=\"inline\"/>"},
        {"math:math", "<math:math><math:cn>1<math:sep/>2</math:cn></math:math>"},
        {"table:table-row", "<table:table-row table:number-rows-repeated=\"007\"/>"},
        {"text:list", "<text:list>stray <text:p/> text</text:list>"},
    };
    for (const auto& [element, xml] : rows) {
        const ReadTree tree = Open(element, xml);
        EXPECT_TRUE(tree.isGood) << xml;
        EXPECT_EQ(Whole(*tree.root), xml);
    }
}

TEST(Kept, PrefixesAndDeclarationsFollowTheFile) {
    const char* const rows[] = {
        "<o:p xmlns:o=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" o:style-name=\"s\"><o:tab/></o:p>",
        "<p xmlns=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><span>a</span></p>",
        // A customary prefix that means something else in a part of the file.
        "<text:p xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><o:span "
        "xmlns:o=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" xmlns:text=\"urn:other\" "
        "text:a=\"text:b\"><o:tab/></o:span><text:tab/></text:p>",
        "<text:p xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><x xmlns=\"urn:x\"><y "
        "xmlns=\"\"/></x></text:p>",
        "<text:p xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" xmlns:of=\"urn:mine\" "
        "text:cond-style-name=\"of:a\"/>",
    };
    for (const std::string xml : rows) {
        const std::unique_ptr<CSDObject> root = test::Make("text:p");
        ASSERT_TRUE(FromXml(xml, *root, Fidelity::Everything)) << xml;
        const std::string written = ToXml(*root, {}, Fidelity::Everything);
        const std::unique_ptr<CSDObject> again = test::Make("text:p");
        ASSERT_TRUE(FromXml(written, *again, Fidelity::Everything)) << written;
        EXPECT_EQ(ToXml(*again, {}, Fidelity::Everything), written);
        for (const std::string_view piece : {"text:b", "urn:other", "urn:x", "urn:mine"})
            EXPECT_EQ(written.find(piece) == std::string::npos, xml.find(piece) == std::string::npos)
                << written;
    }
}

TEST(Kept, TypedGettersReadAsEverAndSettersReplaceTheWords) {
    struct Row {
        const char* element;
        const char* xml;
        std::function<void(CSDObject&)> change;
        const char* after;
    };
    const Row rows[] = {
        {"table:table", "<table:table table:print=\"1\"/>",
         [](CSDObject& object) {
             bool value = false;
             EXPECT_TRUE(static_cast<CTableTable&>(object).GetTablePrint(value));
             EXPECT_TRUE(value);
             static_cast<CTableTable&>(object).SetTablePrint(false);
         },
         "<table:table table:print=\"false\"/>"},
        {"text:p", "<text:p><text:a>one<text:span>two</text:span>three</text:a></text:p>",
         [](CSDObject& object) {
             auto& link = First<CTextA>(object);
             EXPECT_EQ(link.Getval(), "onethree");
             EXPECT_EQ(TextOf(link), "") << "it is in the runs";
             link.Setval(CTulStringW("new"));
             EXPECT_EQ(link.Getval(), "new");
         },
         "<text:p><text:a>new<text:span>two</text:span></text:a></text:p>"},
        {"text:p", "<text:p><text:a>one<text:span>two</text:span>three</text:a></text:p>",
         [](CSDObject& object) {
             auto& link = First<CTextA>(object);
             static_cast<CSDStringValueObject*>(link.GetObjectList()->back())->Setval(CTulStringW("3"));
             EXPECT_EQ(link.Getval(), "one3") << "follows its runs";
         },
         "<text:p><text:a>one<text:span>two</text:span>3</text:a></text:p>"},
        {"office:annotation", "<office:annotation><dc:date>2001-02-03</dc:date></office:annotation>",
         [](CSDObject& object) {
             auto& date = First<CDcDate>(object);
             EXPECT_EQ(date.Getval().wYear, 2001);
             SYSTEMTIME time = date.Getval();
             time.wYear = 2002;
             date.Setval(time);
         },
         "<office:annotation><dc:date>2002-02-03T00:00:00.000</dc:date></office:annotation>"},
        {"style:paragraph-properties", "<style:paragraph-properties style:page-number=\"auto\"/>",
         [](CSDObject& object) {
             CTulStringW words;
             EXPECT_TRUE(GetAttributeText(object, "style:page-number", words));
             EXPECT_EQ(words, "auto");
             EXPECT_TRUE(SetAttributeText(object, "style:page-number", "7"));
         },
         "<style:paragraph-properties style:page-number=\"7\"/>"},
        {"style:paragraph-properties", "<style:paragraph-properties style:page-number=\"7\"/>",
         [](CSDObject& object) { EXPECT_TRUE(SetAttributeText(object, "style:page-number", "auto")); },
         "<style:paragraph-properties style:page-number=\"auto\"/>"},
        {"text:p", "<text:p xml:space=\"i\" own=\"v\"/>",
         [](CSDObject& object) {
             constexpr std::string_view kXml = "http://www.w3.org/XML/1998/namespace";
             EXPECT_EQ(GetForeignAttribute(object, kXml, "space"), "i");
             EXPECT_TRUE(SetForeignAttribute(object, kXml, "xml:space", "j"));
             EXPECT_FALSE(SetForeignAttribute(object, kXml, "xml:id", "j")) << "the class has it";
             EXPECT_TRUE(RemoveForeignAttribute(object, {}, "own"));
             EXPECT_FALSE(RemoveForeignAttribute(object, {}, "own"));
             EXPECT_FALSE(SetForeignAttribute(object, {}, "1", "v")) << "no name";
             EXPECT_FALSE(SetForeignAttribute(object, {}, "xmlns", "v")) << "a declaration";
             EXPECT_FALSE(SetForeignAttribute(object, NamespaceOfPrefix("text"), "style-name", "v"))
                 << "the class lists it";
             EXPECT_EQ(ForeignAttributesOf(object).size(), 1U);
         },
         "<text:p xml:space=\"j\"/>"},
    };
    for (const Row& row : rows) {
        const ReadTree tree = Open(row.element, row.xml);
        ASSERT_TRUE(tree.isGood) << row.xml;
        row.change(*tree.root);
        EXPECT_EQ(Whole(*tree.root), row.after);
    }
}

TEST(Kept, NewObjectsWriteWhatWasSetAndWhatTheFormatGives) {
    const std::unique_ptr<CSDObject> cell = test::Make("text:variable-set");
    EXPECT_EQ(Whole(*cell), "<text:variable-set/>");
    EXPECT_NE(test::Bare(ToXml(*cell)), "<text:variable-set/>") << "the listed way writes what is required";
    const std::unique_ptr<CSDObject> sort = test::Make("table:label-range");
    EXPECT_EQ(Whole(*sort), "<table:label-range table:orientation=\"column\"/>");
    const std::unique_ptr<CSDObject> number = test::Make("table:table-cell");
    EXPECT_TRUE(SetAttributeText(*number, "office:value", "0.1234567890123"));
    EXPECT_EQ(Whole(*number), "<table:table-cell office:value=\"0.1234567890123\"/>");
}

TEST(Kept, ForeignElementsAreReadMadeAndPassedOver) {
    const ReadTree tree =
        Open("text:p", "<text:p><own:x xmlns:own=\"urn:own\" own:a=\"1\" b=\"2\">c<text:tab/></own:x>"
                       "<text:tab/></text:p>");
    ASSERT_TRUE(tree.isGood);
    auto& foreign = First<CForeignElement>(*tree.root);
    EXPECT_EQ(foreign.GetNamespace(), "urn:own");
    EXPECT_EQ(foreign.GetPrefix(), "own");
    EXPECT_EQ(foreign.GetLocalName(), "x");
    EXPECT_EQ(GetForeignAttribute(foreign, "urn:own", "a"), "1");
    EXPECT_EQ(GetForeignAttribute(foreign, {}, "b"), "2");
    EXPECT_NE(foreign.GetObjectByID(CTextTab::kId), nullptr) << "what is known by name is typed inside too";
    std::vector<CSDObject*> tabs;
    EXPECT_EQ(tree.root->GetObjectListByID(CTextTab::kId, tabs), 1U);

    EXPECT_EQ(CForeignElement::Create("urn:own", "a b"), nullptr);
    EXPECT_EQ(CForeignElement::Create("", "p:a"), nullptr) << "a prefix needs a namespace";
    const std::unique_ptr<CSDObject> p = test::Make("text:p");
    // The prefix that it wishes for is another namespace's here.
    CForeignElement* const made = CForeignElement::Create("urn:own", "text:y");
    ASSERT_NE(made, nullptr);
    p->SetObject(made, 1);
    p->SetObject(CreateComment("a--b-"), 1);
    p->SetObject(CreateProcessingInstruction("t", "d?>"), 1);
    EXPECT_EQ(Whole(*p), "<text:p><ns1:y xmlns:ns1=\"urn:own\"/><!--a- -b- --><?t d? >?></text:p>");
    EXPECT_EQ(test::Bare(ToXml(*p)), "<text:p></text:p>") << "the listed way leaves them out";
}

TEST(Kept, WhatCannotBeKeptIsRefused) {
    for (const char* const xml :
         {"<text:span xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"/>", // another root
          "<text:p xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><text:tab></text:p>", "",
          // What the entity says is in another file, which is never read.
          "<!DOCTYPE text:p SYSTEM \"a.dtd\"><text:p "
          "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\">&lost;</text:p>"}) {
        const std::unique_ptr<CSDObject> root = test::Make("text:p");
        EXPECT_FALSE(FromXml(xml, *root, Fidelity::Everything)) << xml;
    }
}
