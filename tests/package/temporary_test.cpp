#include "package/fixture.h"

using namespace package_test;
using namespace SDPackage;

namespace {

class Temporary : public PackageTest {};

bool IsHex(std::string_view text) {
    return text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

} // namespace

TEST_F(Temporary, FolderIsMadeOnlyForThePackage) {
    auto package = newPackage();
    ASSERT_NE(package->SetTempFolder(nullptr), 0);
    const fs::path folder = Utf8(package->GetTempFolder());
    EXPECT_EQ(folder.parent_path(), temporary());
    EXPECT_TRUE(IsHex(folder.filename().string()));
    EXPECT_TRUE(fs::is_empty(folder));
    ASSERT_NE(package->SetTempFolder(nullptr), 0);
    EXPECT_NE(Utf8(package->GetTempFolder()), folder.string());
}

TEST_F(Temporary, GivenFolderMayBeEscaped) {
    const auto package = newPackage();
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

TEST_F(Temporary, TreesAreDeletedWhole) {
    WriteFile(at("outside"), "stays");
    WriteFile(at("tree/sub/file"), "x");
    WriteFile(at("tree/.hidden/file"), "x");
    fs::permissions(at("tree/sub/file"), fs::perms::owner_read);
    fs::permissions(at("tree/sub"), fs::perms::owner_read | fs::perms::owner_exec);
    fs::create_symlink(at("outside"), at("tree/link"));
    IPackage::DeleteFolderTree(text("tree"));
    EXPECT_FALSE(fs::exists(at("tree")));
    EXPECT_TRUE(fs::exists(at("outside")));
    IPackage::DeleteFolderTree(text("tree"));
}

TEST_F(Temporary, NamesHaveTheirForm) {
    const std::string archive = IPackage::MakeTempArchiveName("/some/where/a.b.odt").utf8();
    const std::string plain = IPackage::MakeTempArchiveName("/some.where/a").utf8();
    const std::string work = IPackage::MakeTempWorkName("Data").utf8();
    for (const std::string& name : {archive, plain, work})
        EXPECT_EQ(fs::path(name).parent_path(), temporary());
    EXPECT_EQ(fs::path(archive).extension(), ".odt");
    EXPECT_TRUE(IsHex(fs::path(archive).stem().string()));
    EXPECT_EQ(fs::path(plain).filename().string().size(), 4U);
    EXPECT_TRUE(IsHex(fs::path(plain).filename().string()));
    const std::string name = fs::path(work).filename().string();
    EXPECT_TRUE(name.starts_with("Data_") && name.ends_with("_secureTempFile.tmp")) << name;
    EXPECT_TRUE(IsHex(name.substr(5, 6)));
    for (const std::string& made : {archive, plain, work})
        EXPECT_TRUE(fs::remove(made)) << "made at once, so that no one else can take it";
}
