// Part objects by themselves, and the factories that add parts to a document.

#include "document/kinds.h"
#include "support/packages.h"
#include "support/workspace.h"
#include "zip/notes.h"

#include <odfmodel/odfmodel.h>

#include <memory>

using namespace ODF;

namespace {

using Texts = std::initializer_list<std::pair<std::string, std::string>>;

} // namespace

TEST(Part, KeepsItsChildrenInOrder) {
    CODFPart part;
    CODFPart child;
    std::vector<ISDPart*> out{nullptr};
    EXPECT_EQ(part.GetChildParts(&out), 0);
    EXPECT_EQ(out.size(), 1U) << "left alone";
    part.AddChildPart(&child);
    part.AddChildPart(ToUnits(u"id"), nullptr);
    EXPECT_EQ(part.IsExistChildPart(), 1);
    EXPECT_EQ(part.GetChildParts(nullptr), 0);
    EXPECT_EQ(part.GetChildParts(&out), 2);
    EXPECT_EQ(out, (std::vector<ISDPart*>{&child, nullptr}));
    EXPECT_EQ(child.GetParentPart(), nullptr) << "adding doesn't set it";
}

TEST(Part, TellsItsFolder) {
    CODFPart part;
    ASSERT_NE(part.GetPackagePath(), nullptr);
    EXPECT_EQ(part.GetPackagePathOnly(), u"");
    for (const auto& [path, folder] : Texts{{"content.xml", ""},
                                            {"Object 1\\content.xml", "Object 1\\"},
                                            {"Object 1/content.xml", "Object 1/"},
                                            {"a\\b/c.png", "a\\b/"},
                                            {"/", "/"},
                                            {std::string(400, 'n') + "/x", std::string(256, 'n')}}) {
        part.SetPackagePath(path);
        EXPECT_EQ(CTulStringW(part.GetPackagePathOnly()), folder) << path;
    }
}

TEST(Part, KeepsTheFirstOfEqualKeys) {
    struct Element : ISDSeqProcElem {
        explicit Element(unsigned key) : order(key) {}
        unsigned GetSeqOrder() const override { return order; }
        unsigned order;
    } high(0x80000000U), low(1), lowAgain(1);
    CODFPart part;
    part.AddSeqProcElems(nullptr);
    EXPECT_EQ(part.GetSeqProcElems(), nullptr);
    for (Element* const element : {&high, &low, &lowAgain})
        part.AddSeqProcElems(element);
    ASSERT_EQ(part.GetSeqProcElems()->size(), 2U);
    EXPECT_EQ(*part.GetSeqProcElems()->begin(), &low);
    EXPECT_EQ(*part.GetSeqProcElems()->rbegin(), &high) << "the key is unsigned";
    part.AddMediaType(u"png", u"image/png");
    part.AddMediaType(u"png", u"other");
    EXPECT_EQ(part.GetMediaTypes()->at(u"png"), u"image/png");
}

TEST(Part, BringsOrTakesItsRootElement) {
    const std::pair<CODFPart* (*)(CSDNamedObject*), const char*> kRows[] = {
        {&COfficeDocumentRootPart::CreateClass, "office:document"},
        {&COfficeDocumentContentRootPart::CreateClass, "office:document-content"},
        {&COfficeDocumentMetaRootPart::CreateClass, "office:document-meta"},
        {&COfficeDocumentSettingsRootPart::CreateClass, "office:document-settings"},
        {&COfficeDocumentStylesRootPart::CreateClass, "office:document-styles"},
        {&CMathMathRootPart::CreateClass, "math:math"}};
    for (const auto& [create, element] : kRows) {
        const std::unique_ptr<CODFPart> made(create(nullptr));
        const std::unique_ptr<CSDNamedObject> root(made->GetRootClass());
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(root->GetID(), ClassOfElement(element)->id()) << element;
        EXPECT_EQ(ToUtf8(root->GetElemName()), element);
        EXPECT_EQ(root->GetRootpart(), made.get());
        EXPECT_EQ(made->GetPartType(), PartTypeXml);
        const std::unique_ptr<CODFPart> second(create(root.get()));
        EXPECT_EQ(second->GetRootClass(), root.get());
        EXPECT_EQ(root->GetRootpart(), second.get());
    }
}

TEST(PartNames, AreTakenFromPathsOfAllKinds) {
    for (const auto& [path, name] : Texts{{"C:\\x\\a.PNG", "a.PNG"},
                                          {"/x/a.b.png", "a.b.png"},
                                          {"a", "a"},
                                          {"C:a.png", "a.png"},
                                          {"x/", ""},
                                          {"", ""}})
        EXPECT_EQ(ToUtf8(CImageRootPart::GetFilename(path)), name) << path;
    const unsigned short* const first = CImageRootPart::GetFilename(u"x/one.png");
    const unsigned short* const media = CMediaRootPart::GetFilename(u"x/sound.wav");
    EXPECT_EQ(CImageRootPart::GetFilename(u"x/two.png"), first) << "one buffer";
    EXPECT_EQ(ToUtf8(first), "two.png");
    EXPECT_EQ(ToUtf8(media), "sound.wav") << "each class has its own";
    EXPECT_LE(ToView(CImageRootPart::GetFilename(std::u16string(70000, u'n'))).size(), 510U);
    const unsigned before = CMediaRootPart::GetIndex();
    CImageRootPart::IncIndex();
    EXPECT_EQ(CMediaRootPart::GetIndex(), before) << "and its own count";
}

namespace {

class AddedPart : public test::InWorkspace<> {
protected:
    AddedPart() { test::Build(document, test::kTextKind, u"text"); }
    int children() const {
        std::vector<ISDPart*> parts;
        return document.GetRootPart()->GetChildParts(&parts);
    }
    /// Saves the document, which ends its use, and reads the package.
    test::Members saved(Status status = Status::Ok) {
        EXPECT_EQ(document.Save(file("out.odt")), 1);
        EXPECT_EQ(document.GetDiagnostics().status(), status);
        return test::ReadPackage(file("out.odt"));
    }
    CODFDoc document;
};

} // namespace

TEST_F(AddedPart, APictureIsAddedOnce) {
    CODFPart* const root = document.GetRootPart();
    CODFPart* const part = _CreateImagePart(root, "C:\\x\\a.PNG", 1, 2);
    EXPECT_EQ(ToUtf8(part->GetPackagePath()), "Pictures/a.PNG");
    EXPECT_EQ(ToUtf8(part->GetPartname()), "a.PNG");
    EXPECT_EQ(ToUtf8(part->GetLocalPath()), "C:\\x\\a.PNG");
    EXPECT_EQ(*part->GetContentType(), 0);
    EXPECT_EQ(part->GetPartType(), PartTypeBinary);
    EXPECT_EQ(_CreateImagePart(root, "c:\\X\\A.png"), part);
    EXPECT_EQ(children(), 5);
    EXPECT_NE(_CreateImagePart(root, "C:\\y\\a.PNG"), part);
    EXPECT_EQ(_CreateImagePart(nullptr, "a.png"), nullptr);
    EXPECT_EQ(children(), 6);
}

TEST_F(AddedPart, FilesAreSavedWithTheirBytes) {
    const std::string bytes("\x89PNG\r\n\x1a\n\0\xFF bytes", 16);
    test::WriteFile(file("ä.png"), bytes);
    test::WriteFile(file("empty.wav"), "");
    std::filesystem::create_directory(file("other"));
    test::WriteFile(file("other/ä.png"), "of the same name");
    _CreateImagePart(document.GetRootPart(), file("ä.png"));
    _CreateImagePart(document.GetRootPart(), file("other/ä.png"));
    _CreateMediaPart(document.GetRootPart(), file("empty.wav"))->SetContentType(u"audio/x-wav");
    const test::Members members = saved(Status::Damaged);
    EXPECT_TRUE(test::HasNote(document.GetDiagnostics(), NoteCode::MemberDuplicate, "Pictures/ä.png"));
    EXPECT_EQ(members.at("Pictures/ä.png"), bytes) << "the first of a name";
    EXPECT_EQ(members.at("media/empty.wav"), "");
    EXPECT_NE(members.at("META-INF/manifest.xml").find("Pictures/ä.png"), std::string::npos);
    EXPECT_EQ(test::ReadFile(file("ä.png")), bytes) << "the caller's file stays";

    CODFDoc again;
    ASSERT_EQ(again.Open(file("out.odt")), 1);
    std::vector<CODFPart*> found;
    again.GetPartsByContentType("audio/x-wav", &found);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(ToUtf8(found[0]->GetPackagePath()), "media\\empty.wav");
}

TEST_F(AddedPart, AChartIsAFolderOfItsOwn) {
    const std::unique_ptr<CODFPart> apart(_CreateChartContentRootPart(nullptr, "Object 1/"));
    EXPECT_NE(std::unique_ptr<CSDObject>(apart->GetRootClass()), nullptr);
    CODFPart* const root = document.GetRootPart();
    CODFPart* const content = _CreateChartContentRootPart(root, "Object 1/");
    EXPECT_EQ(children(), 4) << "the caller adds the content";
    root->AddChildPart(content);
    CODFPart* const styles = _CreateChartStyleRootPart(root, "Object 1/");
    EXPECT_EQ(children(), 6);
    EXPECT_EQ(ToUtf8(content->GetPackagePath()), "Object 1/content.xml");
    EXPECT_EQ(ToUtf8(content->GetContentType()), "text/xml");
    EXPECT_EQ(ToUtf8(content->GetRelationtype()), "application/vnd.oasis.opendocument.chart");
    EXPECT_NE(styles->RootAs<COfficeDocumentStyles>(), nullptr);
    CChartChart* const chart =
        content->RootAs<COfficeDocumentContent>()->SetOfficeBody()->SetOfficeChart()->SetChartChart();
    chart->SetChartTitle()->SetTextP()->SetText(u"Sales");
    const std::string manifest = saved().at("META-INF/manifest.xml");
    EXPECT_NE(manifest.find("opendocument.chart\" manifest:full-path=\"Object 1/\""), std::string::npos);

    CODFDoc again;
    ASSERT_EQ(again.Open(file("out.odt")), 1);
    CSDObject* const found = again.Get3rdPartyPart("Object 1", "content.xml");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(ToXml(*found), ToXml(*content->GetRootClass()));
}

TEST_F(AddedPart, PathsThatLeaveThePackageAreRefused) {
    for (const char* const folder : {"../", "a/../../", "/", "..\\"}) {
        CODFDoc hostile;
        test::Build(hostile, test::kTextKind, u"text");
        CODFDoc picture;
        test::Build(picture, test::kTextKind, u"text");
        test::WriteFile(file("evil"), "bytes");
        _CreateChartStyleRootPart(hostile.GetRootPart(), folder);
        _CreateImagePart(picture.GetRootPart(), file("evil"))
            ->SetPackagePath(CTulStringW(folder + std::string("evil")));
        for (CODFDoc* const made : {&hostile, &picture}) {
            made->Save(file("hostile.odt"));
            EXPECT_EQ(made->GetDiagnostics().status(), Status::CouldNotWrite) << folder;
            EXPECT_FALSE(std::filesystem::exists(file("hostile.odt"))) << folder;
        }
    }
}
