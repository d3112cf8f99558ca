#include "package/fixture.h"

#include <odfmodel/package/handlers.h>

using namespace package_test;
using namespace SDPackage;

namespace {

struct TargetCase {
    const char* plain;
    const char* escaped;
    const char* readBack; ///< what unescaping the escaped form gives; null for `plain`
};

std::string Describe(const testing::TestParamInfo<TargetCase>& given) {
    return "row" + std::to_string(given.index);
}

class TargetEscapes : public testing::TestWithParam<TargetCase> {};

} // namespace

TEST_P(TargetEscapes, Apply) {
    const TargetCase& row = GetParam();
    EXPECT_EQ(EscapeTarget(CTulStringW(row.plain)), row.escaped);
    EXPECT_EQ(UnescapeTarget(CTulStringW(row.escaped)), row.readBack ? row.readBack : row.plain);
}

INSTANTIATE_TEST_SUITE_P(
    Table, TargetEscapes,
    testing::Values(TargetCase{"slides/slide1.xml", "slides/slide1.xml", nullptr},
                    TargetCase{"a b", "a%20b", nullptr}, TargetCase{"a&b", "a&amp;b", nullptr},
                    TargetCase{"a\nb", "a%10b", nullptr}, TargetCase{"a\"b", "a%22b", nullptr},
                    TargetCase{"[1]", "%5b1%5d", nullptr}, TargetCase{"50%", "50%25", "50%25"},
                    TargetCase{"a%zz", "a%25zz", "a%25zz"}, TargetCase{"a%2Fb", "a%2Fb", nullptr},
                    TargetCase{"a%", "a%25", "a%25"}, TargetCase{"a%4", "a%254", "a%254"},
                    TargetCase{"a<b", "a&lt;b", "a&lt;b"},
                    TargetCase{"\x01", "\xEF\xBF\xBD", "\xEF\xBF\xBD"}),
    Describe);

namespace {

struct RelativeCase {
    const char* from;
    const char* to;
    const char* expected;
};

class RelativeTargets : public testing::TestWithParam<RelativeCase> {};

} // namespace

TEST_P(RelativeTargets, LeadFromPartToPart) {
    CTulStringW out(u"old");
    MakeRelativeTarget(CTulStringW(GetParam().from), CTulStringW(GetParam().to), out);
    EXPECT_EQ(out, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RelativeTargets,
    testing::Values(RelativeCase{"/ppt/presentation.xml", "/ppt/slides/slide1.xml", "slides/slide1.xml"},
                    RelativeCase{"/ppt/slides/slide1.xml", "/ppt/media/image1.png", "../media/image1.png"},
                    RelativeCase{"/", "/ppt/presentation.xml", "ppt/presentation.xml"},
                    RelativeCase{"/a/b/c.xml", "/d.xml", "../../d.xml"},
                    RelativeCase{"\\a\\b.xml", "/a/c.xml", "c.xml"},
                    RelativeCase{"/a/b.xml", "/a/b.xml", "b.xml"},
                    RelativeCase{"/a/b.xml", "//a//c/d.xml", "c/d.xml"}, RelativeCase{"/a/a", "/a", "../a"}));

TEST(Relationship, WritesItsElement) {
    IRelationship relationship;
    relationship.SetId("rId1");
    relationship.SetType("http://t/slide");
    relationship.SetTarget("slides/slide 1.xml");
    EXPECT_EQ(relationship.ToXml(),
              "<Relationship Id=\"rId1\" Type=\"http://t/slide\" Target=\"slides/slide%201.xml\"  />");
    relationship.SetTargetMode(TargetModeExternal);
    EXPECT_EQ(relationship.ToXml(), "<Relationship Id=\"rId1\" Type=\"http://t/slide\" "
                                    "Target=\"slides/slide%201.xml\" TargetMode=\"External\" />");
    relationship.SetId("a\"<&");
    EXPECT_EQ(relationship.ToXml().view().find(u"Id=\"a&quot;&lt;&amp;\""), 14U);
}

namespace {

constexpr const char* kPresentationType =
    "application/vnd.openxmlformats-officedocument.presentationml.presentation.main+xml";

std::string Relation(std::string_view name) {
    return kOfficeRelation + std::string(name);
}

} // namespace

TEST(ContentTypes, AreWrittenInOneSpelling) {
    IContentTypes types;
    types.AddOverride("/b.xml", "type/b");
    types.AddOverride("/B.xml", "type/B");
    types.AddDefault("xml", "application/xml");
    types.AddDefault("png", "image/png");
    types.AddDefault("png", "second");
    EXPECT_EQ(Written([&](CSDSerializer* out) { types.Write(out); }),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
              "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
              "<Default Extension = \"png\" ContentType=\"image/png\"/>"
              "<Default Extension = \"xml\" ContentType=\"application/xml\"/>"
              "<Override PartName = \"/B.xml\" ContentType=\"type/B\"/>"
              "<Override PartName = \"/b.xml\" ContentType=\"type/b\"/></Types>");
    types.Clear();
    EXPECT_EQ(Written([&](CSDSerializer* out) { types.Write(out); }),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
              "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"></Types>");
}

TEST(ContentTypes, StayWellFormedWhateverTheNames) {
    IContentTypes types;
    types.AddOverride("/a&<\".xml", "t&t");
    EXPECT_NE(Written([&](CSDSerializer* out) {
                  types.Write(out);
              }).find("PartName = \"/a&amp;&lt;&quot;.xml\" ContentType=\"t&amp;t\""),
              std::string::npos);
}

TEST(ContentTypes, AreLookedUp) {
    IContentTypes types;
    types.AddOverride("/ppt/p.xml", kPresentationType);
    types.AddDefault("XML", "capital");
    const auto type = [&](std::string_view name, const std::string& relation) {
        return Utf8(types.GetContentType(name, relation));
    };
    EXPECT_EQ(Utf8(types.GetContentType("/x.xml", nullptr)), "(null)");
    types.AddDefault("xml", "application/xml");
    EXPECT_EQ(type("/ppt/p.xml", Relation("slide")), kPresentationType);
    EXPECT_EQ(type("/noext", Relation("slide")), "(null)");
    EXPECT_EQ(type("/word/s.xml", Relation("settings")),
              "application/vnd.openxmlformats-officedocument.wordprocessingml.settings+xml");
    EXPECT_EQ(type("/word/s.XML", Relation("settings")),
              "application/vnd.openxmlformats-officedocument.wordprocessingml.settings+xml");
    EXPECT_EQ(Utf8(types.GetContentType("/word/s.XML", nullptr)), "capital");
    EXPECT_EQ(type("/word/s.Xml", "unknown"), "(null)");
    EXPECT_EQ(type("/word/s.xml", "unknown"), "application/xml");
    EXPECT_EQ(type("/a.png", Relation("settings")), "(null)");
    EXPECT_EQ(Utf8(types.FindPartName(CTulStringW(kPresentationType).c_str())), "/ppt/p.xml");
    EXPECT_EQ(Utf8(types.FindPartName("CAPITAL")), "(null)");
}

TEST(ContentTypes, TellKinds) {
    IContentTypes types;
    types.AddOverride("/a.bin", "x");
    types.AddOverride("/b.BIN", "x");
    types.AddOverride("/c.xml", "x");
    types.AddDefault("bin", "x");
    EXPECT_EQ(types.GetKind("/a.bin"), 1);
    EXPECT_EQ(types.GetKind("/b.BIN"), 1);
    EXPECT_EQ(types.GetKind("/c.xml"), 0);
    EXPECT_EQ(types.GetKind("/d.bin"), 0);
    EXPECT_EQ(types.RemoveOverride("/a.bin"), 1);
    EXPECT_EQ(types.RemoveOverride("/a.bin"), 0);
}

TEST(ContentTypes, OfBinaryWorkbooksGoByTheRelationship) {
    IBinaryContentTypes types;
    types.AddDefault("bin", "application/default");
    types.AddOverride("/xl/a.bin", "application/override");
    EXPECT_EQ(Utf8(types.GetContentType("/xl/a.bin", Relation("worksheet"))),
              "application/vnd.ms-excel.worksheet");
    EXPECT_EQ(Utf8(types.GetContentType("/xl/a.BIN", "unknown")), "(null)");
    EXPECT_EQ(Utf8(types.GetContentType("/xl/a.bin", nullptr)), "application/override");
    EXPECT_EQ(Utf8(types.GetContentType("/xl/b.bin", nullptr)), "application/default");
    EXPECT_EQ(types.GetKind("/xl/a.bin.xml"), 1);
    EXPECT_EQ(types.GetKind("/xl/a.xml"), 0);
}

namespace {

struct TableCase {
    const char* relation; ///< full type
    const char* xml;      ///< content type of an XML part, null for none
    const char* binary;   ///< of a .bin part in a binary workbook
};

class RelationshipTable : public testing::TestWithParam<TableCase> {};

} // namespace

TEST_P(RelationshipTable, GivesContentTypes) {
    IContentTypes plain;
    IBinaryContentTypes binary;
    const TableCase& row = GetParam();
    EXPECT_EQ(Utf8(plain.GetContentType("/a.xml", row.relation)), row.xml ? row.xml : "(null)");
    EXPECT_EQ(Utf8(binary.GetContentType("/a.bin", row.relation)), row.binary ? row.binary : "(null)");
}

#define OFFICE "http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
INSTANTIATE_TEST_SUITE_P(
    Samples, RelationshipTable,
    testing::Values(
        TableCase{OFFICE "slide", "application/vnd.openxmlformats-officedocument.presentationml.slide+xml",
                  nullptr},
        TableCase{OFFICE "chart", "application/vnd.openxmlformats-officedocument.drawingml.chart+xml",
                  nullptr},
        TableCase{OFFICE "worksheet",
                  "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml",
                  "application/vnd.ms-excel.worksheet"},
        TableCase{OFFICE "usernames",
                  "application/vnd.openxmlformats-officedocument.spreadsheetml.userNames+xml",
                  "application/vnd.ms-excel.userNames"},
        TableCase{OFFICE "webSettings",
                  "application/vnd.openxmlformats-officedocument.wordprocessingml.webSettings+xml", nullptr},
        TableCase{OFFICE "customXmlProps",
                  "application/vnd.openxmlformats-officedocument.customXmlProperties+xml", nullptr},
        TableCase{OFFICE "externalLink", OFFICE "externalLink", "application/vnd.ms-excel.externalLink"},
        TableCase{"http://schemas.microsoft.com/office/2006/relationships/xlMacrosheet",
                  "application/vnd.ms-excel.macrosheet+xml", "application/vnd.ms-excel.macrosheet"},
        TableCase{"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties",
                  "application/vnd.openxmlformats-package.core-properties+xml", nullptr},
        TableCase{"http://schemas.microsoft.com/office/2007/relationships/slicer", nullptr,
                  "application/vnd.ms-excel.slicer"},
        TableCase{OFFICE "slides", nullptr, nullptr}, TableCase{"", nullptr, nullptr}));
#undef OFFICE

class IndexHandlers : public PackageTest {
protected:
    bool parse(CSDDefaultHandler& handler, const std::string& xml) const {
        WriteFile(at("index.xml"), xml);
        CSDSaxReader* const reader = CreateSaxReader();
        reader->SetContentHandler(&handler);
        const bool result = reader->ParseWithHandler(text("index.xml"));
        ReleaseSaxReader(reader);
        return result;
    }
};

TEST_F(IndexHandlers, ReadRelationships) {
    const std::string xml = Relationships(Relationship("r2", "t", "a%20b&amp;c", "TargetMode=\"External\"") +
                                          Relationship("r1", "t", "%22%5b%5d%10", "TargetMode=\"external\"") +
                                          "<Other Id=\"r3\"/>" + "<Relationship/>");
    RelationshipVector records;
    CRelationshipListHandler list(records);
    ASSERT_TRUE(parse(list, xml));
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].target, "a b&c");
    EXPECT_EQ(records[0].targetMode, TargetModeExternal);
    EXPECT_EQ(records[1].id, "r1");
    EXPECT_EQ(records[1].target, "\"[]\n");
    EXPECT_EQ(records[1].targetMode, TargetModeInternal);
    EXPECT_TRUE(records[2].id.IsEmpty());

    CRelationshipHandler objects;
    ASSERT_TRUE(parse(objects, xml));
    ASSERT_EQ(objects.GetRelationships().size(), 3U);
    EXPECT_EQ(Utf8(objects.GetRelationships()[0].GetTarget()), "a b&c");
}

TEST_F(IndexHandlers, ReadContentTypesIntoRegistryAndMaps) {
    const auto package = newPackage();
    Map overrides;
    Map defaults;
    CContentTypesHandler handler(package.get(), &overrides, &defaults);
    ASSERT_TRUE(
        parse(handler, ContentTypes("<Default Extension=\"xml\" ContentType=\"a\"/>"
                                    "<Override PartName=\"/d.xml\" ContentType=\"application/"
                                    "vnd.openxmlformats-officedocument.drawing+xml\"/>"
                                    "<Override PartName=\"/d.xml\" ContentType=\"second\"/>"
                                    "<Override PartName=\"/w.xml\" ContentType=\"application/"
                                    "vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>")));
    EXPECT_EQ(handler.GetDocType(), sd::SDDocType::DocTypeGraphicML);
    EXPECT_EQ(overrides.size(), 2U);
    EXPECT_EQ(overrides[CTulStringW(u"/d.xml")], "application/vnd.openxmlformats-officedocument.drawing+xml");
    EXPECT_EQ(defaults[CTulStringW(u"xml")], "a");
    EXPECT_EQ(Utf8(package->GetContentTypes()->GetContentType("/x.xml", nullptr)), "a");
}

namespace {

struct DetectionCase {
    const char* name;
    std::vector<const char*> contentTypes;
    sd::SDDocType::DocumentType expected;
};

class Detection : public PackageTest, public testing::WithParamInterface<DetectionCase> {};

constexpr const char* kSheet = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml";
constexpr const char* kDrawing = "application/vnd.openxmlformats-officedocument.drawing+xml";
constexpr const char* kSlideShow =
    "application/vnd.openxmlformats-officedocument.presentationml.slideshow.main+xml";

} // namespace

TEST_P(Detection, GoesByContentTypes) {
    std::string entries = "<Other ContentType=\"" + std::string(kSlideShow) + "\"/><Override/>";
    for (const char* const type : GetParam().contentTypes)
        entries +=
            "<Override PartName=\"/p" + std::to_string(entries.size()) + "\" ContentType=\"" + type + "\"/>";
    WritePackage(text("a.zip"), {{"[Content_Types].xml", ContentTypes(entries)}});
    EXPECT_EQ(newPackage()->DetectDocumentType(text("a.zip")), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Detection,
    testing::Values(DetectionCase{"Workbook", {kSheet}, sd::SDDocType::DocTypeWorkbook},
                    DetectionCase{"WorkbookStays", {kSheet, kDrawing}, sd::SDDocType::DocTypeWorkbook},
                    DetectionCase{"WorkbookReplaces", {kDrawing, kSheet}, sd::SDDocType::DocTypeWorkbook},
                    DetectionCase{"LastCounts", {kDrawing, kSlideShow}, sd::SDDocType::DocTypeSlideShow},
                    DetectionCase{"UserFormDoesNotCount",
                                  {"application/vnd.tul-officedocument.spreadsheetml.sheet.main+xml"},
                                  sd::SDDocType::DocTypeUnknown},
                    DetectionCase{"Nothing", {}, sd::SDDocType::DocTypeUnknown}),
    [](const auto& given) { return std::string(given.param.name); });

TEST_F(IndexHandlers, DetectByExtensionFirst) {
    const auto package = newPackage();
    WriteFile(at("A.ODT"), "no archive");
    WriteFile(at("a.ott"), "no archive");
    EXPECT_EQ(package->DetectDocumentType(text("A.ODT")), sd::SDDocType::DocTypeOdfText);
    EXPECT_EQ(package->DetectDocumentType(text("a.ott")), sd::SDDocType::DocTypeUnknown);
    EXPECT_EQ(package->DetectDocumentType(text("missing.odt")), sd::SDDocType::DocTypeUnknown);
    WritePackage(text("empty.zip"), {{"a", "b"}});
    EXPECT_EQ(package->DetectDocumentType(text("empty.zip")), sd::SDDocType::DocTypeUnknown);
}
