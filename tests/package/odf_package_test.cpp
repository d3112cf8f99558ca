#include "package/fixture.h"

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
    std::unique_ptr<IPackage> openWith(const std::vector<std::string>& members, const std::string& manifest) {
        Members all{{"META-INF/manifest.xml", manifest}};
        for (const std::string& name : members)
            all[name] = "data of " + name;
        WritePackage(text("a.odt"), all);
        return opened(text("a.odt"));
    }
};

} // namespace

TEST_F(OdfPackage, OpensIntoPartsInAPrivateFolder) {
    const auto package = opened(makeText());
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
    EXPECT_EQ(root->Count(nullptr), 4);
    EXPECT_EQ(package->GetFolderEntries().size(), 2U);
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::MemberMissing, "missing.xml"));

    // The folder is private, and goes with the package whatever was put into it.
    const fs::path folder = Utf8(package->GetTempFolder());
    EXPECT_EQ(Utf8(root->GetLocalPath()), folder.string());
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
    EXPECT_EQ(package->GetLockedFiles().size(), 7U);
    WriteFile(folder / ".hidden/file", "x");
    fs::permissions(folder / "styles.xml", fs::perms::owner_read);
}

TEST_F(OdfPackage, ExtensionsDecideWithoutRegardToCase) {
    for (const auto& [name, type] :
         {std::pair{"a.ODT", SDDocType::DocTypeOdfText}, std::pair{"a.odf", SDDocType::DocTypeOdfFormula},
          std::pair{"a.ott", SDDocType::DocTypeUnknown}, std::pair{"a.zip", SDDocType::DocTypeUnknown},
          std::pair{"a", SDDocType::DocTypeUnknown}}) {
        SCOPED_TRACE(name);
        makeText(name);
        const auto package = newPackage();
        EXPECT_EQ(package->Open(text(name)) != 0, type != SDDocType::DocTypeUnknown);
        EXPECT_EQ(package->GetDocType(), type);
        EXPECT_EQ(diagnostics_.status() == Status::UnknownType, type == SDDocType::DocTypeUnknown);
    }
}

TEST_F(OdfPackage, TakesPartsFromTheManifestAlone) {
    const std::string chart = "application/vnd.oasis.opendocument.chart";
    struct Row {
        const char* name;
        std::string entries;
        std::vector<std::string> expected; ///< parts with their relation types, then folders
        std::string noted;                 ///< a member, or empty for no note
    };
    const Row rows[] = {
        {"what is no part",
         Entry("text/xml", "") + "<manifest:file-entry manifest:media-type=\"text/xml\"/>" +
             Entry("application/vnd.other", "sub/") + Entry("", "sub") + Entry(kTextType, "a.xml") +
             "<file-entry xmlns=\"urn:other\" full-path=\"sub/b.xml\"/>",
         {"[a.xml]"},
         "sub"},
        {"folders with and without separators",
         Entry(chart, "/Object 1/") + Entry(chart, "Object 2") + Entry("text/xml", "Object 1/content.xml") +
             Entry("text/xml", "Object 2/content.xml"),
         {"Object 1\\content.xml " + chart, "Object 2\\content.xml ", "[Object 2]", "[\\Object 1\\]"},
         {}},
        {"names that differ in case alone",
         Entry("text/xml", "a.xml") + Entry("text/xml", "A.xml"),
         {"a.xml "},
         "A.xml"},
        {"entries before a fault",
         Entry("text/xml", "a.xml") + "<broken" + Entry("text/xml", "sub/b.xml"),
         {"a.xml "},
         "META-INF/manifest.xml"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto package =
            openWith({"a.xml", "A.xml", "sub/b.xml", "Object 1/content.xml", "Object 2/content.xml"},
                     Manifest(row.entries));
        std::vector<std::string> found;
        for (const auto& [path, part] : *package->GetParts())
            found.push_back(path.utf8() + ' ' + Utf8(part->GetRelationType()));
        for (const auto& [path, type] : package->GetFolderEntries())
            found.push_back('[' + path.utf8() + ']');
        EXPECT_EQ(found, row.expected);
        EXPECT_EQ(static_cast<std::size_t>(package->GetRootPart()->Count(nullptr)),
                  package->GetParts()->size());
        EXPECT_EQ(diagnostics_.notes().empty(), row.noted.empty());
        for (const ODF::Note& note : diagnostics_.notes())
            EXPECT_EQ(note.member, row.noted);
    }
}

TEST_F(OdfPackage, PassesOverHostileEntries) {
    WriteFile(temporary() / "secret.txt", "of someone else");
    const std::vector<std::string> names{"../secret.txt",
                                         "..\\secret.txt",
                                         "a/../../secret.txt",
                                         "/etc/passwd",
                                         "\\etc\\passwd",
                                         "/content.xml",
                                         "C:\\content.xml",
                                         std::string(300, 'n'),
                                         std::string(70'000, 'n'),
                                         "content.xml/below",
                                         "."};
    std::string entries;
    for (const std::string& name : names)
        entries += Entry("text/xml", name);
    const auto package = openWith({"content.xml"}, Manifest(entries + Entry("text/xml", "content.xml")));
    EXPECT_EQ(PartPaths(*package), std::vector<std::string>{"content.xml"});
    EXPECT_GE(diagnostics_.notes().size(), names.size());
    EXPECT_EQ(Names(saved(*package, "out.odt")),
              (std::vector<std::string>{"META-INF/manifest.xml", "content.xml"}));
    fs::remove(temporary() / "secret.txt");
}

TEST_F(OdfPackage, SavesItsPartsInNameOrder) {
    const auto package = opened(makeText());
    int turns = 0;
    package->SetHostTurn([&] { ++turns; });
    ASSERT_NE(package->Save(text("b.odt")), 0);
    EXPECT_EQ(turns, 5) << "one for each member";
    EXPECT_EQ(diagnostics_.status(), Status::Ok);
    EXPECT_EQ(NamesInOrder(text("b.odt")),
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

TEST_F(OdfPackage, SavesAddedPartsOnceUnderEscapedNames) {
    const auto package = opened(makeText());
    WriteFile(at("new.png"), "new picture");
    // The second is one with a part that was opened, whose path has `\`.
    for (const char* const path : {"Pictures/\"<&>.png", "Pictures/a.png"}) {
        IPart* const part = package->CreatePart();
        part->SetPackagePath(path);
        part->SetContentType("a&b");
        part->SetLocalPath(text("new.png"));
        package->AddPart(part);
    }
    Members written = saved(*package, "b.odt");
    EXPECT_EQ(written["Pictures/a.png"], "new picture");
    const std::string& manifest = written["META-INF/manifest.xml"];
    EXPECT_EQ(manifest.find("Pictures/a.png"), manifest.rfind("Pictures/a.png"));
    EXPECT_NE(manifest.find(Entry("a&amp;b", "Pictures/&quot;&lt;&amp;>.png")), std::string::npos);
    const auto again = opened(text("b.odt"));
    EXPECT_NE(again->GetPart("Pictures\\\"<&>.png"), nullptr);
}

TEST_F(OdfPackage, SavesOverItsOwnFile) {
    const auto package = opened(makeText());
    WriteFile(Utf8(package->GetPart("content.xml")->GetLocalPath()), "<changed/>");
    const Members written = saved(*package, "a.odt");
    EXPECT_EQ(written.at("content.xml"), "<changed/>");
    EXPECT_EQ(saved(*package, "c.odt"), written);
}

TEST_F(OdfPackage, SaveThatFailsLeavesTheTarget) {
    void (*const faults[])(const fs::path&) = {
        [](const fs::path& folder) { fs::remove(folder / "styles.xml"); },
        [](const fs::path& folder) {
            fs::remove_all(folder / "META-INF");
            WriteFile(folder / "META-INF", "a file in the way of the index");
        }};
    WriteFile(at("target/b.odt"), "precious");
    for (const auto fault : faults) {
        const auto package = opened(makeText());
        fault(Utf8(package->GetTempFolder()));
        EXPECT_EQ(package->Save(text("target/b.odt")), 0);
        EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
        EXPECT_EQ(HasNote(diagnostics_, NoteCode::WriteFailed, "styles.xml"), fault == faults[0]);
        EXPECT_EQ(ReadFile(at("target/b.odt")), "precious");
        EXPECT_EQ(test::EntriesOf(at("target")), std::vector<std::string>{"b.odt"});
    }
    const auto folderless = newPackage();
    folderless->SetDocType(SDDocType::DocTypeOdfText);
    EXPECT_EQ(folderless->Save(text("new.odt")), 0);
    EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
    EXPECT_FALSE(fs::exists(at("new.odt")));
}

TEST_F(OdfPackage, DeletesTheFolderOfANewDocumentAndNoneThatHeldSomething) {
    WriteFile(temporary() / "new1234/content.xml", "<content/>");
    WriteFile(at("work/mine.txt"), "mine");
    WriteFile(at("home/diary.txt"), "dear diary");
    auto package = newPackage();
    package->SetDocType(SDDocType::DocTypeOdfText);
    package->GetRootPart()->SetLocalPath((temporary() / "new1234").string());
    ASSERT_NE(package->Save(text("new.odt")), 0);
    ASSERT_NE(package->Save(text("new.odt"), text("work")), 0);
    ASSERT_NE(package->Open(makeText(), text("home")), 0);
    package.reset();
    EXPECT_TRUE(temporaryEntries().empty());
    EXPECT_EQ(ReadFile(at("work/mine.txt")), "mine");
    EXPECT_EQ(ReadFile(at("home/diary.txt")), "dear diary");
}

TEST_F(OdfPackage, OfUnknownTypeSavesTheWriteList) {
    const auto package = newPackage();
    WriteFile(at("x"), "data");
    (*package->GetWriteList())[CTulStringW(u"dir\\x")] = CTulStringW(text("x"));
    EXPECT_EQ(saved(*package, "x.zip"), (Members{{"dir/x", "data"}}));
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
    EXPECT_EQ(saved(*package, "b.odt")["Pictures/a.png"], "picture bytes");
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

TEST_F(OdfPackage, OpensAnotherFileAnew) {
    makeText("a.odt");
    WritePackage(text("b.ods"), {{"META-INF/manifest.xml", Manifest(Entry("text/xml", "only.xml"))},
                                 {"only.xml", "<only/>"}});
    auto package = opened(text("a.odt"));
    IPart* const old = package->GetPart("content.xml");
    ASSERT_NE(package->Open(text("b.ods")), 0);
    EXPECT_EQ(PartPaths(*package), std::vector<std::string>{"only.xml"});
    EXPECT_EQ(package->GetDocType(), SDDocType::DocTypeOdfSpreadsheet);
    EXPECT_EQ(Utf8(old->GetPartName()), "content.xml") << "records handed out stay valid";
    EXPECT_EQ(Names(saved(*package, "c.ods")),
              (std::vector<std::string>{"META-INF/manifest.xml", "only.xml"}));
}
