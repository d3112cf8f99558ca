#include "package/fixture.h"

using namespace package_test;
using namespace SDPackage;

TEST(IndexTexts, TargetsAreEscapedAndBack) {
    struct Row {
        const char* plain;
        const char* escaped;
        const char* readBack; ///< what unescaping the escaped form gives; null for `plain`
    };
    constexpr Row rows[] = {{"slides/slide1.xml", "slides/slide1.xml", nullptr},
                            {"a b", "a%20b", nullptr},
                            {"a&b", "a&amp;b", nullptr},
                            {"a\nb", "a%10b", nullptr},
                            {"a\"b", "a%22b", nullptr},
                            {"[1]", "%5b1%5d", nullptr},
                            {"50%", "50%25", "50%25"},
                            {"a%zz", "a%25zz", "a%25zz"},
                            {"a%2Fb", "a%2Fb", nullptr},
                            {"a%", "a%25", "a%25"},
                            {"a%4", "a%254", "a%254"},
                            {"a<b", "a&lt;b", "a&lt;b"},
                            {"\x01", "\xEF\xBF\xBD", "\xEF\xBF\xBD"}};
    for (const Row& row : rows) {
        EXPECT_EQ(EscapeTarget(CTulStringW(row.plain)), row.escaped);
        EXPECT_EQ(UnescapeTarget(CTulStringW(row.escaped)), row.readBack ? row.readBack : row.plain);
    }
}

TEST(IndexTexts, RelativeTargetsLeadFromPartToPart) {
    constexpr const char* rows[][3] = {
        {"/ppt/presentation.xml", "/ppt/slides/slide1.xml", "slides/slide1.xml"},
        {"/ppt/slides/slide1.xml", "/ppt/media/image1.png", "../media/image1.png"},
        {"/", "/ppt/presentation.xml", "ppt/presentation.xml"},
        {"/a/b/c.xml", "/d.xml", "../../d.xml"},
        {"\\a\\b.xml", "/a/c.xml", "c.xml"},
        {"/a/b.xml", "/a/b.xml", "b.xml"},
        {"/a/b.xml", "//a//c/d.xml", "c/d.xml"},
        {"/a/a", "/a", "../a"}};
    for (const auto& [from, to, expected] : rows) {
        CTulStringW out(u"old");
        MakeRelativeTarget(CTulStringW(from), CTulStringW(to), out);
        EXPECT_EQ(out, expected);
    }
}

namespace {

std::string Relation(std::string_view name) {
    return kOfficeRelation + std::string(name);
}

} // namespace

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

TEST(ContentTypes, OfBinaryPartsGoByTheirNamesOrTheRelationship) {
    IContentTypes types;
    IBinaryContentTypes binary;
    for (IContentTypes* const either : {&types, static_cast<IContentTypes*>(&binary)}) {
        either->AddOverride("/xl/a.bin", "application/override");
        either->AddOverride("/xl/b.BIN", "x");
        either->AddOverride("/xl/c.xml", "x");
        either->AddDefault("bin", "application/default");
        EXPECT_EQ(either->GetKind("/xl/a.bin"), 1);
        EXPECT_EQ(either->GetKind("/xl/c.xml"), 0);
        EXPECT_EQ(Utf8(either->GetContentType("/xl/a.bin", nullptr)), "application/override");
        EXPECT_EQ(Utf8(either->GetContentType("/xl/d.bin", nullptr)), "application/default");
    }
    EXPECT_EQ(types.GetKind("/xl/b.BIN"), 1);
    EXPECT_EQ(types.GetKind("/xl/d.bin"), 0);
    EXPECT_EQ(binary.GetKind("/xl/a.bin.xml"), 1);
    EXPECT_EQ(Utf8(binary.GetContentType("/xl/a.BIN", "unknown")), "(null)");
    EXPECT_EQ(types.RemoveOverride("/xl/a.bin"), 1);
    EXPECT_EQ(types.RemoveOverride("/xl/a.bin"), 0);
}

class Detection : public PackageTest {};

TEST_F(Detection, GoesByContentTypes) {
    using Type = sd::SDDocType;
    const std::string sheet = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml";
    const std::string drawing = "application/vnd.openxmlformats-officedocument.drawing+xml";
    const std::string show =
        "application/vnd.openxmlformats-officedocument.presentationml.slideshow.main+xml";
    struct Row {
        std::vector<std::string> contentTypes;
        Type::DocumentType expected;
        const char* why;
    };
    const Row rows[] = {{{sheet}, Type::DocTypeWorkbook, ""},
                        {{sheet, drawing}, Type::DocTypeWorkbook, "a workbook stays"},
                        {{drawing, sheet}, Type::DocTypeWorkbook, "a workbook replaces"},
                        {{drawing, show}, Type::DocTypeSlideShow, "the last counts"},
                        {{"application/vnd.tul-officedocument.spreadsheetml.sheet.main+xml"},
                         Type::DocTypeUnknown,
                         "the user form does not count"},
                        {{}, Type::DocTypeUnknown, "nothing that counts"}};
    for (const Row& row : rows) {
        std::string entries = "<Other ContentType=\"" + show + "\"/><Override/>";
        for (const std::string& type : row.contentTypes)
            entries += Override("/p" + std::to_string(entries.size()), type);
        WritePackage(text("a.zip"), {{"[Content_Types].xml", ContentTypes(entries)}});
        EXPECT_EQ(newPackage()->DetectDocumentType(text("a.zip")), row.expected) << row.why;
    }
}

TEST_F(Detection, GoesByExtensionFirst) {
    const auto package = newPackage();
    WriteFile(at("A.ODT"), "no archive");
    WriteFile(at("a.ott"), "no archive");
    WritePackage(text("empty.zip"), {{"a", "b"}});
    EXPECT_EQ(package->DetectDocumentType(text("A.ODT")), sd::SDDocType::DocTypeOdfText);
    for (const char* const name : {"a.ott", "missing.odt", "empty.zip"})
        EXPECT_EQ(package->DetectDocumentType(text(name)), sd::SDDocType::DocTypeUnknown) << name;
}
