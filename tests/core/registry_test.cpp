// The enumeration registry and what the tables tell about the classes.

#include "support/element_xml.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <set>

namespace {

class Registry : public CSDObject {
public:
    Registry() : CSDObject(0) {}
    static int Value(const char* type, const char* key, unsigned id = 0x80000000) {
        return _FindEnumValue(id, CTulStringW(type), CTulStringW(key));
    }
    static std::string Key(const char* type, int value, unsigned id = 0x80000000) {
        const unsigned short* const key = _FindEnumKey(id, CTulStringW(type), value);
        return key ? ODF::ToUtf8(key) : "(null)";
    }
    static int NullName() { return _FindEnumValue(0x80000000, nullptr, CTulStringW(u"top")); }
};

TEST(EnumerationRegistry, TranslatesBothWays) {
    EXPECT_EQ(Registry::Value("ST_DrawAlign", "top-left"), 0);
    EXPECT_EQ(Registry::Value("ST_DrawAlign", "bottom-right"), 7);
    EXPECT_EQ(Registry::Key("ST_DrawAlign", 7), "bottom-right");
    EXPECT_EQ(Registry::Key("ST_DrawAlign", 0), "top-left");
    EXPECT_EQ(Registry::Value("ST_DrawAlign", "top"), 1) << "after a lookup the other way";
    EXPECT_EQ(Registry::Value("ST_StyleProtect", "position size"), 4);
    EXPECT_EQ(Registry::Value("ST_TextDisplay", "none"), 1);
    EXPECT_EQ(Registry::Value("ST_DrawStrokeLinejoin", "none"), 4) << "one key, two enumerations";
    for (const unsigned id : {0x80000001U, 0x80FFFFFFU})
        EXPECT_EQ(Registry::Key("ST_XlinkShow", 1, id), "replace");
}

TEST(EnumerationRegistry, AnythingUnknownIsZeroOrNull) {
    for (const char* const key : {"Top", "top ", " top", "to", "", "topp", "none"})
        EXPECT_EQ(Registry::Value("ST_DrawAlign", key), 0) << key;
    for (const int value : {8, -1, 1'000'000})
        EXPECT_EQ(Registry::Key("ST_DrawAlign", value), "(null)");
    for (const char* const type : {"ST_Drawalign", "ST_DrawAlig", "ST_DrawAlignn", "", "A", "ZZ"}) {
        EXPECT_EQ(Registry::Value(type, "top"), 0) << type;
        EXPECT_EQ(Registry::Key(type, 1), "(null)") << type;
    }
    for (const unsigned id : {0U, 0x7F000000U, 0x81000000U, 0x1F000001U, 0xF0000000U}) {
        EXPECT_EQ(Registry::Value("ST_DrawAlign", "top", id), 0);
        EXPECT_EQ(Registry::Key("ST_DrawAlign", 1, id), "(null)");
    }
    EXPECT_EQ(Registry::NullName(), 0);
}

TEST(Reflection, ClassesAreToldApartByIdAndName) {
    const auto classes = ODF::AllClasses();
    EXPECT_EQ(classes.size(), 719U);
    std::set<std::string_view> names;
    unsigned before = 0x80000000;
    int unlisted = 0;
    for (const ODF::ClassInfo& info : classes) {
        EXPECT_GT(info.id(), before);
        before = info.id();
        EXPECT_TRUE(names.insert(info.elementName()).second) << info.elementName();
        const std::unique_ptr<CSDObject> object(info.create());
        EXPECT_EQ(object->GetID(), info.id());
        EXPECT_EQ(ODF::ClassOf(*object)->className(), info.className());
        EXPECT_EQ(ODF::ClassOfElement(info.elementName())->id(), info.id());
        unlisted += info.isInMaps() ? 0 : 1;
        for (const ODF::AttributeInfo& attribute : info.attributes())
            EXPECT_EQ(info.keys(attribute.name).empty(), attribute.type != ODF::AttributeType::Enumeration);
    }
    EXPECT_EQ(unlisted, 1);
    EXPECT_EQ(classes.back().id(), 0x800002D0U);
}

TEST(Reflection, TellsWhatAClassLists) {
    const auto info = ODF::ClassOfElement("draw:glue-point");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->className(), "CDrawGluePoint");
    const auto attributes = info->attributes();
    ASSERT_EQ(attributes.size(), 4U);
    EXPECT_EQ(attributes[0].name, "draw:id");
    EXPECT_EQ(attributes[0].type, ODF::AttributeType::Unsigned);
    EXPECT_FALSE(attributes[0].isOptional);
    EXPECT_EQ(attributes[3].name, "draw:align");
    EXPECT_TRUE(attributes[3].isOptional);
    EXPECT_EQ(info->keys("draw:align").size(), 8U);
    EXPECT_EQ(info->keys("draw:align")[1], "top");
    EXPECT_TRUE(info->keys("draw:nothing").empty());
    EXPECT_TRUE(info->children().empty());
    const auto children = ODF::ClassOfElement("text:list")->children();
    ASSERT_EQ(children.size(), 2U);
    EXPECT_EQ(children[1].name, "text:list-item");
    EXPECT_EQ(children[1].id, 0x800001ADU);
    EXPECT_FALSE(ODF::ClassOfElement("text:foo"));
    EXPECT_FALSE(ODF::ClassOfElement(""));
}

TEST(Reflection, LooksAtObjects) {
    const auto paragraph = test::Read(R"(<text:p text:style-name="S">run<dc:creator/></text:p>)");
    const auto children = test::ChildrenOf(*paragraph);
    ASSERT_EQ(children.size(), 1U);
    EXPECT_TRUE(ODF::IsTextRun(*children[0]));
    EXPECT_FALSE(ODF::IsTextRun(*paragraph));
    EXPECT_FALSE(ODF::ClassOf(*children[0]));
    EXPECT_EQ(ODF::TextOf(*children[0]), "run");
    EXPECT_EQ(ODF::TextOf(*paragraph), "");
    EXPECT_EQ(ODF::TextOf(*test::Read("<dc:title>T</dc:title>")), "T");
    EXPECT_EQ(ODF::TextOf(*test::Read("<dc:date>2013-05-07</dc:date>")), "2013-05-07T00:00:00.000");
    EXPECT_TRUE(ODF::AttributesOf(*children[0]).empty());
    EXPECT_FALSE(ODF::SetAttributeText(*paragraph, "style-name", "x"));
    EXPECT_FALSE(ODF::SetAttributeText(*paragraph, "text:none", "x"));
    EXPECT_FALSE(ODF::SetAttributeText(*paragraph, "unknown:style-name", "x"));
    EXPECT_FALSE(ODF::SetAttributeText(*children[0], "text:style-name", "x"));
    EXPECT_EQ(test::AttributeOf(*paragraph, "text:style-name"), "S");
}

} // namespace
