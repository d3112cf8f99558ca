// Writing archives: what is in them, and what happens to the target when something fails.

#include "support/files.h"
#include "zip/case_name.h"
#include "zip/files_below.h"
#include "zip/items.h"
#include "zip/notes.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/platform/memory_mapping.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <vector>

using test::Add;
using test::Item;
using test::TemporaryFolder;

namespace {

std::string RandomText(std::size_t size, unsigned letters) {
    std::mt19937 generator(7);
    std::string text(size, ' ');
    for (char& unit : text)
        unit = static_cast<char>('a' + static_cast<int>(generator() % letters));
    return text;
}

/// The names of the members in the order of the archive's directory.
std::vector<std::string> Order(const CSDUnZip& unzip) {
    std::vector<std::string> names(unzip.itemTable->size());
    for (const auto& [name, item] : *unzip.itemTable)
        names[static_cast<std::size_t>(item.index)] = name.utf8();
    return names;
}

} // namespace

TEST(ZipWrite, MembersComeBackInTheOrderOfTheCalls) {
    const TemporaryFolder folder;
    const std::string large = RandomText(3'000'000, 20);
    test::WriteFile(folder / "source", large);
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    EXPECT_NE(zip.CompressStored("mimetype", "text", 4), 0);
    EXPECT_NE(zip.Compress("content.xml", folder / "source", 0), 0);
    EXPECT_NE(zip.Compress("stored.bin", folder / "source", 1), 0);
    EXPECT_NE(Add(zip, "META-INF\\manifest.xml", "<m/>"), 0);
    EXPECT_NE(Add(zip, "empty", ""), 0);
    EXPECT_NE(Add(zip, "Pictures/\xC3\xA4\xE6\xBC\xA2.png", "picture"), 0);
    ASSERT_NE(zip.CloseFile(), 0);

    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    EXPECT_EQ(Order(unzip),
              (std::vector<std::string>{"mimetype", "content.xml", "stored.bin", "META-INF/manifest.xml",
                                        "empty", "Pictures/\xC3\xA4\xE6\xBC\xA2.png"}));
    EXPECT_EQ(Item(unzip, "content.xml"), large);
    EXPECT_EQ(Item(unzip, "stored.bin"), large);
    EXPECT_EQ(Item(unzip, "META-INF/manifest.xml"), "<m/>");
    EXPECT_EQ(Item(unzip, "empty"), "");
    EXPECT_EQ(Item(unzip, "Pictures/\xC3\xA4\xE6\xBC\xA2.png"), "picture");
    // The type of a package can be told from its first bytes.
    EXPECT_EQ(test::ReadFile(folder / "a.zip").substr(30, 12), "mimetypetext");
    const auto size = std::filesystem::file_size(folder / "a.zip");
    EXPECT_GT(size, large.size());
    EXPECT_LT(size, large.size() * 2) << "one of the two copies should have been deflated";
}

TEST(ZipWrite, AnArchiveWithoutMembersIsOne) {
    const TemporaryFolder folder;
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    ASSERT_NE(zip.CloseFile(), 0);
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    EXPECT_TRUE(unzip.itemTable->empty());
    EXPECT_LT(unzip.GetItemIndex("content.xml"), 0);
}

TEST(ZipWrite, TheEndOfScopeFinishesTheArchive) {
    const TemporaryFolder folder;
    {
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        ASSERT_NE(Add(zip, "a", "one"), 0);
    }
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    EXPECT_EQ(Item(unzip, "a"), "one");
}

TEST(ZipWrite, ASecondMemberOfAnyNameTakesThePlaceOfTheFirst) {
    const TemporaryFolder folder;
    ODF::Diagnostics diagnostics;
    CSDZip zip;
    zip.SetDiagnostics(&diagnostics);
    ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    EXPECT_NE(Add(zip, "Pictures/a.png", "old"), 0);
    EXPECT_NE(Add(zip, "b", "b"), 0);
    EXPECT_NE(Add(zip, "Pictures\\a.png", "new"), 0);
    ASSERT_NE(zip.CloseFile(), 0);
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    EXPECT_EQ(Order(unzip), (std::vector<std::string>{"Pictures/a.png", "b"}));
    EXPECT_EQ(Item(unzip, "Pictures/a.png"), "new");
    EXPECT_TRUE(test::HasNote(diagnostics, ODF::NoteCode::MemberDuplicate, "Pictures/a.png"));
}

TEST(ZipWrite, ASourceMayGoOnceItsCallIsOver) {
    const TemporaryFolder folder;
    test::WriteFile(folder / "source", "content");
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    ASSERT_NE(zip.Compress("a", folder / "source", 0), 0);
    std::filesystem::remove(folder / "source");
    ASSERT_NE(zip.CloseFile(), 0);
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    EXPECT_EQ(Item(unzip, "a"), "content");
}

TEST(ZipWrite, AFixedTimeMakesEqualArchives) {
    const TemporaryFolder folder;
    setenv("SOURCE_DATE_EPOCH", "1700000001", 1);
    for (const char* const zone : {"UTC", "Asia/Tokyo"}) {
        setenv("TZ", zone, 1);
        tzset();
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / (zone[0] == 'U' ? "a.zip" : "b.zip")), 0);
        ASSERT_NE(Add(zip, "a", "one"), 0);
    }
    unsetenv("SOURCE_DATE_EPOCH");
    unsetenv("TZ");
    tzset();
    const std::string first = test::ReadFile(folder / "a.zip");
    EXPECT_EQ(first, test::ReadFile(folder / "b.zip"));
    // 2023-11-14 22:13:20, in the header's bit fields.
    EXPECT_EQ(first.substr(10, 4), std::string("\xAA\xB1\x6E\x57", 4));
}

namespace {

/// The three kinds of archive that don't go to a file.
struct MemoryCase {
    const char* name;
    bool isMapping;
    int capacity;
    bool isEnough;
};

class ZipToMemory : public testing::TestWithParam<MemoryCase> {};

} // namespace

TEST_P(ZipToMemory, GivesItsSizeOrFails) {
    const MemoryCase& given = GetParam();
    std::vector<char> buffer(static_cast<std::size_t>(given.capacity) + 16, '#');
    ODF::MemoryMapping mapping = ODF::MemoryMapping::create(static_cast<std::size_t>(given.capacity));
    ASSERT_TRUE(mapping.isOpen());
    CSDZip zip;
    if (given.isMapping) {
        ASSERT_NE(zip.LargeMemoryCreareZipFile(mapping.handle(), given.capacity), 0);
        std::string data = "mapped";
        EXPECT_NE(zip.CompressLargeMemory(ToUnits(u"a"), data.data(), 6), 0);
    } else {
        ASSERT_NE(zip.CreareZipFile(buffer.data(), given.capacity), 0);
        EXPECT_NE(Add(zip, "a", "in memory"), 0);
    }
    int size = -1;
    const int result = given.isMapping ? zip.CloseLargeMemoryFile(size) : zip.CloseMemoryFile(size);
    EXPECT_EQ(result != 0, given.isEnough);
    EXPECT_EQ(std::count(buffer.end() - 16, buffer.end(), '#'), 16) << "written behind the buffer";
    if (!given.isEnough) return;
    ASSERT_GT(size, 22);
    ASSERT_LE(size, given.capacity);
    CSDUnZip unzip;
    if (given.isMapping) {
        ASSERT_NE(unzip.LargeMemoryOpenZipFileNonDecompress(mapping.handle(), static_cast<unsigned>(size)),
                  0);
        EXPECT_NE(unzip.IsVariableMemoryMap(), 0);
        EXPECT_EQ(unzip.GetMemoryMapHandle(), mapping.handle());
        EXPECT_EQ(unzip.GetMemoryMapSize(), static_cast<unsigned>(size));
        EXPECT_EQ(Item(unzip, "a"), "mapped");
    } else {
        ASSERT_NE(unzip.OpenZipFileNonDecompress(buffer.data(), static_cast<unsigned>(size)), 0);
        EXPECT_EQ(unzip.IsVariableMemoryMap(), 0);
        EXPECT_EQ(Item(unzip, "a"), "in memory");
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, ZipToMemory,
                         testing::Values(MemoryCase{"Buffer", false, 4096, true},
                                         MemoryCase{"SmallBuffer", false, 60, false},
                                         MemoryCase{"NoBuffer", false, 0, false},
                                         MemoryCase{"Mapping", true, 4096, true},
                                         MemoryCase{"SmallMapping", true, 60, false}),
                         test::CaseName());

TEST(ZipWrite, CloseFileAlsoFinishesABuffer) {
    std::vector<unsigned char> buffer(4096);
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(buffer.data(), 4096), 0);
    ASSERT_NE(Add(zip, "a", "one"), 0);
    EXPECT_NE(zip.CloseFile(), 0);
    EXPECT_EQ(buffer[0], 'P');
}

namespace {

struct TargetCase {
    const char* name;
    /// Prepares the folder and gives the target.
    std::string (*target)(const TemporaryFolder& folder);
};

class ZipToBadTarget : public testing::TestWithParam<TargetCase> {};

} // namespace

TEST_P(ZipToBadTarget, FailsAndLeavesNothing) {
    const TemporaryFolder folder;
    const std::string target = GetParam().target(folder);
    const auto before = test::FilesBelow(folder.path());
    ODF::Diagnostics diagnostics;
    CSDZip zip;
    zip.SetDiagnostics(&diagnostics);
    const bool isCreated = zip.CreareZipFile(target) != 0;
    const bool isFilled = isCreated && Add(zip, "a", RandomText(100'000, 26)) != 0;
    EXPECT_FALSE(isFilled && zip.CloseFile() != 0);
    EXPECT_EQ(diagnostics.status(), ODF::Status::CouldNotWrite);
    EXPECT_EQ(test::FilesBelow(folder.path()), before);
}

INSTANTIATE_TEST_SUITE_P(
    Targets, ZipToBadTarget,
    testing::Values(TargetCase{"MissingFolder",
                               [](const TemporaryFolder& folder) { return folder / "no/a.zip"; }},
                    TargetCase{"Empty", [](const TemporaryFolder&) { return std::string(); }},
                    TargetCase{"Folder", [](const TemporaryFolder& folder) { return folder / "."; }},
                    TargetCase{"FullDevice", [](const TemporaryFolder&) { return std::string("/dev/full"); }},
                    TargetCase{"FileAsFolder",
                               [](const TemporaryFolder& folder) {
                                   test::WriteFile(folder / "file", "x");
                                   return folder / "file/a.zip";
                               }}),
    test::CaseName());

TEST(ZipWrite, AReadOnlyFolderRefusesTheArchive) {
    if (geteuid() == 0) GTEST_SKIP() << "the superuser may write everywhere";
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    CSDZip zip;
    EXPECT_EQ(zip.CreareZipFile(folder / "a.zip"), 0);
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
}

namespace {

/// A way for an archive over an older one to come to nothing.
struct FailureCase {
    const char* name;
    void (*fail)(CSDZip& zip, const TemporaryFolder& folder);
};

class ZipOverOldFile : public testing::TestWithParam<FailureCase> {};

} // namespace

TEST_P(ZipOverOldFile, LeavesTheOldFile) {
    const TemporaryFolder folder;
    test::WriteFile(folder / "a.zip", "the old file");
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    ASSERT_NE(Add(zip, "a", "one"), 0);
    EXPECT_EQ(test::ReadFile(folder / "a.zip"), "the old file") << "replaced before the archive is complete";
    GetParam().fail(zip, folder);
    EXPECT_EQ(zip.CloseFile(), 0);
    EXPECT_EQ(test::ReadFile(folder / "a.zip").substr(0, 20), "the old file");
    EXPECT_EQ(test::FilesBelow(folder.path()), std::vector<std::string>{"a.zip"});
}

INSTANTIATE_TEST_SUITE_P(
    Failures, ZipOverOldFile,
    testing::Values(
        FailureCase{"MissingSource",
                    [](CSDZip& zip, const TemporaryFolder& folder) {
                        EXPECT_EQ(zip.Compress("b", folder / "missing", 0), 0);
                        EXPECT_NE(Add(zip, "c", "later members don't heal it"), 0);
                    }},
        FailureCase{"FolderAsSource",
                    [](CSDZip& zip, const TemporaryFolder& folder) {
                        EXPECT_EQ(zip.Compress("b", folder.path().string(), 0), 0);
                    }},
        FailureCase{"NoName", [](CSDZip& zip, const TemporaryFolder&) { EXPECT_EQ(Add(zip, "", "x"), 0); }},
        FailureCase{"NameTooLong",
                    [](CSDZip& zip, const TemporaryFolder&) {
                        EXPECT_EQ(Add(zip, std::string(70'000, 'n'), "x"), 0);
                    }},
        FailureCase{"NegativeCount",
                    [](CSDZip& zip, const TemporaryFolder&) {
                        char data = 'x';
                        EXPECT_EQ(zip.Compress("b", static_cast<void*>(&data), -1), 0);
                    }},
        FailureCase{"NoSourceArchive",
                    [](CSDZip& zip, const TemporaryFolder&) { EXPECT_EQ(zip.CopyItem(nullptr, 0, "b"), 0); }},
        FailureCase{"Discard", [](CSDZip& zip, const TemporaryFolder&) { zip.Discard(); }}),
    test::CaseName());

TEST(ZipWrite, AReplacedFileKeepsItsRightsAndItsLink) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "real");
    test::WriteFile(folder / "real/a.zip", "old");
    std::filesystem::permissions(folder / "real/a.zip", std::filesystem::perms(0640));
    std::filesystem::create_symlink("real/a.zip", folder / "link.zip");
    {
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "link.zip"), 0);
        ASSERT_NE(Add(zip, "a", "one"), 0);
        ASSERT_NE(zip.CloseFile(), 0);
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.zip"));
    EXPECT_EQ(test::ReadFile(folder / "real/a.zip").substr(0, 2), "PK");
    EXPECT_EQ(std::filesystem::status(folder / "real/a.zip").permissions(), std::filesystem::perms(0640));
}

TEST(ZipWrite, ANewFileHasTheRightsOfTheProcess) {
    const TemporaryFolder folder;
    const mode_t old = umask(027);
    CSDZip zip;
    EXPECT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    EXPECT_NE(zip.CloseFile(), 0);
    umask(old);
    EXPECT_EQ(std::filesystem::status(folder / "a.zip").permissions(), std::filesystem::perms(0640));
}

TEST(ZipCopy, KeepsTheCompressedBytes) {
    const TemporaryFolder folder;
    const std::string text = RandomText(200'000, 4);
    {
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        ASSERT_NE(Add(zip, "text", text), 0);
        ASSERT_NE(zip.CompressStored("stored", text.data(), 1000), 0);
    }
    {
        CSDUnZip source;
        ASSERT_NE(source.OpenZipFileNonDecompress(folder / "a.zip"), 0);
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "b.zip"), 0);
        EXPECT_NE(zip.CopyItem(source.zipHandle, source.GetItemIndex("text"), "renamed\\text"), 0);
        EXPECT_NE(zip.CopyItem(source.zipHandle, source.GetItemIndex("stored"), "stored"), 0);
        source.CloseFile(); // the copy doesn't need it any longer
        ASSERT_NE(zip.CloseFile(), 0);
    }
    CSDUnZip copy;
    ASSERT_NE(copy.OpenZipFileNonDecompress(folder / "b.zip"), 0);
    EXPECT_EQ(Item(copy, "renamed/text"), text);
    EXPECT_EQ(Item(copy, "stored"), text.substr(0, 1000));
    // The deflated bytes of the first member stand between its header and the next one's.
    const std::string first = test::ReadFile(folder / "a.zip");
    const std::string deflated = first.substr(34, first.find("PK\3\4", 34) - 34);
    EXPECT_GT(deflated.size(), 1000U);
    EXPECT_NE(test::ReadFile(folder / "b.zip").find(deflated), std::string::npos);
}

TEST(ZipCopy, FromAMappingToAMapping) {
    ODF::MemoryMapping mapping = ODF::MemoryMapping::create(4096);
    ODF::MemoryMapping second = ODF::MemoryMapping::create(4096);
    CSDZip zip;
    ASSERT_NE(zip.LargeMemoryCreareZipFile(mapping.handle(), 4096), 0);
    ASSERT_NE(Add(zip, "a", "one"), 0);
    int size = 0;
    ASSERT_NE(zip.CloseLargeMemoryFile(size), 0);
    CSDUnZip source;
    ASSERT_NE(source.LargeMemoryOpenZipFileNonDecompress(mapping.handle(), static_cast<unsigned>(size)), 0);
    ASSERT_NE(zip.LargeMemoryCreareZipFile(second.handle(), 4096), 0);
    EXPECT_NE(zip.CopyItemLargeMemory(source.zipHandle, source.GetMemoryMapHandle(),
                                      source.GetMemoryMapSize(), source.GetItemIndex("a"), ToUnits(u"b")),
              0);
    ASSERT_NE(zip.CloseLargeMemoryFile(size), 0);
    CSDUnZip copy;
    ASSERT_NE(copy.LargeMemoryOpenZipFileNonDecompress(second.handle(), static_cast<unsigned>(size)), 0);
    EXPECT_EQ(Item(copy, "b"), "one");
}
