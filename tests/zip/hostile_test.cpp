// Archives that lie, damage and attack.

#include "support/files.h"
#include "support/texts.h"
#include "zip/files_below.h"
#include "zip/items.h"
#include "zip/notes.h"
#include "zip/raw_archive.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <utility>
#include <vector>

using test::Item;
using test::RawArchive;
using test::Stored;
using test::TemporaryFolder;

namespace {

/// A reader whose notes are kept, and a folder with an archive and what is extracted from it.
struct Extraction {
    explicit Extraction(const ODF::Limits& limits = {}) {
        unzip.SetLimits(limits);
        unzip.SetDiagnostics(&diagnostics);
    }

    int run(const std::string& archive) {
        test::WriteFile(folder / "a.zip", archive);
        return unzip.OpenAndExtract(folder / "a.zip", folder / "out");
    }
    std::string extracted(const std::string& name) const { return test::ReadFile(folder / ("out/" + name)); }
    bool hasNote(ODF::NoteCode code, std::string_view member) const {
        return test::HasNote(diagnostics, code, member);
    }

    const TemporaryFolder folder;
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
};

/// An archive of two members of `size` equal bytes each.
std::string Uniform(std::size_t size) {
    const TemporaryFolder folder;
    CSDZip zip;
    EXPECT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    for (const char* const name : {"bomb", "second"})
        EXPECT_NE(test::Add(zip, name, std::string(size, 'b')), 0);
    EXPECT_NE(zip.CloseFile(), 0);
    return test::ReadFile(folder / "a.zip");
}

constexpr const char* kHello = "hello hello hello hello";

/// A deflated member whose plain data is `kHello`.
test::RawMember Deflated(const char* name) {
    test::RawMember member = Stored(name, kHello);
    member.data = "\xCB\x48\xCD\xC9\xC9\x57\xC8\x40\x27\x01";
    member.method = 8;
    return member;
}

} // namespace

TEST(ZipExtract, NamesStayBelowTheFolder) {
    const std::string longest(255, 'n');
    const std::vector<std::pair<std::string, std::string>> kept{
        {"Pictures/a.png", "Pictures/a.png"},
        {"Backslashes\\a.png", "Backslashes/a.png"},
        {"./Steps/./a.png", "Steps/a.png"},
        {"Separators//a.png", "Separators/a.png"},
        {"..a/b../...", "..a/b../..."},
        {"ab:c", "ab:c"},
        {"a b", "a b"},
        {"\xC3\xA4/\xE6\xBC\xA2", "\xC3\xA4/\xE6\xBC\xA2"},
        {longest, longest}};
    const std::vector<std::string> skipped{"../up",
                                           "a/../../up-inside",
                                           "a/../back",
                                           "..\\up-by-backslash",
                                           "a/..\\../up-mixed",
                                           "a/..",
                                           "/absolute",
                                           "\\absolute-by-backslash",
                                           "\\\\host\\share\\file",
                                           "C:\\drive",
                                           "c:drive-relative",
                                           "a:b",
                                           ".",
                                           longest + 'n',
                                           test::Repeated("s/", 1000) + 'x',
                                           test::Repeated(std::string(200, 'p') + '/', 30) + 'x'};
    std::vector<test::RawMember> members;
    for (const std::string& name : skipped)
        members.push_back(Stored(name, "hostile"));
    std::vector<std::string> expected{"a.zip"};
    for (const auto& [name, file] : kept) {
        members.push_back(Stored(name, "good"));
        expected.push_back("out/" + file);
    }
    std::sort(expected.begin(), expected.end());
    Extraction it;
    ASSERT_NE(it.run(RawArchive(members)), 0);
    EXPECT_EQ(test::FilesBelow(it.folder.path()), expected);
    for (const auto& [name, file] : kept)
        EXPECT_EQ(it.extracted(file), "good") << name;
    EXPECT_EQ(it.diagnostics.notes().size(), skipped.size());
    for (const ODF::Note& note : it.diagnostics.notes())
        EXPECT_EQ(note.code, ODF::NoteCode::MemberSkipped) << note.member;
}

TEST(ZipExtract, MembersAreFilesOrNothing) {
    struct Row {
        const char* name;
        std::uint32_t unixMode;
        bool isExtracted;
    };
    constexpr Row rows[] = {{"none", 0, true},
                            {"regular", 0100644, true},
                            {"link", 0120777, false},
                            {"pipe", 0010644, false},
                            {"device", 0060644, false}};
    std::vector<test::RawMember> members;
    for (const Row& row : rows) {
        members.push_back(Stored(row.name, "/etc/passwd"));
        members.back().externalAttributes = row.unixMode << 16U;
        members.push_back(Stored(row.name + std::string("/below"), "x"));
    }
    Extraction it;
    ASSERT_NE(it.run(RawArchive(members)), 0);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::filesystem::path file = it.folder / (std::string("out/") + row.name);
        EXPECT_EQ(std::filesystem::is_regular_file(file), row.isExtracted);
        EXPECT_EQ(std::filesystem::exists(file / "below"), !row.isExtracted);
        EXPECT_FALSE(std::filesystem::is_symlink(file));
        EXPECT_TRUE(it.hasNote(ODF::NoteCode::MemberSkipped,
                               row.isExtracted ? row.name + std::string("/below") : row.name));
        EXPECT_EQ(it.unzip.GetItemIndex(row.name) >= 0, row.isExtracted);
    }
}

TEST(ZipExtract, NeverWritesThroughALinkThatIsThere) {
    Extraction it;
    const TemporaryFolder& folder = it.folder;
    std::filesystem::create_directories(folder / "out");
    std::filesystem::create_directories(folder / "elsewhere");
    test::WriteFile(folder / "victim", "untouched");
    std::filesystem::create_symlink(folder / "victim", folder / "out/file");
    std::filesystem::create_hard_link(folder / "victim", folder / "out/hard");
    std::filesystem::create_symlink(folder / "elsewhere", folder / "out/sub");
    ASSERT_NE(it.run(RawArchive({Stored("file", "new"), Stored("hard", "new"), Stored("sub/x", "new")})), 0);
    EXPECT_EQ(test::ReadFile(folder / "victim"), "untouched");
    EXPECT_EQ(it.extracted("file"), "new");
    EXPECT_EQ(it.extracted("hard"), "new");
    EXPECT_TRUE(std::filesystem::is_empty(folder / "elsewhere"));
    EXPECT_TRUE(it.hasNote(ODF::NoteCode::MemberSkipped, "sub/x"));
}

TEST(ZipExtract, TheFolderIsForItsOwnerAlone) {
    Extraction it;
    ASSERT_NE(it.run(RawArchive({Stored("a/b", "x"), Stored("empty/", "")})), 0);
    for (const char* const name : {"out", "out/a", "out/empty"})
        EXPECT_EQ(std::filesystem::status(it.folder / name).permissions(), std::filesystem::perms::owner_all)
            << name;
}

TEST(ZipExtract, OfEqualNamesTheLastCounts) {
    Extraction it;
    ASSERT_NE(it.run(RawArchive({Stored("a", "first"), Stored("b", "x"), Stored("a", "last")})), 0);
    EXPECT_EQ(it.extracted("a"), "last");
    EXPECT_EQ(Item(it.unzip, "a"), "last");
    EXPECT_TRUE(it.hasNote(ODF::NoteCode::MemberDuplicate, "a"));
}

TEST(ZipExtract, LyingMembersAreNotedAndKeptAsFarAsTheyGo) {
    struct Row {
        const char* name;
        void (*lie)(test::RawMember& member);
        const char* file; ///< what comes out
    };
    constexpr Row rows[] = {{"checksum", [](test::RawMember& member) { ++member.crc; }, kHello},
                            {"too small", [](test::RawMember& member) { member.size = 5; }, kHello},
                            {"too large", [](test::RawMember& member) { member.size = 24; }, kHello},
                            {"huge", [](test::RawMember& member) { member.size = 0xFFFFFFF0U; }, kHello},
                            {"cut off", [](test::RawMember& member) { member.data.resize(6); }, "hello"},
                            {"garbage", [](test::RawMember& member) { member.data = "\xFF\xFF\xFF"; }, ""},
                            {"method", [](test::RawMember& member) { member.method = 97; }, ""},
                            {"encrypted", [](test::RawMember& member) { member.flags |= 1U; }, ""}};
    std::vector<test::RawMember> members;
    for (const Row& row : rows) {
        members.push_back(Deflated(row.name));
        row.lie(members.back());
    }
    members.push_back(Stored("good", "y"));
    Extraction it;
    ASSERT_NE(it.run(RawArchive(members)), 0);
    for (const Row& row : rows) {
        EXPECT_EQ(it.extracted(row.name), row.file) << row.name;
        EXPECT_TRUE(it.hasNote(ODF::NoteCode::MemberUnreadable, row.name)) << row.name;
    }
    EXPECT_EQ(it.extracted("good"), "y");
}

TEST(ZipLimits, StopTheExtraction) {
    struct Row {
        const char* name;
        std::uint64_t memberBytes;
        std::uint64_t totalBytes;
        std::uint64_t members;
        bool isOpened; ///< with `OpenForItems`
        bool isExtracted;
    };
    constexpr std::uint64_t kSize = 1'000'000;
    constexpr Row rows[] = {{"just fits", kSize, 2 * kSize, 2, true, true},
                            {"one byte more", kSize - 1, 2 * kSize, 2, true, false},
                            {"nothing", 0, 2 * kSize, 2, true, false},
                            {"total", kSize, 2 * kSize - 1, 2, true, false},
                            {"members", kSize, 2 * kSize, 1, false, false}};
    std::string archive = Uniform(kSize);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ODF::Limits limits;
        limits.memberBytes = row.memberBytes;
        limits.totalBytes = row.totalBytes;
        limits.members = row.members;
        Extraction it(limits);
        EXPECT_EQ(test::Open(it.unzip, archive) != 0, row.isOpened);
        EXPECT_EQ(it.run(archive) != 0, row.isExtracted);
        EXPECT_EQ(it.diagnostics.status() == ODF::Status::LimitExceeded, !row.isExtracted);
        if (row.isOpened) {
            EXPECT_LE(std::filesystem::file_size(it.folder / "out/bomb"), row.memberBytes);
        }
    }
}

TEST(ZipLimits, CountWhatComesOutAndNotWhatIsClaimed) {
    std::string archive = Uniform(1'000'000);
    // Claim 1,000 bytes in the member's own header and in the directory.
    const std::string size("\x40\x42\x0F\x00", 4);
    for (auto at = archive.find(size); at != std::string::npos; at = archive.find(size, at + 4))
        archive.replace(at, 4, std::string("\xE8\x03\x00\x00", 4));
    ODF::Limits limits;
    limits.memberBytes = 100'000;
    Extraction it(limits);
    EXPECT_EQ(it.run(archive), 0);
    EXPECT_EQ(it.diagnostics.status(), ODF::Status::LimitExceeded);
    EXPECT_LE(std::filesystem::file_size(it.folder / "out/bomb"), 100'000U);
}

namespace {

/// A small archive with a member of each kind, to be damaged.
std::string Victim() {
    return RawArchive({Stored("mimetype", "text"), Deflated("deflated.xml"), Stored("dir/", ""),
                       Stored("dir/\xC3\xA4", "picture")});
}

/// Opens and reads everything, whatever it may be. Only the absence of crashes and escapes counts.
void ReadEverything(std::string archive, const TemporaryFolder& folder) {
    CSDUnZip unzip;
    if (test::Open(unzip, archive) == 0) return;
    for (const auto& [name, item] : *unzip.itemTable) {
        Item(unzip, name.utf8());
        char buffer[16];
        int cursor = 0;
        int byteCount = 0;
        for (int piece = 0; piece < 10; ++piece)
            if (unzip.Decompress(name.c_str(), buffer, 16, cursor, byteCount) == 0) break;
    }
    unzip.Decompress(folder / "out");
}

} // namespace

TEST(ZipDamage, EveryCutAndEveryChangedByteIsSurvived) {
    const TemporaryFolder folder;
    const std::string whole = Victim();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        ReadEverything(whole.substr(0, at), folder);
        ReadEverything(whole.substr(at), folder);
        ReadEverything(whole + whole.substr(0, at), folder);
        for (const unsigned bits : {0x01U, 0x80U, 0xFFU}) {
            std::string changed = whole;
            changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ bits);
            ReadEverything(changed, folder);
        }
    }
    EXPECT_EQ(test::EntriesOf(folder.path()), std::vector<std::string>{"out"});
}

TEST(ZipDamage, ADirectoryThatClaimsManyMembersCostsNothing) {
    // One member, and a 64-bit end record behind it that claims a hundred million.
    std::string archive = RawArchive({Stored("a", "x")});
    archive.resize(archive.size() - 22);
    const std::size_t directory = archive.find("PK\1\2");
    const std::size_t end = archive.size();
    const auto append = [&](std::string_view mark,
                            std::initializer_list<std::pair<std::uint64_t, int>> numbers) {
        archive += mark;
        for (const auto& [number, bytes] : numbers)
            test::AppendNumber(archive, number, bytes);
    };
    constexpr std::uint64_t kMany = 100'000'000;
    constexpr std::uint64_t kElsewhere = 0xFFFFFFFFU;
    append("PK\6\6",
           {{44, 8}, {45, 2}, {45, 2}, {0, 8}, {kMany, 8}, {kMany, 8}, {end - directory, 8}, {directory, 8}});
    append("PK\6\7", {{0, 4}, {end, 8}, {1, 4}});
    append("PK\5\6", {{0, 4}, {kElsewhere, 2}, {kElsewhere, 2}, {kElsewhere, 4}, {kElsewhere, 4}, {0, 2}});
    CSDUnZip unzip;
    EXPECT_EQ(test::Open(unzip, archive), 0);
    rusage usage{};
    ASSERT_EQ(getrusage(RUSAGE_SELF, &usage), 0);
    EXPECT_LT(usage.ru_maxrss, 1'000'000L) << "KiB";
}
