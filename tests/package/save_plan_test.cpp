#include "package/fixture.h"

#include <odfmodel/platform/memory_mapping.h>

#include <cstring>

using namespace package_test;
using namespace SDPackage;

namespace {

using ODF::NoteCode;
using ODF::Status;

class SavePlan : public PackageTest {
protected:
    /// A package bound to an archive with the members "old.txt" and "keep.bin".
    std::unique_ptr<IPackage> bound() {
        WritePackage(text("source.zip"), {{"[Content_Types].xml", ContentTypes({})},
                                          {"old.txt", "old"},
                                          {"keep.bin", std::string(5000, 'k')}});
        auto package = newPackage();
        EXPECT_NE(package->ReadContentTypes(text("source.zip"), nullptr, nullptr), 0);
        diagnostics_.clear();
        return package;
    }

    /// One member of each kind: copied, from memory, from a file.
    ZipItemVector plan(IPackage& package) {
        WriteFile(at("new.txt"), "from a file");
        file_ = CTulStringW(text("new.txt"));
        ZipItemVector items(3);
        items[0].name = copied_;
        items[0].sourceIndex = package.GetUnZip()->GetItemIndex("keep.bin");
        items[1].name = memory_;
        items[1].data = bytes_.data();
        items[1].size = static_cast<int>(bytes_.size());
        items[2].name = fromFile_;
        items[2].path = file_;
        return items;
    }

    const Members expected_{
        {"copied.bin", std::string(5000, 'k')}, {"dir/file.txt", "from a file"}, {"memory.txt", "bytes"}};

private:
    CTulStringW copied_{u"copied.bin"};
    CTulStringW memory_{u"memory.txt"};
    CTulStringW fromFile_{u"dir\\file.txt"};
    CTulStringW file_;
    std::string bytes_ = "bytes";
};

} // namespace

TEST_F(SavePlan, SaveItemsBindsThePackageToTheTargetUnlessItKeepsTheSource) {
    struct Row {
        const char* target;
        int keepSource;
        const char* source; ///< afterwards
    };
    for (const auto& [target, keepSource, source] :
         {Row{"out.zip", 0, "out.zip"}, Row{"source.zip", 0, "source.zip"},
          Row{"out.zip", 1, "source.zip"}}) {
        const auto package = bound();
        ZipItemVector items = plan(*package);
        ASSERT_NE(package->SaveItems(text(target), &items, keepSource), 0);
        EXPECT_EQ(ReadPackage(text(target)), expected_);
        EXPECT_EQ(Utf8(package->GetSourcePath()), text(source));
        EXPECT_EQ(ReadMembers(*package->GetUnZip()), ReadPackage(text(source)));
        EXPECT_EQ(package->GetLockedFiles().size(), keepSource == 0 ? 1U : 0U);
        EXPECT_EQ(diagnostics_.status(), Status::Ok);
    }
}

TEST_F(SavePlan, FaultsEndWithTheTargetUntouched) {
    struct Row {
        const char* name;
        void (*spoil)(ZipItemSpec& copied, ZipItemSpec& memory, ZipItemSpec& file);
    };
    constexpr Row rows[] = {
        {"no such member", [](auto& copied, auto&, auto&) { copied.sourceIndex = 99; }},
        {"negative index", [](auto& copied, auto&, auto&) { copied.sourceIndex = -2; }},
        {"no name", [](auto&, auto& memory, auto&) { memory.name = nullptr; }},
        {"no memory", [](auto&, auto& memory, auto&) { memory.data = nullptr; }},
        {"negative size", [](auto&, auto& memory, auto&) { memory.size = -7; }},
        {"no path", [](auto&, auto&, auto& file) { file.path = nullptr; }},
        {"missing file", [](auto&, auto&, auto& file) { file.path = ToUnits(u"/none"); }}};
    WriteFile(at("target/out.zip"), "precious");
    const std::string path = text("target/out.zip");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto package = bound();
        ZipItemVector items = plan(*package);
        row.spoil(items[0], items[1], items[2]);
        for (const int keepSource : {0, 1}) {
            EXPECT_EQ(package->SaveItems(path, &items, keepSource), 0);
            EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
        }
        EXPECT_EQ(package->WriteItems(path, &items), 0);
        EXPECT_EQ(ReadFile(path), "precious");
        EXPECT_EQ(test::EntriesOf(at("target")), std::vector<std::string>{"out.zip"});
        EXPECT_TRUE(temporaryEntries().empty());

        std::vector<char> buffer(20'000, 'x');
        int size = static_cast<int>(buffer.size());
        EXPECT_EQ(package->SaveItemsToMemory(buffer.data(), &size, 0, &items), 0);
        EXPECT_EQ(package->WriteItemsToMemory(buffer.data(), &size, 0, &items), 0);
        EXPECT_EQ(size, 20'000);
        EXPECT_GE(package->GetUnZip()->GetItemIndex("old.txt"), 0) << "the package stays on its archive";
    }
}

TEST_F(SavePlan, TargetThatCanNotBeReplaced) {
    const auto package = bound();
    ZipItemVector items = plan(*package);
    fs::create_directories(at("folder.zip/inside"));
    EXPECT_EQ(package->SaveItems(text("folder.zip"), &items, 0), 0);
    EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
    EXPECT_GE(package->GetUnZip()->GetItemIndex("old.txt"), 0);
    EXPECT_EQ(Utf8(package->GetSourcePath()), text("source.zip"));
    diagnostics_.clear();
    EXPECT_NE(package->SaveItems(text("folder.zip"), &items, 1), 0);
    EXPECT_EQ(diagnostics_.status(), Status::CouldNotWrite);
    EXPECT_TRUE(fs::is_directory(at("folder.zip/inside")));
    EXPECT_EQ(package->WriteItems(text("none/out.zip"), &items), 0);
    EXPECT_EQ(package->WriteItems("/dev/full", &items), 0);
}

TEST_F(SavePlan, EmptyPlanMakesAnEmptyArchive) {
    const auto package = bound();
    ZipItemVector items;
    ASSERT_NE(package->WriteItems(text("empty.zip"), &items), 0);
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(text("empty.zip")), 0);
    EXPECT_TRUE(unzip.itemTable->empty());
    int size = 100;
    EXPECT_EQ(package->WriteItems(text("x.zip"), nullptr), 0);
    EXPECT_EQ(package->SaveItems(text("x.zip"), nullptr, 0), 0);
    EXPECT_EQ(package->SaveItemsToMemory(&size, &size, 0, nullptr), 0);
    EXPECT_EQ(package->WriteItemsToMemory(&size, nullptr, 0, &items), 0);
    EXPECT_FALSE(fs::exists(at("x.zip")));
}

TEST_F(SavePlan, MemoryFormsFillTheBuffer) {
    const auto package = bound();
    ZipItemVector items = plan(*package);
    std::vector<char> buffer(20'000);
    int size = static_cast<int>(buffer.size());
    ASSERT_NE(package->WriteItemsToMemory(buffer.data(), &size, 0, &items), 0);
    EXPECT_EQ(size, 20'000);
    ASSERT_NE(package->SaveItemsToMemory(buffer.data(), &size, 0, &items), 0);
    EXPECT_LT(size, 6'000);
    EXPECT_EQ(ReadMembers(*package->GetUnZip()), expected_);

    // What doesn't fit isn't written, and the package stays where it was.
    std::vector<char> tight(100);
    size = static_cast<int>(tight.size());
    ZipItemVector again = plan(*package);
    again[0].sourceIndex = package->GetUnZip()->GetItemIndex("copied.bin");
    EXPECT_EQ(package->SaveItemsToMemory(tight.data(), &size, 0, &again), 0);
    EXPECT_EQ(size, 100);
    EXPECT_EQ(ReadMembers(*package->GetUnZip()), expected_);
}

TEST_F(SavePlan, LargeMemoryFormsFillTheMapping) {
    bound();
    const std::string bytes = ReadFile(at("source.zip"));
    ODF::MemoryMapping source = ODF::MemoryMapping::create(bytes.size());
    std::memcpy(source.map(), bytes.data(), bytes.size());
    const auto package = newPackage();
    ASSERT_NE(package->ReadContentTypesLargeMemory(source.handle(), static_cast<unsigned>(bytes.size()),
                                                   nullptr, nullptr),
              0);
    ZipItemVector items = plan(*package);
    constexpr int kCapacity = 30'000;
    ODF::MemoryMapping target = ODF::MemoryMapping::create(kCapacity);
    for (const bool saves : {false, true}) {
        int size = kCapacity;
        ASSERT_NE(saves ? package->SaveItemsToLargeMemory(target.handle(), &size, 0, &items, 1)
                        : package->WriteItemsToLargeMemory(target.handle(), &size, 0, &items),
                  0);
        EXPECT_LT(size, 6'000);
        CSDUnZip unzip;
        ASSERT_NE(unzip.LargeMemoryOpenZipFileNonDecompress(target.handle(), static_cast<unsigned>(size)), 0);
        EXPECT_EQ(ReadMembers(unzip), expected_);
        EXPECT_GE(package->GetUnZip()->GetItemIndex("old.txt"), 0);
    }
    int size = kCapacity;
    ASSERT_NE(package->SaveItemsToLargeMemory(target.handle(), &size, 0, &items, 0), 0);
    EXPECT_EQ(ReadMembers(*package->GetUnZip()), expected_);
}

TEST_F(SavePlan, RepackLeavesOutWhatIsNotThere) {
    const auto package = bound();
    WriteFile(at("a.txt"), "a");
    FileMap map{{CTulStringW(u"b/none"), CTulStringW(text("none"))},
                {CTulStringW(u"a"), CTulStringW(text("a.txt"))}};
    ASSERT_NE(package->RepackFromFiles(text("out.zip"), &map), 0);
    EXPECT_EQ(ReadPackage(text("out.zip")), (Members{{"a", "a"}}));
    EXPECT_TRUE(HasNote(diagnostics_, NoteCode::MemberMissing, "b/none"));
    EXPECT_EQ(package->GetUnZip()->itemTable, nullptr);
    EXPECT_EQ(package->RepackFromFiles(text("no/folder/out.zip"), &map), 0);
}

TEST_F(SavePlan, PackedSavesStoreMedia) {
    WritePackage(text("a.odt"), {{"META-INF/manifest.xml",
                                  Manifest(Entry("image/png", "a.png") + Entry("text/xml", "a.xml"))},
                                 {"a.png", std::string(9000, 'p')},
                                 {"a.xml", std::string(9000, 'x')}});
    const auto package = opened(text("a.odt"));
    ASSERT_NE(package->Save(text("plain.odt"), 0), 0);
    ASSERT_NE(package->Save(text("packed.odt"), 1), 0);
    EXPECT_LT(fs::file_size(at("plain.odt")), 3000U);
    EXPECT_GT(fs::file_size(at("packed.odt")), 9000U);
    EXPECT_LT(fs::file_size(at("packed.odt")), 12'000U);
    EXPECT_EQ(ReadPackage(text("plain.odt")), ReadPackage(text("packed.odt")));
    for (const char* const name : {"/a/b.jpeg", "b.PNG"})
        EXPECT_TRUE(package->IsMediaFile(name)) << name;
    for (const char* const name : {"b.bmp", "b.xml", "png", "a.png/b", ""})
        EXPECT_FALSE(package->IsMediaFile(name)) << name;
    package->SetDocType(sd::SDDocType::DocTypeOdfPresentation);
    EXPECT_TRUE(package->IsMediaFile("b.bmp"));
    EXPECT_FALSE(package->IsMediaFile("b.xml"));
}

TEST_F(SavePlan, ItemsAreExtractedByIndex) {
    const auto package = bound();
    const int index = package->GetUnZip()->GetItemIndex("old.txt");
    ASSERT_NE(package->ExtractItem(index, text("x.txt")), 0);
    EXPECT_EQ(ReadFile(at("x.txt")), "old");
    std::vector<unsigned char> buffer(10);
    long size = 10;
    ASSERT_NE(package->GetItem(index, buffer.data(), &size), 0);
    EXPECT_EQ(size, 3);
    EXPECT_EQ(package->GetItem(99, buffer.data(), &size), 0);
    package->SetUnZip(nullptr);
    EXPECT_EQ(package->ExtractItem(index, text("y.txt")), 0);
    EXPECT_EQ(package->GetItemSize(index, &size), 0);
}
