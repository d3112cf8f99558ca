// Writing archives: what is in them, and what happens to the target when something fails.

#include "support/files.h"
#include "zip/files_below.h"
#include "zip/items.h"
#include "zip/notes.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/platform/memory_mapping.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <random>
#include <utility>
#include <vector>

using test::Add;
using test::Item;
using test::NamesInOrder;
using test::TemporaryFolder;

namespace {

std::string RandomText(std::size_t size, unsigned letters) {
    std::mt19937 generator(7);
    std::string text(size, ' ');
    for (char& unit : text)
        unit = static_cast<char>('a' + static_cast<int>(generator() % letters));
    return text;
}

} // namespace

TEST(ZipWrite, MembersComeBackInTheOrderOfTheCalls) {
    const TemporaryFolder folder;
    const std::string large = RandomText(3'000'000, 20);
    test::WriteFile(folder / "source", large);
    ODF::Diagnostics diagnostics;
    CSDZip zip;
    zip.SetDiagnostics(&diagnostics);
    ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    EXPECT_NE(zip.CompressStored("mimetype", "text", 4), 0);
    EXPECT_NE(zip.Compress("content.xml", folder / "source", 0), 0);
    EXPECT_NE(zip.Compress("stored.bin", folder / "source", 1), 0);
    EXPECT_NE(Add(zip, "META-INF/manifest.xml", "old"), 0);
    EXPECT_NE(Add(zip, "empty", ""), 0);
    EXPECT_NE(Add(zip, "Pictures/\xC3\xA4\xE6\xBC\xA2.png", "picture"), 0);
    EXPECT_NE(Add(zip, "META-INF\\manifest.xml", "<m/>"), 0) << "takes the place of its first";
    std::filesystem::remove(folder / "source"); // nothing needs it once its calls are over
    ASSERT_NE(zip.CloseFile(), 0);
    EXPECT_TRUE(test::HasNote(diagnostics, ODF::NoteCode::MemberDuplicate, "META-INF/manifest.xml"));

    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    EXPECT_EQ(NamesInOrder(unzip),
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

TEST(ZipWrite, AFixedTimeMakesEqualArchives) {
    const test::ScopedVariable time("SOURCE_DATE_EPOCH", "1700000001");
    std::vector<std::string> archives;
    for (const char* const name : {"UTC", "Asia/Tokyo"}) {
        const test::ScopedVariable zone("TZ", name);
        tzset();
        std::string& archive = archives.emplace_back(1000, '\0');
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(archive.data(), 1000), 0);
        ASSERT_NE(Add(zip, "a", "one"), 0);
        ASSERT_NE(zip.CloseFile(), 0) << "finishes a buffer as well";
    }
    tzset();
    EXPECT_EQ(archives[0], archives[1]);
    // 2023-11-14 22:13:20, in the header's bit fields.
    EXPECT_EQ(archives[0].substr(10, 4), std::string("\xAA\xB1\x6E\x57", 4));
}

TEST(ZipWrite, MemoryIsFilledToItsEndOrRefused) {
    const TemporaryFolder folder;
    {
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        ASSERT_NE(Add(zip, "a", "in memory"), 0);
    }
    const int needed = static_cast<int>(std::filesystem::file_size(folder / "a.zip"));
    for (const auto& [isMapping, capacity] :
         {std::pair{false, needed}, std::pair{false, needed - 1}, std::pair{false, 0},
          std::pair{true, needed}, std::pair{true, needed - 1}}) {
        SCOPED_TRACE(capacity);
        std::vector<char> buffer(static_cast<std::size_t>(capacity) + 16, '#');
        ODF::MemoryMapping mapping = ODF::MemoryMapping::create(static_cast<std::size_t>(capacity));
        CSDZip zip;
        ASSERT_NE(isMapping ? zip.LargeMemoryCreareZipFile(mapping.handle(), capacity)
                            : zip.CreareZipFile(buffer.data(), capacity),
                  0);
        EXPECT_NE(Add(zip, "a", "in memory"), 0);
        int size = -1;
        EXPECT_EQ((isMapping ? zip.CloseLargeMemoryFile(size) : zip.CloseMemoryFile(size)) != 0,
                  capacity == needed);
        EXPECT_EQ(std::count(buffer.end() - 16, buffer.end(), '#'), 16) << "written behind the buffer";
        EXPECT_EQ(size, capacity == needed ? needed : 0);
        if (size == 0) continue;
        CSDUnZip unzip;
        const auto length = static_cast<unsigned>(size);
        ASSERT_NE(isMapping ? unzip.LargeMemoryOpenZipFileNonDecompress(mapping.handle(), length)
                            : unzip.OpenZipFileNonDecompress(buffer.data(), length),
                  0);
        EXPECT_EQ(unzip.IsVariableMemoryMap() != 0, isMapping);
        EXPECT_EQ(Item(unzip, "a"), "in memory");
    }
}

TEST(ZipWrite, BadTargetsAreToldAndNothingIsLeft) {
    const TemporaryFolder folder;
    test::WriteFile(folder / "file", "x");
    std::filesystem::create_directory(folder / "sealed");
    std::filesystem::permissions(folder / "sealed", std::filesystem::perms(0500));
    const bool isSuperuser = geteuid() == 0; // who may write everywhere
    for (const std::string& target :
         {folder / (isSuperuser ? "no/b.zip" : "sealed/a.zip"), folder / "no/a.zip", folder / ".",
          folder / "file/a.zip", std::string("/dev/full"), std::string()}) {
        SCOPED_TRACE(target);
        ODF::Diagnostics diagnostics;
        CSDZip zip;
        zip.SetDiagnostics(&diagnostics);
        const bool isCreated = zip.CreareZipFile(target) != 0;
        const bool isFilled = isCreated && Add(zip, "a", RandomText(100'000, 26)) != 0;
        EXPECT_FALSE(isFilled && zip.CloseFile() != 0);
        EXPECT_EQ(diagnostics.status(), ODF::Status::CouldNotWrite);
        EXPECT_EQ(test::FilesBelow(folder.path()), std::vector<std::string>{"file"});
    }
}

TEST(ZipWrite, FailuresLeaveTheOldFile) {
    const TemporaryFolder folder;
    char byte = 'x';
    const std::pair<const char*, std::function<int(CSDZip&)>> failures[] = {
        {"missing source", [&](CSDZip& zip) { return zip.Compress("b", folder / "missing", 0); }},
        {"folder as source", [&](CSDZip& zip) { return zip.Compress("b", folder.path().string(), 0); }},
        {"no name", [](CSDZip& zip) { return Add(zip, "", "x"); }},
        {"name too long", [](CSDZip& zip) { return Add(zip, std::string(70'000, 'n'), "x"); }},
        {"negative count", [&](CSDZip& zip) { return zip.Compress("b", static_cast<void*>(&byte), -1); }},
        {"no source archive", [](CSDZip& zip) { return zip.CopyItem(nullptr, 0, "b"); }},
        {"discarded", [](CSDZip& zip) {
             zip.Discard();
             return 0;
         }}};
    test::WriteFile(folder / "a.zip", "the old file");
    for (const auto& [name, fail] : failures) {
        SCOPED_TRACE(name);
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        ASSERT_NE(Add(zip, "a", "one"), 0);
        EXPECT_EQ(test::ReadFile(folder / "a.zip"), "the old file") << "replaced before its time";
        EXPECT_EQ(fail(zip), 0);
        Add(zip, "c", "later members don't heal it");
        EXPECT_EQ(zip.CloseFile(), 0);
        EXPECT_EQ(test::ReadFile(folder / "a.zip"), "the old file");
        EXPECT_EQ(test::EntriesOf(folder.path()), std::vector<std::string>{"a.zip"});
    }
}

TEST(ZipWrite, AFullDiskLeavesTheOldFile) {
    const TemporaryFolder folder;
    test::WriteFile(folder / "a.zip", "the old file");
    // One is written at the end alone, the other in several steps.
    for (const std::size_t size : {std::size_t{1000}, std::size_t{4'000'000}}) {
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        ASSERT_NE(Add(zip, "a", RandomText(size, 26)), 0);
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit full{100, old.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &full);
        EXPECT_EQ(zip.CloseFile(), 0) << size;
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, SIG_DFL);
        EXPECT_EQ(test::ReadFile(folder / "a.zip"), "the old file") << size;
        EXPECT_EQ(test::EntriesOf(folder.path()), std::vector<std::string>{"a.zip"}) << size;
    }
}

TEST(ZipWrite, RightsAreThoseOfTheOldFileOrTheProcess) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "real");
    test::WriteFile(folder / "real/a.zip", "old");
    std::filesystem::permissions(folder / "real/a.zip", std::filesystem::perms(0604));
    std::filesystem::create_symlink("real/a.zip", folder / "link.zip");
    const mode_t old = umask(027);
    for (const char* const name : {"link.zip", "new.zip"}) {
        CSDZip zip;
        EXPECT_NE(zip.CreareZipFile(folder / name), 0);
        EXPECT_NE(Add(zip, "a", "one"), 0);
        EXPECT_NE(zip.CloseFile(), 0);
    }
    umask(old);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.zip"));
    EXPECT_EQ(test::ReadFile(folder / "real/a.zip").substr(0, 2), "PK");
    EXPECT_EQ(std::filesystem::status(folder / "real/a.zip").permissions(), std::filesystem::perms(0604));
    EXPECT_EQ(std::filesystem::status(folder / "new.zip").permissions(), std::filesystem::perms(0640));
}

TEST(ZipCopy, KeepsTheCompressedBytes) {
    const TemporaryFolder folder;
    const std::string text = RandomText(200'000, 4);
    {
        CSDZip zip; // finishes its archive at the end of its life
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        ASSERT_NE(Add(zip, "text", text), 0);
        ASSERT_NE(zip.CompressStored("stored", text.data(), 1000), 0);
    }
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "a.zip"), 0);
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(folder / "b.zip"), 0);
    EXPECT_NE(zip.CopyItem(unzip.zipHandle, unzip.GetItemIndex("text"), "renamed\\text"), 0);
    EXPECT_NE(zip.CopyItem(unzip.zipHandle, unzip.GetItemIndex("stored"), "stored"), 0);
    unzip.CloseFile(); // the copy doesn't need it any longer
    ASSERT_NE(zip.CloseFile(), 0);
    ASSERT_NE(unzip.OpenZipFileNonDecompress(folder / "b.zip"), 0);
    EXPECT_EQ(Item(unzip, "renamed/text"), text);
    EXPECT_EQ(Item(unzip, "stored"), text.substr(0, 1000));
    // The deflated bytes of the first member stand between its header and the next one's.
    const std::string first = test::ReadFile(folder / "a.zip");
    const std::string deflated = first.substr(34, first.find("PK\3\4", 34) - 34);
    EXPECT_GT(deflated.size(), 1000U);
    EXPECT_NE(test::ReadFile(folder / "b.zip").find(deflated), std::string::npos);
}
