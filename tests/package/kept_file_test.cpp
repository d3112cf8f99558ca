#include "package/fixture.h"

#include <functional>

// What `Fidelity::Everything` keeps of an Open Packaging file, and what it opens.

using namespace package_test;
using namespace SDPackage;
using sd::SDDocType;

namespace {

class KeptFileTest : public PackageTest {
protected:
    std::unique_ptr<IPackage> keeper() {
        auto package = newPackage();
        package->SetFidelity(ODF::Fidelity::Everything);
        return package;
    }
};

std::string MainType(std::string_view kind) {
    return ContentTypes(
        Default("xml", "application/xml") +
        Override("/xl/drawing1.xml", "application/vnd.openxmlformats-officedocument.drawing+xml") +
        Override("/main.xml", kind));
}

} // namespace

// The member's name is what the link says, in either fidelity and on either route.
TEST_F(KeptFileTest, MembersWithEscapesInTheirNamesKeepThem) {
    Members members = presentationMembers();
    members.erase("ppt/media/image1.png");
    members["ppt/media/image%201.png"] = "picture";
    members["ppt/slides/_rels/slide1.xml.rels"] =
        Relationships(Relationship("rId1", std::string(kOfficeRelation) + "image", "../media/image%201.png"));
    WritePackage(text("a.pptx"), members);
    for (const auto fidelity : {ODF::Fidelity::Listed, ODF::Fidelity::Everything})
        for (const int keepCompressed : {0, 1}) {
            SCOPED_TRACE(keepCompressed);
            const auto package = newPackage();
            package->SetFidelity(fidelity);
            ASSERT_NE(package->Open(text("a.pptx"), keepCompressed), 0);
            EXPECT_NE(package->GetPart("/ppt/media/image 1.png"), nullptr);
            Members written = saved(*package, "b.pptx");
            EXPECT_EQ(Names(written), Names(members));
            EXPECT_EQ(written["ppt/media/image%201.png"], "picture");
            EXPECT_NE(written["ppt/slides/_rels/slide1.xml.rels"].find("\"../media/image%201.png\""),
                      std::string::npos);
        }
}

TEST_F(KeptFileTest, LinksKeepTheTypesAndTargetsOfTheFile) {
    const std::string external = "TargetMode=\"External\"";
    const std::vector<std::string> links{
        Relationship("r9", "t", "main.xml"),
        Relationship("r1", "other type", "main.xml"),
        Relationship("r2", "t", "http://host/?a=1&amp;amp;b=[::1]&#10;50%", external),
        Relationship("r3", "t", "HTTP://HOST/?a=1&amp;amp;b=[::1]&#10;50%", external),
        Relationship("r4", "t", "/m%C3%A9dia/%41.xml"),
        Relationship("r5", "t", "./gone.xml"),
    };
    std::string joined;
    for (const std::string& link : links)
        joined += link;
    Members members{{"[Content_Types].xml", ContentTypes(Default("XML", "application/xml") +
                                                         Override("/MAIN.xml", kPresentationType))},
                    {"_rels/.rels", Relationships(joined)},
                    {"main.xml", "<main/>"},
                    {"média/A.xml", "<a/>"},
                    {"docProps/thumbnail.jpeg", "linked by nothing"}};
    WritePackage(text("a.pptx"), members);
    const auto package = keeper();
    ASSERT_NE(package->Open(text("a.pptx")), 0);
    EXPECT_EQ(Utf8(package->GetPart("/main.xml")->GetContentType()), kPresentationType);
    ASSERT_NE(package->GetMainPart(), nullptr);
    Members written = saved(*package, "b.pptx");
    EXPECT_EQ(Names(written), Names(members));
    const auto again = keeper();
    ASSERT_NE(again->Open(text("b.pptx")), 0);
    RelationshipVector before;
    RelationshipVector after;
    const auto archive = keeper();
    ASSERT_NE(archive->Open(text("a.pptx"), 1), 0);
    ASSERT_NE(archive->ReadRelationships("_rels/.rels", &before), 0);
    ASSERT_NE(archive->Open(text("b.pptx"), 1), 0);
    ASSERT_NE(archive->ReadRelationships("_rels/.rels", &after), 0);
    ASSERT_EQ(after.size(), links.size());
    for (std::size_t i = 0; i < links.size(); ++i) {
        EXPECT_EQ(after[i].id, before[i].id);
        EXPECT_EQ(after[i].type, before[i].type);
        EXPECT_EQ(after[i].writtenTarget, before[i].writtenTarget);
        EXPECT_EQ(after[i].targetMode, before[i].targetMode);
    }
    EXPECT_EQ(saved(*again, "c.pptx"), written);
}

TEST_F(KeptFileTest, NewPartsAreToldAndRemovedOnesGo) {
    const std::string slideType = "application/vnd.openxmlformats-officedocument.presentationml.slide+xml";
    Members members = presentationMembers();
    members["[Content_Types].xml"] = ContentTypes(
        Default("xml", "application/xml") + Default("png", "image/png") +
        Override("/ppt/presentation.xml", kPresentationType) + Override("/ppt/slides/slide1.xml", slideType));
    WritePackage(text("a.pptx"), members);
    for (const bool isDeleted : {false, true}) {
        const auto package = keeper();
        ASSERT_NE(package->Open(text("a.pptx")), 0);
        saved(*package, "b.pptx"); // what an earlier save has entered doesn't hold a part either
        IPart* const main = package->GetMainPart();
        if (isDeleted)
            main->DeleteById("rId1");
        else
            main->RemovePart(main->GetPartById("rId1"));
        WriteFile(at("new.xml"), "<new/>");
        IPart* const part = package->CreatePart();
        part->SetPackagePath("/ppt/slides/new.xml");
        part->SetContentType(slideType);
        part->SetRelationType(std::string(kOfficeRelation) + "slide");
        part->SetLocalPath(text("new.xml"));
        package->AddPart(part);
        main->AddPart(part);
        Members written = saved(*package, "b.pptx");
        EXPECT_EQ(Names(written), (std::vector<std::string>{"[Content_Types].xml", "_rels/.rels",
                                                            "ppt/_rels/presentation.xml.rels",
                                                            "ppt/presentation.xml", "ppt/slides/new.xml"}));
        const std::string& types = written["[Content_Types].xml"];
        EXPECT_NE(types.find("PartName = \"/ppt/slides/new.xml\" ContentType=\"" + slideType),
                  std::string::npos);
        EXPECT_EQ(types.find("slide1.xml"), std::string::npos) << types;
        EXPECT_NE(written["ppt/_rels/presentation.xml.rels"].find("\"slides/new.xml\""), std::string::npos);
    }
}

TEST_F(KeptFileTest, OpensWhatIsRefusedOtherwise) {
    const std::tuple<const char*, const char*, SDDocType::DocumentType> rows[] = {
        {"a.docm", "application/vnd.ms-word.document.macroEnabled.main+xml",
         SDDocType::DocTypeWordDocumentMacro},
        {"a.dotm", "application/vnd.ms-word.template.macroEnabledTemplate.main+xml",
         SDDocType::DocTypeWordMacroTemplate},
        {"a.pptm", "application/vnd.ms-powerpoint.presentation.macroEnabled.main+xml",
         SDDocType::DocTypePresentationMacro},
        {"a.ppsm", "application/vnd.ms-powerpoint.slideshow.macroEnabled.main+xml",
         SDDocType::DocTypeSlideShowMacro},
        {"a.potm", "application/vnd.ms-powerpoint.template.macroEnabled.main+xml",
         SDDocType::DocTypePresentationMacroTemplate},
        {"a.xlam", "application/vnd.ms-excel.addin.macroEnabled.main+xml", SDDocType::DocTypeWorkbookAddIn},
        {"a.xltx", "application/vnd.openxmlformats-officedocument.spreadsheetml.template.main+xml",
         SDDocType::DocTypeWorkbookTemplate},
        {"a.xltm", "application/vnd.ms-excel.template.macroEnabled.main+xml",
         SDDocType::DocTypeWorkbookMacroTemplate}};
    for (const auto& [name, contentType, type] : rows) {
        SCOPED_TRACE(name);
        // Also with a set without bytes, and names that begin with a separator.
        WritePackage(text(name), {{"/[Content_Types].xml", MainType(contentType)},
                                  {"/_rels/.rels", Relationships(Relationship("r1", "t", "/main.xml"))},
                                  {"/main.xml", "<m/>"},
                                  {"_rels/main.xml.rels", ""}});
        std::string bytes = ReadFile(at(name));
        const std::function<int(IPackage&)> routes[] = {
            [&](IPackage& package) { return package.Open(text(name)); },
            [&](IPackage& package) { return package.Open(text(name), 1); },
            [&](IPackage& package) {
                return package.OpenMemory(bytes.data(), static_cast<unsigned>(bytes.size()), "none");
            }};
        for (const auto& open : routes) {
            SCOPED_TRACE(&open - routes);
            const auto package = keeper();
            ASSERT_NE(open(*package), 0);
            EXPECT_EQ(package->GetDocType(), type);
            ASSERT_NE(package->GetMainPart(), nullptr);
            EXPECT_EQ(saved(*package, "b.zip")["main.xml"], "<m/>");
        }
    }
}

TEST_F(KeptFileTest, AnOpenForgetsWhatTheOneBeforeHasNoted) {
    WritePackage(text("bad.docx"), {{"[Content_Types].xml", "<Types>&"}});
    const auto package = newPackage();
    ASSERT_EQ(package->Open(text("bad.docx")), 0);
    ASSERT_NE(package->Open(makePresentation()), 0);
    EXPECT_EQ(diagnostics_.status(), ODF::Status::Ok);
    EXPECT_TRUE(diagnostics_.notes().empty());
}
