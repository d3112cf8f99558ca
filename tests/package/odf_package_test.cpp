#include "package/fixture.h"

#include <sys/stat.h>

using namespace package_test;
using namespace SDPackage;

namespace {

using ODF::NoteCode;
using ODF::Status;
using sd::SDDocType;

std::vector<std::string> PartPaths(IPackage& package) {
    std::vector<std::string> paths;
    for (const auto& [path, part] : *package.GetParts())
        paths.push_back(path.utf8());
    return paths;
}

class OdfPackage : public PackageTest {
protected:
    /// Opens a text document that holds these members and this manifest.
    std::unique_ptr<IPackage> openWith(const std::vector<std::string>& members, const std::string& manifest,
                                       int keepCompressed = 0) {
        Members all{{"META-INF/manifest.xml", manifest}};
        for (const std::string& name : members)
            all[name] = "data of " + name;
        WritePackage(text("a.odt"), all);
        auto package = newPackage();
        EXPECT_NE(package->Open(text("a.odt"), keepCompressed), 0);
        return package;
    }
};

} // namespace

TEST_F(OdfPackage, OpensIntoParts) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    EXPECT_EQ(diagnostics_.status(), Status::Ok);
    EXPECT_EQ(package->GetDocType(), SDDocType::DocTypeOdfText);
    EXPECT_EQ(PartPaths(*package), (std::vector<std::string>{"content.xml", "Object 1\\content.xml",
                                                             "Pictures\\a.png", "styles.xml"}));

    const IPart* const content = package->GetPart("content.xml");
    EXPECT_EQ(Utf8(content->GetContentType()), "text/xml");
    EXPECT_EQ(Utf8(content->GetRelationType()), kTextType);
    EXPECT_EQ(Utf8(content->GetPartName()), "content.xml");
    const IPart* const picture = package->GetPart("pictures\\A.PNG");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(Utf8(picture->GetRelationType()), "");
    EXPECT_EQ(Utf8(picture->GetPartName()), "a.png");
    EXPECT_EQ(ReadFile(Utf8(picture->GetLocalPath())), "picture bytes");
    EXPECT_EQ(Utf8(package->GetPart("Object 1\\content.xml")->GetRelationType()),
              "application/vnd.oasis.opendocument.formula");

    IPart* const root = package->GetRootPart();
    EXPECT_EQ(Utf8(root->GetLocalPath()), Utf8(package->GetTempFolder()));
    EXPECT_EQ(root->Count(nullptr), 4);
    EXPECT_EQ(package->GetFolderEntries().size(), 2U);
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::MemberMissing, "missing.xml"));
}

TEST_F(OdfPackage, WorksInAPrivateFolderThatGoesWithIt) {
    auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    const fs::path folder = Utf8(package->GetTempFolder());
    struct stat status {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_EQ(package->GetLockedFiles().size(), 7U);
    WriteFile(folder / ".hidden/file", "x");
    fs::permissions(folder / "styles.xml", fs::perms::owner_read);
}

TEST_F(OdfPackage, ExtensionsDecideWithoutRegardToCase) {
    fs::rename(makeText(), at("B.ODT"));
    EXPECT_NE(newPackage()->Open(text("B.ODT")), 0);
    fs::rename(at("B.ODT"), at("b.ott"));
    EXPECT_EQ(newPackage()->Open(text("b.ott")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::UnknownType);
    fs::rename(at("b.ott"), at("b.odf"));
    const auto package = newPackage();
    EXPECT_NE(package->Open(text("b.odf")), 0);
    EXPECT_EQ(package->GetDocType(), SDDocType::DocTypeOdfFormula);
}

TEST_F(OdfPackage, TellsWhyItDidNotOpen) {
    EXPECT_EQ(newPackage()->Open(text("missing.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::NotReadable);
    WriteFile(at("plain.odt"), "plain text, much longer than an end record would be");
    EXPECT_EQ(newPackage()->Open(text("plain.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::NotAnArchive);
}

TEST_F(OdfPackage, WithoutManifestHasNoParts) {
    WritePackage(text("a.odt"), {{"content.xml", "<content/>"}});
    const auto package = newPackage();
    EXPECT_NE(package->Open(text("a.odt")), 0);
    EXPECT_TRUE(package->GetParts()->empty());
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::ManifestFault, "META-INF/manifest.xml"));
}

TEST_F(OdfPackage, KeepsTheEntriesBeforeAFault) {
    std::string manifest = Manifest(Entry("text/xml", "a.xml") + "<broken" + Entry("text/xml", "b.xml"));
    const auto package = openWith({"a.xml", "b.xml"}, manifest);
    EXPECT_EQ(PartPaths(*package), std::vector<std::string>{"a.xml"});
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::ManifestFault, "META-INF/manifest.xml"));
    const auto fault =
        std::find_if(diagnostics_.notes().begin(), diagnostics_.notes().end(),
                     [](const ODF::Note& note) { return note.code == NoteCode::XmlNotWellFormed; });
    ASSERT_NE(fault, diagnostics_.notes().end());
    EXPECT_EQ(fault->line, 1U);
}

TEST_F(OdfPackage, TakesNothingElseFromTheManifest) {
    const auto package = openWith(
        {"a.xml", "sub/b.xml"},
        Manifest(Entry("text/xml", "") + "<manifest:file-entry manifest:media-type=\"text/xml\"/>" +
                 Entry("application/vnd.other", "sub/") + Entry("", "sub") + Entry(kTextType, "a.xml") +
                 "<file-entry xmlns=\"urn:other\" full-path=\"sub/b.xml\"/>"));
    EXPECT_TRUE(package->GetParts()->empty());
    ASSERT_EQ(package->GetFolderEntries().size(), 1U);
    EXPECT_EQ(package->GetFolderEntries().begin()->first, "a.xml");
}

TEST_F(OdfPackage, FoldersMatchWithAndWithoutLeadingSeparator) {
    const auto package = openWith({"Object 1/content.xml", "Object 2/content.xml"},
                                  Manifest(Entry("application/vnd.oasis.opendocument.chart", "/Object 1/") +
                                           Entry("application/vnd.oasis.opendocument.chart", "Object 2") +
                                           Entry("text/xml", "Object 1/content.xml") +
                                           Entry("text/xml", "Object 2/content.xml")));
    EXPECT_EQ(Utf8(package->GetPart("Object 1\\content.xml")->GetRelationType()),
              "application/vnd.oasis.opendocument.chart");
    EXPECT_EQ(Utf8(package->GetPart("Object 2\\content.xml")->GetRelationType()), "");
}

class HostileEntry : public OdfPackage, public testing::WithParamInterface<std::string> {};

TEST_P(HostileEntry, IsPassedOver) {
    WriteFile(temporary() / "secret.txt", "of someone else");
    const auto package =
        openWith({"content.xml"}, Manifest(Entry("text/xml", GetParam()) + Entry("text/xml", "content.xml")));
    EXPECT_EQ(PartPaths(*package), std::vector<std::string>{"content.xml"});
    EXPECT_FALSE(diagnostics_.notes().empty());
    ASSERT_NE(package->Save(text("out.odt")), 0);
    EXPECT_EQ(Names(ReadPackage(text("out.odt"))),
              (std::vector<std::string>{"META-INF/manifest.xml", "content.xml"}));
    fs::remove(temporary() / "secret.txt");
}

INSTANTIATE_TEST_SUITE_P(Names, HostileEntry,
                         testing::Values("../secret.txt", "..\\secret.txt", "a/../../secret.txt",
                                         "/etc/passwd", "\\etc\\passwd", "/content.xml", "C:\\content.xml",
                                         std::string(300, 'n'), std::string(70'000, 'n'), "content.xml/below",
                                         "."));

TEST_F(OdfPackage, NamesThatDifferInCaseAloneAreNoted) {
    const auto package =
        openWith({"a.xml", "A.xml"}, Manifest(Entry("text/xml", "a.xml") + Entry("text/xml", "A.xml")));
    EXPECT_EQ(package->GetParts()->size(), 1U);
    EXPECT_EQ(package->GetRootPart()->Count(nullptr), 1);
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::MemberDuplicate, "A.xml"));
}

TEST_F(OdfPackage, SavesItsPartsInNameOrder) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::Ok);
    EXPECT_EQ(NamesInOrder(at("b.odt")),
              (std::vector<std::string>{"META-INF/manifest.xml", "Object 1/content.xml", "Pictures/a.png",
                                        "content.xml", "styles.xml"}));
    Members before = ReadPackage(text("a.odt"));
    Members after = ReadPackage(text("b.odt"));
    for (const char* const name : {"Object 1/content.xml", "Pictures/a.png", "content.xml", "styles.xml"})
        EXPECT_EQ(after[name], before[name]) << name;
    EXPECT_EQ(after["META-INF/manifest.xml"],
              Manifest(Entry(kTextType, "/") +
                       Entry("application/vnd.oasis.opendocument.formula", "Object 1/") +
                       Entry("text/xml", "content.xml") + Entry("text/xml", "Object 1/content.xml") +
                       Entry("image/png", "Pictures/a.png") + Entry("text/xml", "styles.xml")));
}

TEST_F(OdfPackage, WritesWellFormedManifestsWhateverTheNames) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    IPart* const part = package->CreatePart();
    part->SetPackagePath("Pictures/\"<&>.png");
    part->SetContentType("a&b");
    part->SetLocalPath(Utf8(package->GetPart("content.xml")->GetLocalPath()));
    package->AddPart(part);
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_NE(ReadPackage(text("b.odt"))["META-INF/manifest.xml"].find(
                  Entry("a&amp;b", "Pictures/&quot;&lt;&amp;>.png")),
              std::string::npos);
    const auto again = newPackage();
    ASSERT_NE(again->Open(text("b.odt")), 0);
    EXPECT_NE(again->GetPart("Pictures\\\"<&>.png"), nullptr);
}

TEST_F(OdfPackage, NamesThatAreOneInTheArchiveAreWrittenOnce) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    IPart* const part = package->CreatePart();
    part->SetPackagePath("Pictures/a.png"); // opened parts have `\`
    WriteFile(at("new.png"), "new picture");
    part->SetLocalPath(text("new.png"));
    package->AddPart(part);
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_EQ(ReadPackage(text("b.odt"))["Pictures/a.png"], "new picture");
    const std::string manifest = ReadPackage(text("b.odt"))["META-INF/manifest.xml"];
    EXPECT_EQ(manifest.find("Pictures/a.png"), manifest.rfind("Pictures/a.png"));
}

TEST_F(OdfPackage, SavesOverItsOwnFile) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    WriteFile(Utf8(package->GetPart("content.xml")->GetLocalPath()), "<changed/>");
    ASSERT_NE(package->Save(text("a.odt")), 0);
    EXPECT_EQ(ReadPackage(text("a.odt"))["content.xml"], "<changed/>");
    ASSERT_NE(package->Save(text("c.odt")), 0);
    EXPECT_EQ(ReadPackage(text("c.odt")), ReadPackage(text("a.odt")));
}

TEST_F(OdfPackage, SaveThatFailsLeavesTheTarget) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    fs::remove(Utf8(package->GetPart("styles.xml")->GetLocalPath()));
    WriteFile(at("target/b.odt"), "precious");
    diagnostics_.clear();
    EXPECT_EQ(package->Save(text("target/b.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::WriteFailed, "styles.xml"));
    EXPECT_EQ(ReadFile(at("target/b.odt")), "precious");
    EXPECT_EQ(std::distance(fs::directory_iterator(at("target")), fs::directory_iterator()), 1);
}

TEST_F(OdfPackage, SaveTellsWhenTheTargetCanNotBeWritten) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    fs::create_directory(at("folder"));
    for (const std::string& path :
         {text("no/such/folder/b.odt"), text("folder"), std::string("/dev/full"), std::string()}) {
        diagnostics_.clear();
        EXPECT_EQ(package->Save(path), 0) << path;
        EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite) << path;
    }
}

TEST_F(OdfPackage, SaveTellsWhenTheIndexCanNotBeWritten) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    const fs::path folder = Utf8(package->GetTempFolder());
    fs::remove_all(folder / "META-INF");
    WriteFile(folder / "META-INF", "a file in the way");
    WriteFile(at("b.odt"), "precious");
    EXPECT_EQ(package->Save(text("b.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
    EXPECT_EQ(ReadFile(at("b.odt")), "precious");
}

TEST_F(OdfPackage, SavesNewParts) {
    // The steps of a document that was made anew.
    const auto package = newPackage();
    const fs::path folder = temporary() / "new1234";
    WriteFile(folder / "content.xml", "<content/>");
    WriteFile(folder / "meta.xml", "<meta/>");
    package->SetDocType(SDDocType::DocTypeOdfText);
    IPart* const root = package->GetRootPart();
    root->SetPackagePath("/");
    root->SetLocalPath(folder.string());
    root->SetRelationships(package->CreateRelationships("/"));
    for (const std::string name : {"content.xml", "meta.xml"}) {
        IPart* const part = package->CreatePart();
        part->SetPackagePath(name);
        part->SetContentType("text/xml");
        part->SetRelationType(kTextType);
        part->SetLocalPath((folder / name).string());
        EXPECT_EQ(root->AddPart(part), part);
        package->AddPart(part);
    }
    ASSERT_NE(package->Save(text("new.odt")), 0);
    EXPECT_EQ(
        ReadPackage(text("new.odt")),
        (Members{{"META-INF/manifest.xml", Manifest(Entry(kTextType, "/") + Entry("text/xml", "content.xml") +
                                                    Entry("text/xml", "meta.xml"))},
                 {"content.xml", "<content/>"},
                 {"meta.xml", "<meta/>"}}));
}

TEST_F(OdfPackage, TakesTheFolderOfANewDocumentAlong) {
    auto package = newPackage();
    WriteFile(temporary() / "new1234/content.xml", "<content/>");
    WriteFile(at("work/mine.txt"), "mine");
    package->SetDocType(SDDocType::DocTypeOdfText);
    package->GetRootPart()->SetLocalPath((temporary() / "new1234").string());
    ASSERT_NE(package->Save(text("new.odt")), 0);
    // A folder of the caller's that holds something is no temporary folder.
    ASSERT_NE(package->Save(text("new.odt"), text("work")), 0);
    package.reset();
    EXPECT_TRUE(temporaryEntries().empty());
    EXPECT_EQ(ReadFile(at("work/mine.txt")), "mine");
}

TEST_F(OdfPackage, WithoutAFolderNothingIsSaved) {
    const auto package = newPackage();
    package->SetDocType(SDDocType::DocTypeOdfText);
    EXPECT_EQ(package->Save(text("new.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
    EXPECT_FALSE(fs::exists(at("new.odt")));
}

TEST_F(OdfPackage, OfUnknownTypeSavesTheWriteList) {
    const auto package = newPackage();
    WriteFile(at("x"), "data");
    (*package->GetWriteList())[CTulStringW(u"dir\\x")] = CTulStringW(text("x"));
    ASSERT_NE(package->Save(text("x.zip")), 0);
    EXPECT_EQ(ReadPackage(text("x.zip")), (Members{{"dir/x", "data"}}));
}

TEST_F(OdfPackage, KeptCompressedListsAndSavesItsParts) {
    makeText();
    const auto package = newPackage();
    ASSERT_NE(package->Open(text("a.odt"), 1), 0);
    EXPECT_EQ(package->GetParts()->size(), 4U);
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::MemberMissing, "missing.xml"));
    EXPECT_TRUE(fs::is_empty(Utf8(package->GetTempFolder())));
    long size = 0;
    int extra = 0;
    ASSERT_NE(package->GetItemSize("Pictures/a.png", &size, &extra), 0);
    EXPECT_EQ(size, 13);
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_EQ(ReadPackage(text("b.odt"))["Pictures/a.png"], "picture bytes");
}

TEST_F(OdfPackage, FolderOutlivesThePackage) {
    auto first = newPackage();
    ASSERT_NE(first->Open(makeText(), text("extracted")), 0);
    fs::copy(at("extracted"), at("kept"), fs::copy_options::recursive);
    first.reset();
    EXPECT_FALSE(fs::exists(at("extracted")));

    auto package = newPackage();
    ASSERT_NE(package->OpenFolder(text("kept"), SDDocType::DocTypeOdfText), 0);
    EXPECT_EQ(package->GetParts()->size(), 4U);
    ASSERT_NE(package->Save(text("b.odt")), 0);
    package.reset();
    EXPECT_TRUE(fs::exists(at("kept/content.xml")));
    EXPECT_EQ(newPackage()->OpenFolder(text("kept")), 0) << "no type without content types";
    EXPECT_EQ(diagnostics_.status(), Status::UnknownType);
    EXPECT_EQ(newPackage()->OpenFolder(text("none"), SDDocType::DocTypeOdfText), 0);
}

TEST_F(OdfPackage, NeverDeletesAFolderThatHeldSomething) {
    WriteFile(at("home/diary.txt"), "dear diary");
    auto package = newPackage();
    ASSERT_NE(package->Open(makeText(), text("home")), 0);
    package.reset();
    EXPECT_EQ(ReadFile(at("home/diary.txt")), "dear diary");
}

TEST_F(OdfPackage, OpensAnotherFileAnew) {
    makeText("a.odt");
    WritePackage(text("b.ods"), {{"META-INF/manifest.xml", Manifest(Entry("text/xml", "only.xml"))},
                                 {"only.xml", "<only/>"}});
    auto package = newPackage();
    ASSERT_NE(package->Open(text("a.odt")), 0);
    IPart* const old = package->GetPart("content.xml");
    ASSERT_NE(package->Open(text("b.ods")), 0);
    EXPECT_EQ(PartPaths(*package), std::vector<std::string>{"only.xml"});
    EXPECT_EQ(package->GetDocType(), SDDocType::DocTypeOdfSpreadsheet);
    EXPECT_EQ(Utf8(old->GetPartName()), "content.xml") << "records handed out stay valid";
    ASSERT_NE(package->Save(text("c.ods")), 0);
    EXPECT_EQ(Names(ReadPackage(text("c.ods"))),
              (std::vector<std::string>{"META-INF/manifest.xml", "only.xml"}));
}

TEST_F(OdfPackage, MemoryIsForOpenPackagingAlone) {
    std::string bytes = ReadFile(makeText());
    const auto package = newPackage();
    EXPECT_EQ(package->OpenMemory(bytes.data(), static_cast<unsigned>(bytes.size()), text("a.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::UnknownType);
}

TEST_F(OdfPackage, TakesTheReaderOverAndUsesItsPassword) {
    makeText();
    const auto package = newPackage();
    auto reader = std::make_unique<CODFUnZip>();
    reader->SetPassword("needless");
    CSDUnZip* const given = reader.get();
    ASSERT_NE(package->Open(text("a.odt"), 0, reader.release()), 0);
    EXPECT_EQ(package->GetUnZip(), given);
    EXPECT_EQ(package->Open(text("missing.odt"), 0, std::make_unique<CODFUnZip>().release()), 0);
}

TEST_F(OdfPackage, ObeysLimits) {
    makeText();
    const auto package = newPackage();
    ODF::Limits limits;
    limits.totalBytes = 20;
    package->SetLimits(limits);
    EXPECT_EQ(package->Open(text("a.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::LimitExceeded);
}

TEST_F(OdfPackage, HoldsThousandsOfPartsWithFewDescriptors) {
    std::vector<std::string> members;
    std::string entries;
    for (int i = 0; i < 5000; ++i) {
        members.push_back("Pictures/p" + std::to_string(i) + ".png");
        entries += Entry("image/png", members.back());
    }
    const auto package = openWith(members, Manifest(entries));
    EXPECT_EQ(package->GetParts()->size(), 5000U);
    EXPECT_EQ(package->GetLockedFiles().size(), 5001U);
    EXPECT_LT(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()), 64);
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_EQ(ReadPackage(text("b.odt")).size(), 5001U);
}

TEST_F(OdfPackage, GivesTheHostItsTurn) {
    const auto package = newPackage();
    ASSERT_NE(package->Open(makeText()), 0);
    int turns = 0;
    package->SetHostTurn([&] { ++turns; });
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_EQ(turns, 5);
}
