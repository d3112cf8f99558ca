// Opening and saving, from the outside: results, status, what is found where.

#include "document/kinds.h"
#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

using namespace ODF;
using test::Members;

namespace {

class Lifecycle : public test::InWorkspace<> {
protected:
    /// A text document with these members besides its content, and what else the manifest says.
    std::string textFile(Members more, const std::vector<test::ManifestEntry>& entries = {}) {
        more.emplace("content.xml", test::TextContent("<text:p>top</text:p>"));
        test::WriteOdf(file("text.odt"), test::kTextType, more, entries);
        return file("text.odt");
    }
};

std::vector<std::string> TextOf(CODFDoc& document) {
    return document.GetContentClass() ? test::Paragraphs(*document.GetContentClass())
                                      : std::vector<std::string>();
}

std::size_t PartsOfType(const CODFDoc& document, const char* type) {
    std::vector<CODFPart*> parts{nullptr};
    document.GetPartsByContentType(type, &parts);
    document.GetPartsByContentType(type, nullptr);
    return parts.size() - 1; // they are appended
}

} // namespace

TEST_F(Lifecycle, PartsAreFoundByFolder) {
    CODFDoc document;
    ASSERT_EQ(document.Open(textFile({{"Object 1/content.xml", test::TextContent("<text:p>below</text:p>")},
                                      {"a/b/meta.xml", "<x/>"},
                                      {"Pictures/p.png", "\x89PNG"}},
                                     {{"Object 1/", std::string(test::kTextType)}})),
              1);
    EXPECT_EQ(TextOf(document), std::vector<std::string>{"top"});
    EXPECT_EQ(document.GetStylesClass(), nullptr);
    EXPECT_EQ(document.GetMetaClass(), nullptr) << "one below the top doesn't count";
    EXPECT_EQ(document.GetSettingsClass(), nullptr);
    EXPECT_EQ(document.GetMainPart()->GetRootClass(), document.GetContentClass());
    EXPECT_EQ(document.GetContentClass()->GetRootpart(), document.GetMainPart());
    CSDObject* const below = document.Get3rdPartyPart(u"Object 1", u"content.xml");
    ASSERT_NE(below, nullptr);
    EXPECT_EQ(test::Paragraphs(*below), std::vector<std::string>{"below"});
    EXPECT_NE(document.Get3rdPartyPart("ab", "meta.xml"), nullptr)
        << "folders are joined without a separator";
    EXPECT_EQ(document.Get3rdPartyPart("", "content.xml"), document.GetContentClass());
    for (const auto& [folder, name] :
         std::initializer_list<std::pair<const char*, const char*>>{{"Object 1\\", "content.xml"},
                                                                    {"object 1", "content.xml"},
                                                                    {"Object 1", "styles.xml"},
                                                                    {"Pictures", "p.png"}})
        EXPECT_EQ(document.Get3rdPartyPart(folder, name), nullptr) << folder;
    EXPECT_EQ(document.Get3rdPartyPart("Object 1", nullptr), nullptr);

    CODFPart& root = *document.GetRootPart();
    EXPECT_EQ(ToUtf8(root.GetPackagePath()), "/");
    EXPECT_EQ(root.GetPartType(), PartTypeBinary);
    EXPECT_EQ(root.GetRootClass(), nullptr);
    EXPECT_EQ(ToUtf8(document.GetMainPart()->GetRelationtype()), test::kTextType);
    std::vector<ISDPart*> parts;
    ASSERT_EQ(root.GetChildParts(&parts), 4) << "all of them directly";
    for (ISDPart* const part : parts) {
        const std::string path = ToUtf8(part->GetPackagePath());
        const bool isPicture = path == "Pictures\\p.png";
        EXPECT_TRUE(("\\" + path).ends_with("\\" + ToUtf8(part->GetPartname()))) << path;
        EXPECT_EQ(part->GetTargetMode(), TargetModeInternal);
        EXPECT_EQ(static_cast<CODFPart*>(part)->GetPartType(), isPicture ? PartTypeBinary : PartTypeXml);
        EXPECT_EQ(part->GetRootClass() == nullptr, isPicture);
        EXPECT_TRUE(std::filesystem::exists(ToUtf8(part->GetLocalPath())));
    }
}

TEST_F(Lifecycle, PartsStandOnceByContentType) {
    CODFDoc document;
    ASSERT_EQ(document.Open(textFile({{"styles.xml", "<x/>"}, {"p.bin", "x"}}, {{"p.bin", "image/png"}})), 1);
    EXPECT_EQ(PartsOfType(document, "text/xml"), 3U);
    EXPECT_EQ(PartsOfType(document, "TEXT/XML"), 0U);
    ASSERT_EQ(document.Save(file("out.odt")), 1);
    EXPECT_EQ(PartsOfType(document, "text/xml"), 3U);
    EXPECT_EQ(document.Get3rdPartyPart("", "content.xml"), document.GetContentClass());
    test::Build(document, test::kTextKind, u"new");
    EXPECT_EQ(PartsOfType(document, "text/xml"), 0U) << "listed by their record: none before the save";
    ASSERT_EQ(document.Save(file("out.odt")), 1);
    EXPECT_EQ(PartsOfType(document, "text/xml"), 4U);
}

TEST_F(Lifecycle, AnyNameThatTheSystemTakesWillDo) {
    for (const std::string& name :
         {std::string("a b.c.odt"), std::string(251, 'n') + ".odt", std::string(255, 'n'),
          std::string(84, 'n') + "漢.odt", std::string(".odt"), std::string("..odt"), std::string("a\\b.odt"),
          std::string(" ")}) {
        CODFDoc document;
        test::Build(document, test::kTextKind, u"text");
        EXPECT_EQ(*document.GetRootPart()->GetLocalPath(), 0);
        EXPECT_EQ(document.Save(file(name)), 1) << name;
        EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok)
            << name << ": " << ToText(document.GetDiagnostics().status());
        EXPECT_TRUE(std::filesystem::exists(file(name))) << name;
        const std::filesystem::path root = ToUtf8(document.GetRootPart()->GetLocalPath());
        EXPECT_EQ(root.parent_path(), std::filesystem::temp_directory_path());
        EXPECT_EQ(root.filename().string().starts_with("a b.c"), name == "a b.c.odt") << "named after it";
        EXPECT_FALSE(std::filesystem::exists(root)) << "gone with the package";
    }
}

TEST_F(Lifecycle, ASecondSaveWritesNoPackage) {
    CODFDoc document;
    ASSERT_EQ(document.Open(textFile({})), 1);
    EXPECT_EQ(document.Save(file("first.odt")), 1);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);
    EXPECT_EQ(temporaryEntries(), std::vector<std::string>()) << "the folder goes with the package";
    EXPECT_EQ(TextOf(document), std::vector<std::string>{"top"}) << "the trees stay";
    EXPECT_EQ(document.Save(file("second.odt")), 1);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::NothingToSave);
    EXPECT_FALSE(std::filesystem::exists(file("second.odt")));
    EXPECT_EQ(temporaryEntries(), std::vector<std::string>());
}

TEST_F(Lifecycle, OneObjectServesManyDocuments) {
    CODFDoc document;
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(document.Open(textFile({{"styles.xml", "<x/>"}})), 1);
        EXPECT_EQ(temporaryEntries().size(), 1U);
        ASSERT_EQ(document.Open(textFile({})), 1);
        EXPECT_EQ(document.GetStylesClass(), nullptr);
        ASSERT_EQ(document.CreateMainPart(sd::SDDocType::DocTypeOdfSpreadsheet), 1);
        EXPECT_NE(document.GetStylesClass(), nullptr);
        EXPECT_EQ(document.Open(file("nowhere.odt")), 0);
        EXPECT_EQ(document.GetStylesClass(), nullptr);
        EXPECT_EQ(document.GetRootPart(), nullptr);
    }
}

TEST_F(Lifecycle, AnXmlFileOfAnotherKindIsKeptUntilItsTreeIsFilled) {
    // A main name doesn't make a file what the class stands for.
    const std::string other = "<?xml version='1.0'?>\n<other a='1'>text</other>\n";
    CODFDoc document;
    ASSERT_EQ(document.Open(textFile(
                  {{"settings.xml", other}, {"meta.xml", other}, {"Object 1/content.xml", "no xml at all"}})),
              1);
    EXPECT_EQ(document.GetSettingsClass()->HasChildList(), false);
    document.GetMetaClass()->SetOfficeMeta()->SetDcTitle()->Setval(u"Title");
    ASSERT_EQ(document.Save(file("out.odt")), 1);
    const Members members = test::ReadPackage(file("out.odt"));
    EXPECT_EQ(members.at("settings.xml"), other);
    EXPECT_EQ(members.at("Object 1/content.xml"), "no xml at all");
    EXPECT_NE(members.at("meta.xml").find("<dc:title>Title</dc:title>"), std::string::npos);
}

namespace {

class NewDocument : public test::InWorkspace<testing::TestWithParam<test::Kind>> {};

} // namespace

TEST_P(NewDocument, HasFourNamedParts) {
    CODFDoc document;
    ASSERT_EQ(document.CreateMainPart(GetParam().type), 1);
    EXPECT_EQ(document.GetDocType(), GetParam().type);
    std::vector<ISDPart*> parts;
    ASSERT_EQ(document.GetRootPart()->GetChildParts(&parts), 4);
    const std::pair<CSDNamedObject*, std::string> kParts[] = {{document.GetContentClass(), "content"},
                                                              {document.GetStylesClass(), "styles"},
                                                              {document.GetSettingsClass(), "settings"},
                                                              {document.GetMetaClass(), "meta"}};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [root, name] = kParts[i];
        EXPECT_EQ(ToUtf8(root->GetElemName()), "office:document-" + name);
        EXPECT_EQ(parts[i]->GetRootClass(), root);
        EXPECT_EQ(ToUtf8(parts[i]->GetPackagePath()), name + ".xml");
        EXPECT_EQ(ToUtf8(parts[i]->GetPartname()), name + ".xml");
        EXPECT_EQ(ToUtf8(parts[i]->GetContentType()), "text/xml");
        EXPECT_EQ(ToUtf8(parts[i]->GetRelationtype()), GetParam().mediaType);
    }
    EXPECT_EQ(document.GetMainPart(), parts[0]);
}

TEST_P(NewDocument, IsReadAsItWasBuilt) {
    const std::string path = file(std::string("Bericht ä 漢.") + GetParam().name);
    CODFDoc document;
    CTextP* const paragraph = test::Build(document, GetParam(), u"<a> & \"b\" 漢\U0001F600 ");
    ASSERT_NE(paragraph, nullptr);
    paragraph->SetTextSpan()->SetText(u"span");
    paragraph->SetTextS()->SetTextC(3);
    paragraph->SetText(u"\ttail");
    document.GetMetaClass()->SetOfficeMeta()->SetDcTitle()->Setval(u"Title");
    ASSERT_EQ(document.Save(path), 1);
    ASSERT_EQ(document.GetDiagnostics().status(), Status::Ok);

    CODFDoc again;
    ASSERT_EQ(again.Open(path), 1);
    EXPECT_EQ(again.GetDocType(), GetParam().type);
    EXPECT_EQ(test::Difference(document, again), "");
    EXPECT_EQ(TextOf(again), std::vector<std::string>{"<a> & \"b\" 漢\U0001F600 span\ttail"});
    EXPECT_TRUE(again.GetDiagnostics().notes().empty());
    EXPECT_NE(test::ReadPackage(path)
                  .at("META-INF/manifest.xml")
                  .find("manifest:media-type=\"" + std::string(GetParam().mediaType) +
                        "\" manifest:full-path=\"/\""),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Kinds, NewDocument, testing::ValuesIn(test::kKinds),
                         [](const auto& given) { return std::string(given.param.name); });

TEST_F(Lifecycle, OnlyOdfTypesCanBeMade) {
    CODFDoc document;
    for (const int type : {0, 0x1000020, 0x1000030, 0x2000051, 0x20000A0, -1}) {
        EXPECT_EQ(document.CreateMainPart(static_cast<sd::SDDocType::DocumentType>(type)), 0) << type;
        EXPECT_EQ(document.GetContentClass(), nullptr);
    }
    EXPECT_EQ(document.CreateMainPart(sd::SDDocType::DocTypeOdfFormula), 1);
    EXPECT_EQ(document.Save(""), 0);
    EXPECT_EQ(document.Save(static_cast<const unsigned short*>(nullptr)), 0);
    EXPECT_EQ(document.Save(file("now.odf")), 1) << "a save without a path changes nothing";
}
