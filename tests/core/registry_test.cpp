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
    constexpr struct {
        const char *type, *key;
        int value;
    } kRows[] = {{"ST_DrawAlign", "top-left", 0},
                 {"ST_DrawAlign", "top", 1},
                 {"ST_DrawAlign", "bottom-right", 7},
                 {"ST_StyleProtect", "position size", 4},
                 {"ST_TextDisplay", "none", 1},
                 {"ST_DrawStrokeLinejoin", "none", 4}, // one key, two enumerations
                 {"ST_OfficeValueType", "void", 7}};
    for (const auto& row : kRows) {
        for (const unsigned id : {0x80000000U, 0x80000001U, 0x80FFFFFFU}) {
            EXPECT_EQ(Registry::Value(row.type, row.key, id), row.value) << row.key;
            EXPECT_EQ(Registry::Key(row.type, row.value, id), row.key);
        }
        for (const unsigned id : {0U, 0x7F000000U, 0x81000000U, 0x1F000001U, 0xF0000000U}) {
            EXPECT_EQ(Registry::Value(row.type, row.key, id), 0);
            EXPECT_EQ(Registry::Key(row.type, row.value, id), "(null)");
        }
    }
}

TEST(EnumerationRegistry, AnythingUnknownIsZeroOrNull) {
    for (const char* const key : {"Top", "top ", " top", "to", "", "topp", "none"})
        EXPECT_EQ(Registry::Value("ST_DrawAlign", key), 0) << key;
    for (const int value : {8, -1, 1'000'000})
        EXPECT_EQ(Registry::Key("ST_DrawAlign", value), "(null)");
    // A key of a later version.
    EXPECT_EQ(Registry::Value("ST_OfficeValueType", "error"), 0);
    EXPECT_EQ(Registry::Key("ST_OfficeValueType", 8), "(null)");
    EXPECT_EQ(ODF::ParseKey<ODF::ST_OfficeValueType>("error"), ODF::ST_OfficeValueType::Error);
    for (const char* const type : {"ST_Drawalign", "ST_DrawAlig", "ST_DrawAlignn", "", "A", "ZZ"}) {
        EXPECT_EQ(Registry::Value(type, "top"), 0) << type;
        EXPECT_EQ(Registry::Key(type, 1), "(null)") << type;
    }
    EXPECT_EQ(Registry::NullName(), 0);
}

TEST(Reflection, ClassesAreToldApartByIdAndName) {
    const auto classes = ODF::AllClasses();
    std::size_t listed = 0;
    unsigned lastListed = 0;
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
        if (test::IsListed(info)) {
            ++listed;
            lastListed = info.id();
        }
        for (const ODF::AttributeInfo& attribute : info.attributes())
            EXPECT_EQ(info.keys(attribute.name).empty(), attribute.type != ODF::AttributeType::Enumeration);
    }
    EXPECT_EQ(unlisted, 1);
    EXPECT_EQ(listed, 719U);
    EXPECT_EQ(lastListed, 0x800002D0U);
    for (const char* const name : {"text:foo", "text:", "text:list-", ""})
        EXPECT_FALSE(ODF::ClassOfElement(name)) << name;
    EXPECT_TRUE(ODF::ClassOfElement("draw:glue-point")->keys("draw:nothing").empty());
}

TEST(Reflection, LooksAtObjects) {
    const auto paragraph = test::Read(R"(<text:p text:style-name="S">run<dc:creator/></text:p>)");
    CSDObject& run = *test::ChildrenOf(*paragraph).at(0);
    EXPECT_FALSE(ODF::ClassOf(run));
    EXPECT_TRUE(ODF::AttributesOf(run).empty());
    EXPECT_EQ(ODF::TextOf(run), "run");
    EXPECT_EQ(ODF::TextOf(*test::Read("<dc:date>2013-05-07</dc:date>")), "2013-05-07T00:00:00.000");
    EXPECT_FALSE(ODF::SetAttributeText(run, "text:style-name", "x"));
    for (const char* const name : {"style-name", "text:none", "unknown:style-name"})
        EXPECT_FALSE(ODF::SetAttributeText(*paragraph, name, "x")) << name;
    EXPECT_EQ(test::AttributeOf(*paragraph, "text:style-name"), "S");
}

} // namespace
