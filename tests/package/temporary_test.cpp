#include "package/fixture.h"

using namespace package_test;
using namespace SDPackage;

namespace {

class Temporary : public PackageTest {};

} // namespace

TEST_F(Temporary, FolderIsMadeForThePackageOrGiven) {
    const auto package = newPackage();
    ASSERT_NE(package->SetTempFolder(nullptr), 0);
    const fs::path folder = Utf8(package->GetTempFolder());
    EXPECT_EQ(folder.parent_path(), temporary());
    EXPECT_TRUE(fs::is_empty(folder));
    ASSERT_NE(package->SetTempFolder(nullptr), 0);
    EXPECT_NE(Utf8(package->GetTempFolder()), folder.string());
    ASSERT_NE(package->SetTempFolder(text("a%20b%22c")), 0);
    EXPECT_EQ(Utf8(package->GetTempFolder()), text("a b\"c"));
    EXPECT_FALSE(fs::exists(at("a b\"c"))) << "made by what is put there";
    ASSERT_NE(package->Open(makeText(), text("x%20y")), 0);
    EXPECT_TRUE(fs::exists(at("x y/content.xml")));
}

TEST_F(Temporary, FilesAreLockedByName) {
    const auto package = newPackage();
    fs::create_directories(at("empty"));
    package->LockFiles(text("empty"));
    package->LockFiles(text("missing"));
    EXPECT_TRUE(package->GetLockedFiles().empty());
    WriteFile(at("tree/a"), "a");
    WriteFile(at("tree/sub/b"), "b");
    package->LockFiles(text("tree"));
    package->LockFiles(text("tree/a"));
    EXPECT_EQ(package->GetLockedFiles().size(), 3U);
    package->UnlockFiles();
    EXPECT_TRUE(package->GetLockedFiles().empty());
}

TEST_F(Temporary, FilesAreMadeAtOnceSoThatNoOneCanTakeTheirNames) {
    const fs::path archive = IPackage::MakeTempArchiveName("/some/where/a.b.odt").utf8();
    const fs::path plain = IPackage::MakeTempArchiveName("/some.where/a").utf8();
    const fs::path work = IPackage::MakeTempWorkName("Data").utf8();
    EXPECT_EQ(archive.extension(), ".odt");
    EXPECT_EQ(plain.extension(), "");
    EXPECT_TRUE(work.filename().string().starts_with("Data_"));
    EXPECT_TRUE(work.filename().string().ends_with("_secureTempFile.tmp"));
    for (const fs::path& made : {archive, plain, work}) {
        EXPECT_EQ(made.parent_path(), temporary());
        EXPECT_TRUE(fs::remove(made));
    }
}
