// Part objects by themselves, and the factories that add parts to a document.

#include "document/kinds.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <memory>

using namespace ODF;

TEST(Part, AnswersWithFixedValues) {
    CODFPart part;
    const CTulStringW text(u"text/xml");
    std::vector<ISDPart*> out{&part};
    int number = 7;
    EXPECT_EQ(part.GetPartType(), PartTypeXml);
    EXPECT_EQ(part.GetTargetMode(), TargetModeInternal);
    EXPECT_EQ(part.GetRootClass(), nullptr);
    EXPECT_EQ(part.GetPackageRoot(), nullptr);
    EXPECT_EQ(part.GetParentPart(), nullptr);
    EXPECT_EQ(part.GetSeqProcElems(), nullptr);
    EXPECT_EQ(part.GetMediaTypes(), nullptr);
    for (const unsigned short* const empty :
         {part.GetContentType(), part.GetRelationtype(), part.GetPackagePath(), part.GetLocalPath(),
          part.GetPartname(), part.GetRelationshipID()}) {
        ASSERT_NE(empty, nullptr);
        EXPECT_EQ(*empty, 0);
    }
    part.Parse("<x/>", 4);
    part.Parse(text);
    part.Serialize(text);
    part.Release(1);
    part.SetGUID(text);
    part.SetApplyNewObject(1);
    part.EnableCQRMode(1);
    EXPECT_EQ(part.GetCountByContentType(text), -1);
    EXPECT_EQ(part.GetCountByRelationType(text), 0);
    EXPECT_EQ(part.GetPatrsByContentType(text, &out), 0);
    EXPECT_EQ(part.GetPatrsByRelationType(text, &out), 0);
    EXPECT_EQ(out, std::vector<ISDPart*>{&part});
    EXPECT_EQ(part.GetObjClassByID(text), nullptr);
    EXPECT_EQ(part.GetObjClassByContentType(text), nullptr);
    EXPECT_EQ(part.GetObjClassByRelationType(text), nullptr);
    EXPECT_EQ(part.GetPartByContentType(text), nullptr);
    EXPECT_EQ(part.GetPartByRelationType(text), nullptr);
    EXPECT_EQ(part.GetPartByID(text), nullptr);
    EXPECT_EQ(part.GetIDByPart(&part), nullptr);
    EXPECT_EQ(part.GetInternalClassByID(text), nullptr);
    EXPECT_EQ(static_cast<ISDPart&>(part).GetChildParts(), nullptr);
    EXPECT_EQ(part.GetGUID(), nullptr);
    EXPECT_EQ(part._CheckExternalLinkType(), SD_ExtlinkTypeNone);
    EXPECT_EQ(part.CreateApplicationObj(text, number), nullptr);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(part.GetApplyNewObject(), 0);
    EXPECT_EQ(part.IsEnabledCQRMode(), 0);
    EXPECT_EQ(part.GetModifyPart(), 0);
    part.SetModifyPart(5);
    EXPECT_EQ(part.GetModifyPart(), 5);
}

TEST(Part, KeepsItsChildrenInOrder) {
    CODFPart part;
    CODFPart child;
    std::vector<ISDPart*> out{nullptr, nullptr};
    EXPECT_EQ(part.IsExistChildPart(), 0);
    EXPECT_EQ(part.GetChildParts(&out), 0);
    EXPECT_EQ(out.size(), 2U) << "left alone";
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
    for (const auto& [path, folder] : std::initializer_list<std::pair<std::u16string, std::u16string>>{
             {u"content.xml", u""},
             {u"Object 1\\content.xml", u"Object 1\\"},
             {u"Object 1/content.xml", u"Object 1/"},
             {u"a\\b/c.png", u"a\\b/"},
             {u"/", u"/"},
             {u"", u""},
             {std::u16string(400, u'n') + u"/x", std::u16string(256, u'n')}}) {
        part.SetPackagePath(path);
        EXPECT_EQ(part.GetPackagePathOnly(), folder) << ToUtf8(path);
    }
}

TEST(Part, TakesOverARecordOnce) {
    SDPackage::IPart record;
    record.SetTargetMode(TargetModeExternal);
    record.SetContentType("image/png");
    record.SetPackagePath("Pictures\\a.png");
    record.SetLocalPath("/tmp/a.png");
    record.SetPartName("a.png");
    CODFPart part;
    part.SetPackagePartInfo(nullptr);
    EXPECT_EQ(*part.GetPackagePath(), 0);
    part.SetPackagePartInfo(&record);
    record.SetPartName("b.png");
    EXPECT_EQ(part.GetTargetMode(), TargetModeExternal);
    EXPECT_EQ(ToUtf8(part.GetContentType()), "image/png");
    EXPECT_EQ(ToUtf8(part.GetPackagePath()), "Pictures\\a.png");
    EXPECT_EQ(ToUtf8(part.GetLocalPath()), "/tmp/a.png");
    EXPECT_EQ(ToUtf8(part.GetPartname()), "a.png");
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

namespace {

struct RootCase {
    const char* name;
    CODFPart* (*create)(CSDNamedObject*);
    unsigned id;
    const char* element;
};

class RootPart : public testing::TestWithParam<RootCase> {};

} // namespace

TEST_P(RootPart, BringsOrTakesItsElement) {
    const std::unique_ptr<CODFPart> made(GetParam().create(nullptr));
    const std::unique_ptr<CSDNamedObject> root(made->GetRootClass());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->GetID(), GetParam().id);
    EXPECT_EQ(ToUtf8(root->GetElemName()), GetParam().element);
    EXPECT_EQ(root->GetRootpart(), made.get());
    EXPECT_EQ(made->GetPartType(), PartTypeXml);
    const std::unique_ptr<CODFPart> second(GetParam().create(root.get()));
    EXPECT_EQ(second->GetRootClass(), root.get());
    EXPECT_EQ(root->GetRootpart(), second.get());
}

INSTANTIATE_TEST_SUITE_P(
    All, RootPart,
    testing::Values(
        RootCase{"Document", &COfficeDocumentRootPart::CreateClass, 0x800000AC, "office:document"},
        RootCase{"Content", &COfficeDocumentContentRootPart::CreateClass, 0x800000AD,
                 "office:document-content"},
        RootCase{"Meta", &COfficeDocumentMetaRootPart::CreateClass, 0x800000AE, "office:document-meta"},
        RootCase{"Settings", &COfficeDocumentSettingsRootPart::CreateClass, 0x800000AF,
                 "office:document-settings"},
        RootCase{"Styles", &COfficeDocumentStylesRootPart::CreateClass, 0x800000B0, "office:document-styles"},
        RootCase{"Math", &CMathMathRootPart::CreateClass, 0x80000270, "math:math"}),
    [](const auto& given) { return std::string(given.param.name); });

TEST(PartNames, AreThoseOfTheFourMainParts) {
    const char* const names[] = {"content.xml", nullptr, "styles.xml", "meta.xml", "settings.xml", nullptr};
    for (int key = 0; key < 6; ++key) {
        const unsigned short* const name = ODFUtil::GetMediaType(static_cast<ODF_MedType>(key));
        EXPECT_EQ(name ? ToUtf8(name) : "", names[key] ? names[key] : "") << key;
        EXPECT_EQ(name == nullptr, names[key] == nullptr) << key;
    }
}

TEST(PartNames, AreTakenFromPathsOfAllKinds) {
    for (const auto& [path, name] :
         std::initializer_list<std::pair<const char*, const char*>>{{"C:\\x\\a.PNG", "a.PNG"},
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
}

TEST(PartNames, AreCountedByTheCaller) {
    const unsigned before = CImageRootPart::GetIndex();
    const unsigned media = CMediaRootPart::GetIndex();
    CImageRootPart::IncIndex();
    EXPECT_EQ(CImageRootPart::GetIndex(), before + 1);
    EXPECT_EQ(CImageRootPart::m_sIndex, before + 1);
    EXPECT_EQ(CMediaRootPart::GetIndex(), media);
}

namespace {

class AddedPart : public test::InWorkspace<> {
protected:
    AddedPart() { test::Build(document, test::kTextKind, u"text"); }
    std::size_t children() const {
        std::vector<ISDPart*> parts;
        return static_cast<std::size_t>(document.GetRootPart()->GetChildParts(&parts));
    }
    /// Saves the document, which ends its use, and reads the package.
    test::Members saved() {
        EXPECT_EQ(document.Save(file("out.odt")), 1);
        EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);
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
    EXPECT_EQ(children(), 5U);
    EXPECT_NE(_CreateImagePart(root, "C:\\y\\a.PNG"), part);
    CODFPart* const media = _CreateMediaPart(root, "/x/a.wav");
    EXPECT_EQ(ToUtf8(media->GetPackagePath()), "media/a.wav");
    EXPECT_EQ(children(), 7U);
}

TEST_F(AddedPart, APictureIsSavedWithItsBytes) {
    const std::string bytes("\x89PNG\r\n\x1a\n\0\xFF bytes", 16);
    test::WriteFile(file("ä.png"), bytes);
    test::WriteFile(file("empty.wav"), "");
    _CreateImagePart(document.GetRootPart(), file("ä.png"));
    _CreateMediaPart(document.GetRootPart(), file("empty.wav"))->SetContentType(u"audio/x-wav");
    const test::Members members = saved();
    EXPECT_EQ(members.at("Pictures/ä.png"), bytes);
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

TEST_F(AddedPart, OfEqualNamesOneIsSaved) {
    std::filesystem::create_directory(file("b"));
    test::WriteFile(file("p.png"), "first");
    test::WriteFile(file("b/p.png"), "second");
    _CreateImagePart(document.GetRootPart(), file("p.png"));
    _CreateImagePart(document.GetRootPart(), file("b/p.png"));
    EXPECT_EQ(saved().at("Pictures/p.png"), "first");
}

TEST_F(AddedPart, AChartIsAFolderOfItsOwn) {
    CODFPart* const root = document.GetRootPart();
    CODFPart* const content = _CreateChartContentRootPart(root, "Object 1/");
    EXPECT_EQ(children(), 4U) << "the caller adds the content";
    root->AddChildPart(content);
    CODFPart* const styles = _CreateChartStyleRootPart(root, "Object 1/");
    EXPECT_EQ(children(), 6U);
    EXPECT_EQ(ToUtf8(content->GetPackagePath()), "Object 1/content.xml");
    EXPECT_EQ(ToUtf8(content->GetPartname()), "content.xml");
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

TEST_F(AddedPart, WithoutAParentAChartPartStandsAlone) {
    const std::unique_ptr<CODFPart> part(_CreateChartContentRootPart(nullptr, "Object 1/"));
    const std::unique_ptr<CSDObject> root(part->GetRootClass());
    EXPECT_NE(root, nullptr);
    EXPECT_EQ(_CreateImagePart(nullptr, "a.png"), nullptr);
}

TEST_F(AddedPart, PathsThatLeaveThePackageAreRefused) {
    for (const char* const folder : {"../", "a/../../", "/", "..\\"}) {
        CODFDoc hostile;
        test::Build(hostile, test::kTextKind, u"text");
        _CreateChartStyleRootPart(hostile.GetRootPart(), folder);
        hostile.Save(file("hostile.odt"));
        EXPECT_EQ(hostile.GetDiagnostics().status(), Status::CouldNotWrite) << folder;
        EXPECT_FALSE(std::filesystem::exists(file("hostile.odt"))) << folder;
        EXPECT_EQ(temporaryEntries(), std::vector<std::string>()) << folder;
    }
}
