#include "package/fixture.h"

#include <functional>

using namespace package_test;
using namespace SDPackage;

namespace {

using ODF::NoteCode;
using ODF::Status;
using sd::SDDocType;

class OpenPackaging : public PackageTest {
protected:
    /// A presentation whose root links lead where `relationships` say.
    std::unique_ptr<IPackage> openWith(const std::string& relationships, const Members& more = {}) {
        Members all{{"[Content_Types].xml", ContentTypes(Default("xml", "application/xml"))},
                    {"_rels/.rels", Relationships(relationships)}};
        all.insert(more.begin(), more.end());
        WritePackage(text("x.pptx"), all);
        return opened(text("x.pptx"));
    }
};

} // namespace

TEST_F(OpenPackaging, OpensIntoLinkedPartsAndSavesWhatItHasRead) {
    const auto package = opened(makePresentation());
    EXPECT_EQ(package->GetDocType(), SDDocType::DocTypePresentation);
    IPart* const main = package->GetMainPart();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(Utf8(main->GetPackagePath()), "/ppt/presentation.xml");
    EXPECT_EQ(main, package->GetRootPart()->GetPartById("rId1"));
    EXPECT_EQ(ReadFile(Utf8(main->GetLocalPath())), "<presentation/>");

    IPart* const slide = main->GetPartById("rId1");
    ASSERT_NE(slide, nullptr);
    EXPECT_EQ(Utf8(slide->GetPackagePath()), "/ppt/slides/slide1.xml");
    EXPECT_EQ(Utf8(slide->GetContentType()),
              "application/vnd.openxmlformats-officedocument.presentationml.slide+xml");
    EXPECT_EQ(Utf8(slide->GetRelationType()), std::string(kOfficeRelation) + "slide");
    EXPECT_EQ(Utf8(slide->GetPartById("rId1")->GetPackagePath()), "/ppt/media/image1.png");
    EXPECT_EQ(Utf8(slide->GetPartById("rId1")->GetContentType()), "image/png");

    const IPart* const link = main->GetPartById("rId2");
    EXPECT_EQ(link->GetTargetMode(), TargetModeExternal);
    for (const auto* const place : {link->GetPackagePath(), link->GetLocalPath(), link->GetPartName()})
        EXPECT_EQ(Utf8(place), "http://host/a b?x=1&y=2");

    Members written = saved(*package, "b.pptx");
    EXPECT_EQ(Names(written), Names(presentationMembers()));
    EXPECT_EQ(written["ppt/media/image1.png"], "picture");
    EXPECT_EQ(written["ppt/_rels/presentation.xml.rels"],
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?><Relationships"
              " xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
              "<Relationship Id=\"rId1\" Type=\"" +
                  std::string(kOfficeRelation) +
                  "slide\" Target=\"slides/slide1.xml\"  />"
                  "<Relationship Id=\"rId2\" Type=\"" +
                  kOfficeRelation +
                  "hyperlink\" Target=\"http://host/a%20b?x=1&amp;y=2\" TargetMode=\"External\" />"
                  "</Relationships>");
    EXPECT_NE(written["ppt/slides/_rels/slide1.xml.rels"].find("Target=\"../media/image1.png\""),
              std::string::npos);

    const auto again = opened(text("b.pptx"));
    EXPECT_EQ(saved(*again, "c.pptx"), written);
}

// All ways into a package give the same parts, and all can be saved.
TEST_F(OpenPackaging, AllRoutesGiveTheSameParts) {
    const std::string file = makePresentation();
    std::string bytes = ReadFile(file);
    const auto size = static_cast<unsigned>(bytes.size());
    const std::function<int(IPackage&)> routes[] = {
        [&](IPackage& package) { return package.Open(file); },
        [&](IPackage& package) { return package.Open(file, 1); },
        [&](IPackage& package) { return package.Open(file, text("opened")); },
        [&](IPackage& package) { return package.OpenMemory(bytes.data(), size, file); },
        [&](IPackage& package) {
            return package.OpenMemory(bytes.data(), size, text("no such file.odt"), text("extracted"));
        },
        [&](IPackage& package) {
            CSDUnZip unzip;
            EXPECT_NE(unzip.OpenAndExtract(CTulStringW(file), CTulStringW(text("folder"))), 0);
            return package.OpenFolder(text("folder"));
        }};
    for (const auto& open : routes) {
        SCOPED_TRACE(&open - routes);
        const auto package = newPackage();
        ASSERT_NE(open(*package), 0);
        EXPECT_EQ(package->GetDocType(), SDDocType::DocTypePresentation);
        EXPECT_EQ(package->GetParts()->size(), 4U);
        ASSERT_NE(package->GetMainPart(), nullptr);
        EXPECT_NE(package->GetMainPart()->GetPartById("rId1"), nullptr);
        EXPECT_EQ(saved(*package, "b.pptx")["ppt/slides/slide1.xml"], "<slide/>");
    }
    bytes = ReadFile(makeText());
    EXPECT_EQ(newPackage()->OpenMemory(bytes.data(), static_cast<unsigned>(bytes.size()), text("a.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::UnknownType);
}

TEST_F(OpenPackaging, TargetsStayInThePackage) {
    constexpr const char* rows[][2] = {{"c.xml", "/a/b/c.xml"},
                                       {"../c.xml", "/a/c.xml"},
                                       {"../../c.xml", "/c.xml"},
                                       {"./c/./d.xml", "/a/b/c/d.xml"},
                                       {"/c.xml", "/c.xml"},
                                       {"/", "//"},
                                       {"../../../../secret.txt", "/secret.txt"},
                                       {"..\\..\\..\\..\\secret.txt", "/secret.txt"},
                                       {"/../secret.txt", "/secret.txt"},
                                       {"/a\\..\\..\\secret.txt", "/secret.txt"},
                                       {"", "/a/b/"},
                                       {"x%20y.xml", "/a/b/x y.xml"}};
    WriteFile(temporary() / "secret.txt", "of someone else");
    std::string links;
    for (const auto& [target, path] : rows)
        links += Relationship("to " + std::string(target), "t", target);
    const auto package =
        openWith(Relationship("r0", "t", "a/b/source.xml"),
                 {{"a/b/_rels/source.xml.rels", Relationships(links)}, {"a/b/source.xml", "s"}});
    const std::string root = Utf8(package->GetTempFolder());
    for (const auto& [target, path] : rows) {
        const IPart* const part =
            package->GetPart("/a/b/source.xml")->GetPartById("to " + std::string(target));
        ASSERT_NE(part, nullptr) << target;
        EXPECT_EQ(Utf8(part->GetPackagePath()), path) << target;
        const std::string local = fs::path(Utf8(part->GetLocalPath())).lexically_normal().string();
        EXPECT_EQ(local.rfind(root, 0), 0U) << local;
    }
    fs::remove(temporary() / "secret.txt");
}

TEST_F(OpenPackaging, OneTargetIsOnePartAndFoundInAnySpelling) {
    const auto package =
        openWith(Relationship("r1", "t", "my%20file.xml") + Relationship("r2", "t", "Dir/File.xml") +
                     Relationship("r3", "t", "/dir/file.xml") +
                     Relationship("r4", "t", "http://x/", "TargetMode=\"External\"") +
                     Relationship("r5", "u", "http://x/", "TargetMode=\"External\""),
                 {{"my%20file.xml", "escaped"}, {"dir/file.XML", "other case"}});
    EXPECT_EQ(ReadFile(Utf8(package->GetPart("/my file.xml")->GetLocalPath())), "escaped");
    EXPECT_EQ(ReadFile(Utf8(package->GetPart("/Dir/File.xml")->GetLocalPath())), "other case");
    IPart* const root = package->GetRootPart();
    EXPECT_EQ(root->Count(nullptr), 5);
    EXPECT_EQ(package->GetParts()->size(), 3U);
    EXPECT_EQ(root->GetPartById("r2"), root->GetPartById("r3"));
    EXPECT_EQ(root->GetPartById("r4"), root->GetPartById("r5"));
}

TEST_F(OpenPackaging, LinksThatLeadNowhereDoNotKeepItFromSaving) {
    const auto package = openWith(
        Relationship("r1", "t", "NULL") + Relationship("&quot;&lt;&amp;", "t", "a.xml"), {{"a.xml", "a"}});
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::MemberMissing, "NULL"));
    Members written = saved(*package, "b.pptx");
    EXPECT_EQ(Names(written), (std::vector<std::string>{"[Content_Types].xml", "_rels/.rels", "a.xml"}));
    EXPECT_NE(written["_rels/.rels"].find("Id=\"&quot;&lt;&amp;\""), std::string::npos);
    // A member that was there is another matter.
    fs::remove(Utf8(package->GetPart("/a.xml")->GetLocalPath()));
    EXPECT_EQ(package->Save(text("c.pptx")), 0);
    EXPECT_FALSE(fs::exists(at("c.pptx")));
}

TEST_F(OpenPackaging, BrokenIndexesAreToldAndRefused) {
    const std::pair<const char*, Members> rows[] = {
        {"no content types", {{"_rels/.rels", Relationships({})}}},
        {"bad content types", {{"[Content_Types].xml", "<Types>&"}}},
        {"bad relationships", {{"[Content_Types].xml", ContentTypes({})}, {"_rels/.rels", "<R></Q>"}}},
        {"one id twice",
         {{"[Content_Types].xml", ContentTypes({})},
          {"_rels/.rels", Relationships(Relationship("r", "t", "a") + Relationship("r", "t", "b"))}}}};
    for (const auto& [name, members] : rows) {
        WritePackage(text("b.docx"), members);
        for (const int keepCompressed : {0, 1}) {
            EXPECT_EQ(newPackage()->Open(text("b.docx"), keepCompressed), 0) << name;
            EXPECT_EQ(diagnostics_.status(), Status::BadIndex) << name;
        }
    }
}

TEST_F(OpenPackaging, TheRegistryOfABinaryWorkbookIsItsOwn) {
    WritePackage(text("a.xlsb"),
                 {{"[Content_Types].xml", ContentTypes({})},
                  {"_rels/.rels", Relationships(Relationship("r1", std::string(kOfficeRelation) + "worksheet",
                                                             "xl/sheet1.bin"))},
                  {"xl/sheet1.bin", "b"}});
    const auto package = opened(text("a.xlsb"));
    const IPart* const sheet = package->GetPart("/xl/sheet1.bin");
    EXPECT_EQ(Utf8(sheet->GetContentType()), "application/vnd.ms-excel.worksheet");
    EXPECT_EQ(sheet->GetPartType(), 1);
}

namespace {

// The callback has no argument of the caller's, so what it sees goes here.
Members seen;
int answer = 1;

int Watch(void* data, int size, const unsigned short* kind, const unsigned short* itemName) {
    EXPECT_EQ(Utf8(kind), "XMLFile");
    seen[Utf8(itemName)].assign(static_cast<const char*>(data), static_cast<std::size_t>(size));
    return answer;
}

} // namespace

TEST_F(OpenPackaging, TheCallbackSeesEachIndexMemberInTheArchive) {
    Members members = presentationMembers();
    std::string& links = members["_rels/.rels"]; // larger than what is read at a time
    links.insert(links.find("<Relationship "), 300'000, ' ');
    members["ppt/my_rels/picture.bin"] = "no XML"; // neither is an index member
    members["ppt/_rels/notes.txt"] = "no XML";
    WritePackage(text("a.pptx"), members);
    seen.clear();
    const auto package = newPackage();
    package->SetXmlCallback(Watch);
    ASSERT_NE(package->Open(text("a.pptx")), 0);
    EXPECT_TRUE(seen.empty());
    answer = 1;
    ASSERT_NE(package->Open(text("a.pptx"), 1), 0);
    std::erase_if(members, [](const auto& member) {
        return !member.first.ends_with(".rels") && member.first != "[Content_Types].xml";
    });
    EXPECT_TRUE(seen == members);
    answer = 0;
    EXPECT_EQ(package->Open(text("a.pptx"), 1), 0);
}

TEST_F(OpenPackaging, ReadsContentTypesAlone) {
    const std::string drawing = "application/vnd.openxmlformats-officedocument.drawing+xml";
    WritePackage(
        text("a.pptx"),
        {{"[Content_Types].xml",
          ContentTypes(Default("xml", "a") + Override("/d.xml", drawing) + Override("/d.xml", "second") +
                       Override("/p.xml", kPresentationType))},
         {"a.rels", Relationships(Relationship("r2", "t", "a%20b&amp;c", "TargetMode=\"External\"") +
                                  Relationship("r1", "t", "%22%5b%5d%10", "TargetMode=\"external\"") +
                                  "<Other Id=\"r3\"/><Relationship/>")}});
    std::string bytes = ReadFile(at("a.pptx"));
    const auto package = newPackage();
    Map overrides;
    Map defaults;
    ASSERT_NE(package->ReadContentTypes(text("a.pptx"), &overrides, &defaults), 0);
    EXPECT_EQ(package->GetDocType(), SDDocType::DocTypeGraphicML) << "the first that is known";
    EXPECT_EQ(overrides.size(), 2U);
    EXPECT_EQ(overrides[CTulStringW(u"/d.xml")], drawing);
    EXPECT_EQ(defaults[CTulStringW(u"xml")], "a");
    EXPECT_EQ(Utf8(package->GetContentTypes()->GetContentType("/x.xml", nullptr)), "a");
    EXPECT_EQ(Utf8(package->GetSourcePath()), text("a.pptx"));
    ASSERT_NE(package->ReadContentTypes(bytes.data(), static_cast<unsigned>(bytes.size()), nullptr, nullptr),
              0);

    RelationshipVector records;
    ASSERT_NE(package->ReadRelationships("a.rels", &records), 0);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].target, "a b&c");
    EXPECT_EQ(records[0].targetMode, TargetModeExternal);
    EXPECT_EQ(records[1].id, "r1");
    EXPECT_EQ(records[1].target, "\"[]\n");
    EXPECT_EQ(records[1].targetMode, TargetModeInternal);
    EXPECT_TRUE(records[2].id.IsEmpty());
    EXPECT_EQ(package->ReadRelationships("none.rels", &records), 0);
    EXPECT_EQ(package->ReadContentTypes(bytes.data(), 20, nullptr, nullptr), 0);
    WritePackage(text("b.zip"), {{"a", "b"}});
    EXPECT_EQ(package->ReadContentTypes(text("b.zip"), nullptr, nullptr), 0);
}

TEST_F(OpenPackaging, WritesContentTypesToAFileAndEmptiesThem) {
    const auto package = newPackage();
    IContentTypes& types = *package->GetContentTypes();
    types.AddOverride("/b.xml", "type/b");
    types.AddOverride("/B.xml", "type/B");
    types.AddOverride("/b.xml", "second");
    types.AddDefault("xml", "application/xml");
    types.AddDefault("png", "image/png");
    types.AddDefault("png", "second");
    types.AddOverride("/a&<\".xml", "t&t");
    const std::string start =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">";
    package->WriteContentTypes("/dev/null"); // a file that can't be made leaves the registry alone
    package->WriteContentTypes(text("out"));
    EXPECT_EQ(ReadFile(at("out/[Content_Types].xml")),
              start + "<Default Extension = \"png\" ContentType=\"image/png\"/>"
                      "<Default Extension = \"xml\" ContentType=\"application/xml\"/>"
                      "<Override PartName = \"/B.xml\" ContentType=\"type/B\"/>"
                      "<Override PartName = \"/a&amp;&lt;&quot;.xml\" ContentType=\"t&amp;t\"/>"
                      "<Override PartName = \"/b.xml\" ContentType=\"type/b\"/></Types>");
    package->WriteContentTypes(text("out"), "second.xml");
    EXPECT_EQ(ReadFile(at("out/second.xml")), start + "</Types>");
}

TEST_F(OpenPackaging, IndexGoesIntoACallersArchive) {
    const auto package = opened(makePresentation());
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(text("mine.zip")), 0);
    std::vector<char> scratch(4096);
    package->SetExternalZip(&zip);
    package->SetScratchBuffer(scratch.data());
    package->SetScratchSize(static_cast<int>(scratch.size()));
    ASSERT_NE(package->Save(text("b.pptx")), 0);
    EXPECT_FALSE(fs::exists(at("b.pptx")));
    ASSERT_NE(zip.CloseFile(), 0);
    EXPECT_EQ(
        Names(ReadPackage(text("mine.zip"))),
        (std::vector<std::string>{"[Content_Types].xml", "_rels/.rels", "ppt/_rels/presentation.xml.rels",
                                  "ppt/slides/_rels/slide1.xml.rels"}));

    // Memory that is too small ends the save.
    ASSERT_NE(zip.CreareZipFile(text("other.zip")), 0);
    package->SetScratchSize(16);
    EXPECT_EQ(package->Save(text("b.pptx")), 0);
    zip.Discard();
}
