// Archives that lie, damage and attack.

#include "support/files.h"
#include "zip/case_name.h"
#include "zip/files_below.h"
#include "zip/items.h"
#include "zip/notes.h"
#include "zip/raw_archive.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <fstream>
#include <random>
#include <vector>

using test::Item;
using test::RawArchive;
using test::Stored;
using test::TemporaryFolder;

namespace {

/// Extracts an archive into "out" below the folder.
int Extract(CSDUnZip& unzip, const TemporaryFolder& folder, const std::string& archive) {
    test::WriteFile(folder / "a.zip", archive);
    return unzip.OpenAndExtract(folder / "a.zip", folder / "out");
}

/// An archive of one member of `size` equal bytes.
std::string Uniform(std::size_t size) {
    std::string archive(size / 100 + 4096, '\0');
    CSDZip zip;
    EXPECT_NE(zip.CreareZipFile(archive.data(), static_cast<int>(archive.size())), 0);
    EXPECT_NE(test::Add(zip, "bomb", std::string(size, 'b')), 0);
    int used = 0;
    EXPECT_NE(zip.CloseMemoryFile(used), 0);
    archive.resize(static_cast<std::size_t>(used));
    return archive;
}

struct NameCase {
    const char* name;
    std::string member;
    std::string file; ///< where it goes; empty: nowhere
};

class ExtractedName : public testing::TestWithParam<NameCase> {};

} // namespace

TEST_P(ExtractedName, StaysBelowTheFolder) {
    const TemporaryFolder folder;
    const NameCase& given = GetParam();
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetDiagnostics(&diagnostics);
    ASSERT_NE(Extract(unzip, folder, RawArchive({Stored(given.member, "x"), Stored("good", "y")})), 0);
    std::vector<std::string> expected{"a.zip", "out/good"};
    if (!given.file.empty()) expected.push_back("out/" + given.file);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(test::FilesBelow(folder.path()), expected);
    EXPECT_EQ(diagnostics.notes().empty(), !given.file.empty());
    for (const ODF::Note& note : diagnostics.notes())
        EXPECT_EQ(note.code, ODF::NoteCode::MemberSkipped);
}

INSTANTIATE_TEST_SUITE_P(
    Names, ExtractedName,
    testing::Values(NameCase{"Plain", "Pictures/a.png", "Pictures/a.png"},
                    NameCase{"Backslashes", "Pictures\\a.png", "Pictures/a.png"},
                    NameCase{"DotSteps", "./Pictures/./a.png", "Pictures/a.png"},
                    NameCase{"DoubleSeparators", "Pictures//a.png", "Pictures/a.png"},
                    NameCase{"DotsInNames", "..a/b../...", "..a/b../..."}, NameCase{"Colon", "a:b", ""},
                    NameCase{"InnerColon", "ab:c", "ab:c"}, NameCase{"Blank", "a b", "a b"},
                    NameCase{"Utf8", "\xC3\xA4/\xE6\xBC\xA2", "\xC3\xA4/\xE6\xBC\xA2"},
                    NameCase{"LongestStep", std::string(255, 'n'), std::string(255, 'n')},
                    NameCase{"Up", "../escape", ""}, NameCase{"UpInside", "a/../../escape", ""},
                    NameCase{"UpAndBack", "a/../b", ""}, NameCase{"UpByBackslash", "..\\escape", ""},
                    NameCase{"UpMixed", "a/..\\../escape", ""}, NameCase{"UpAtTheEnd", "a/..", ""},
                    NameCase{"Absolute", "/escape", ""}, NameCase{"AbsoluteByBackslash", "\\escape", ""},
                    NameCase{"Network", "\\\\host\\share\\escape", ""}, NameCase{"Drive", "C:\\escape", ""},
                    NameCase{"DriveRelative", "c:escape", ""}, NameCase{"OnlyDots", ".", ""},
                    NameCase{"StepTooLong", std::string(256, 'n'), ""},
                    NameCase{"TooManySteps",
                             [] {
                                 std::string name;
                                 for (int step = 0; step < 1000; ++step)
                                     name += "s/";
                                 return name + "x";
                             }(),
                             ""},
                    NameCase{"PathTooLong",
                             [] {
                                 std::string name;
                                 for (int step = 0; step < 30; ++step)
                                     name += std::string(200, 'p') + '/';
                                 return name + "x";
                             }(),
                             ""}),
    test::CaseName());

namespace {

struct AttributeCase {
    const char* name;
    std::uint32_t unixMode;
    bool isExtracted;
};

class ExtractedKind : public testing::TestWithParam<AttributeCase> {};

} // namespace

TEST_P(ExtractedKind, IsAFileOrNothing) {
    const TemporaryFolder folder;
    test::RawMember member = Stored("it", "/etc/passwd");
    member.externalAttributes = GetParam().unixMode << 16U;
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetDiagnostics(&diagnostics);
    ASSERT_NE(Extract(unzip, folder, RawArchive({member, Stored("it/below", "x")})), 0);
    EXPECT_EQ(std::filesystem::is_regular_file(folder / "out/it"), GetParam().isExtracted);
    EXPECT_EQ(std::filesystem::exists(folder / "out/it/below"), !GetParam().isExtracted);
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "out/it"));
    EXPECT_TRUE(
        test::HasNote(diagnostics, ODF::NoteCode::MemberSkipped, GetParam().isExtracted ? "it/below" : "it"));
    EXPECT_EQ(unzip.GetItemIndex("it") >= 0, GetParam().isExtracted);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExtractedKind,
                         testing::Values(AttributeCase{"None", 0, true},
                                         AttributeCase{"Regular", 0100644, true},
                                         AttributeCase{"Link", 0120777, false},
                                         AttributeCase{"Pipe", 0010644, false},
                                         AttributeCase{"Device", 0060644, false}),
                         test::CaseName());

TEST(ZipExtract, NeverWritesThroughALinkThatIsThere) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "out");
    std::filesystem::create_directories(folder / "elsewhere");
    test::WriteFile(folder / "victim", "untouched");
    std::filesystem::create_symlink(folder / "victim", folder / "out/file");
    std::filesystem::create_hard_link(folder / "victim", folder / "out/hard");
    std::filesystem::create_symlink(folder / "elsewhere", folder / "out/sub");
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetDiagnostics(&diagnostics);
    ASSERT_NE(Extract(unzip, folder,
                      RawArchive({Stored("file", "new"), Stored("hard", "new"), Stored("sub/x", "new")})),
              0);
    EXPECT_EQ(test::ReadFile(folder / "victim"), "untouched");
    EXPECT_EQ(test::ReadFile(folder / "out/file"), "new");
    EXPECT_EQ(test::ReadFile(folder / "out/hard"), "new");
    EXPECT_TRUE(std::filesystem::is_empty(folder / "elsewhere"));
    EXPECT_TRUE(test::HasNote(diagnostics, ODF::NoteCode::MemberSkipped, "sub/x"));
}

TEST(ZipExtract, TheFolderIsForItsOwnerAlone) {
    const TemporaryFolder folder;
    CSDUnZip unzip;
    ASSERT_NE(Extract(unzip, folder, RawArchive({Stored("a/b", "x"), Stored("empty/", "")})), 0);
    for (const char* const name : {"out", "out/a", "out/empty"})
        EXPECT_EQ(std::filesystem::status(folder / name).permissions(), std::filesystem::perms::owner_all)
            << name;
}

TEST(ZipExtract, OfEqualNamesTheLastCounts) {
    const TemporaryFolder folder;
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetDiagnostics(&diagnostics);
    ASSERT_NE(
        Extract(unzip, folder, RawArchive({Stored("a", "first"), Stored("b", "x"), Stored("a", "last")})), 0);
    EXPECT_EQ(test::ReadFile(folder / "out/a"), "last");
    EXPECT_EQ(Item(unzip, "a"), "last");
    EXPECT_TRUE(test::HasNote(diagnostics, ODF::NoteCode::MemberDuplicate, "a"));
}

namespace {

struct LieCase {
    const char* name;
    void (*lie)(test::RawMember& member);
    std::string file; ///< what comes out
};

class LyingMember : public testing::TestWithParam<LieCase> {};

/// "hello hello hello hello" without zip's own header.
const std::string kDeflated("\xCB\x48\xCD\xC9\xC9\x57\xC8\x40\x27\x01", 10);

} // namespace

TEST_P(LyingMember, IsNotedAndKeptAsFarAsItGoes) {
    const TemporaryFolder folder;
    test::RawMember member = Stored("it", "hello hello hello hello");
    member.data = kDeflated;
    member.method = 8;
    GetParam().lie(member);
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetDiagnostics(&diagnostics);
    ASSERT_NE(Extract(unzip, folder, RawArchive({member, Stored("good", "y")})), 0);
    EXPECT_EQ(test::ReadFile(folder / "out/it"), GetParam().file);
    EXPECT_EQ(test::ReadFile(folder / "out/good"), "y");
    EXPECT_TRUE(test::HasNote(diagnostics, ODF::NoteCode::MemberUnreadable, "it"));
}

INSTANTIATE_TEST_SUITE_P(
    Lies, LyingMember,
    testing::Values(
        LieCase{"Checksum", [](test::RawMember& member) { ++member.crc; }, "hello hello hello hello"},
        LieCase{"TooSmall", [](test::RawMember& member) { member.size = 5; }, "hello hello hello hello"},
        LieCase{"TooLarge", [](test::RawMember& member) { member.size = 24; }, "hello hello hello hello"},
        LieCase{"Huge", [](test::RawMember& member) { member.size = 0xFFFFFFF0U; },
                "hello hello hello hello"},
        LieCase{"CutOff", [](test::RawMember& member) { member.data.resize(6); }, "hello"},
        LieCase{"Garbage", [](test::RawMember& member) { member.data = "\xFF\xFF\xFF"; }, ""},
        LieCase{"Method", [](test::RawMember& member) { member.method = 97; }, ""},
        LieCase{"Encrypted", [](test::RawMember& member) { member.flags |= 1U; }, ""}),
    test::CaseName());

namespace {

struct LimitCase {
    const char* name;
    void (*set)(ODF::Limits& limits);
    bool isOpened;    ///< with `OpenForItems`
    bool isExtracted; ///< with `OpenAndExtract`
};

class ZipLimits : public testing::TestWithParam<LimitCase> {};

} // namespace

TEST_P(ZipLimits, StopTheExtraction) {
    const TemporaryFolder folder;
    std::string archive = Uniform(1'000'000);
    ODF::Limits limits;
    GetParam().set(limits);
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetLimits(limits);
    unzip.SetDiagnostics(&diagnostics);
    EXPECT_EQ(test::Open(unzip, archive) != 0, GetParam().isOpened);
    EXPECT_EQ(Extract(unzip, folder, archive) != 0, GetParam().isExtracted);
    EXPECT_EQ(diagnostics.status() == ODF::Status::LimitExceeded, !GetParam().isExtracted);
    if (std::filesystem::exists(folder / "out/bomb")) {
        const std::uint64_t most = std::min(limits.memberBytes, limits.totalBytes);
        EXPECT_LE(std::filesystem::file_size(folder / "out/bomb"), most);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Limits, ZipLimits,
    testing::Values(
        LimitCase{"None", [](ODF::Limits&) {}, true, true},
        LimitCase{"JustFits", [](ODF::Limits& limits) { limits.memberBytes = 1'000'000; }, true, true},
        LimitCase{"OneByteMore", [](ODF::Limits& limits) { limits.memberBytes = 999'999; }, true, false},
        LimitCase{"Nothing", [](ODF::Limits& limits) { limits.memberBytes = 0; }, true, false},
        LimitCase{"Total", [](ODF::Limits& limits) { limits.totalBytes = 999'999; }, true, false},
        LimitCase{"Members", [](ODF::Limits& limits) { limits.members = 0; }, false, false}),
    test::CaseName());

TEST(ZipLimits, CountWhatComesOutAndNotWhatIsClaimed) {
    const TemporaryFolder folder;
    std::string archive = Uniform(1'000'000);
    // Claim 1,000 bytes in the member's own header and in the directory.
    const std::string size("\x40\x42\x0F\x00", 4);
    for (auto at = archive.find(size); at != std::string::npos; at = archive.find(size, at + 4))
        archive.replace(at, 4, std::string("\xE8\x03\x00\x00", 4));
    ODF::Limits limits;
    limits.memberBytes = 100'000;
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetLimits(limits);
    unzip.SetDiagnostics(&diagnostics);
    EXPECT_EQ(Extract(unzip, folder, archive), 0);
    EXPECT_EQ(diagnostics.status(), ODF::Status::LimitExceeded);
    EXPECT_LE(std::filesystem::file_size(folder / "out/bomb"), 100'000U);
}

TEST(ZipMany, FiveThousandMembersTakeFewDescriptors) {
    constexpr int count = 5000;
    const TemporaryFolder folder;
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
    rlimit low = old;
    low.rlim_cur = 256;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    int isWritten = 0;
    {
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
        for (int number = 0; number < count; ++number) {
            test::WriteFile(folder / "source", std::to_string(number));
            ASSERT_NE(zip.Compress("d/" + std::to_string(number), folder / "source", 0), 0);
        }
        isWritten = zip.CloseFile();
    }
    CSDUnZip unzip;
    const int isExtracted = unzip.OpenAndExtract(folder / "a.zip", folder / "out");
    CSDUnZip bound;
    const int isBound = bound.OpenFolder(folder / "out");
    setrlimit(RLIMIT_NOFILE, &old);
    ASSERT_NE(isWritten, 0);
    ASSERT_NE(isExtracted, 0);
    ASSERT_NE(isBound, 0);
    EXPECT_EQ(unzip.itemTable->size(), static_cast<std::size_t>(count));
    EXPECT_EQ(bound.itemTable->size(), static_cast<std::size_t>(count));
    EXPECT_EQ(test::ReadFile(folder / "out/d/4999"), "4999");
    EXPECT_EQ(Item(bound, "d/0"), "0");
}

namespace {

/// A small archive with a member of each kind, to be damaged.
std::string Victim() {
    test::RawMember deflated = Stored("deflated.xml", "hello hello hello hello");
    deflated.data = kDeflated;
    deflated.method = 8;
    return RawArchive(
        {Stored("mimetype", "text"), deflated, Stored("dir/", ""), Stored("dir/\xC3\xA4", "picture")});
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

TEST(ZipDamage, EveryCutIsSurvived) {
    const TemporaryFolder folder;
    const std::string whole = Victim();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        ReadEverything(whole.substr(0, length), folder);
        ReadEverything(whole.substr(length), folder);
        ReadEverything(whole + whole.substr(0, length), folder);
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        EXPECT_EQ(entry.path().filename(), "out");
}

TEST(ZipDamage, EveryChangedByteIsSurvived) {
    const TemporaryFolder folder;
    const std::string whole = Victim();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const unsigned bits : {0x01U, 0x80U, 0xFFU}) {
            std::string changed = whole;
            changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ bits);
            ReadEverything(changed, folder);
        }
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        EXPECT_EQ(entry.path().filename(), "out");
}

TEST(ZipDamage, ADirectoryThatClaimsManyMembersCostsNothing) {
    // One member, and a 64-bit end record behind it that claims a hundred million.
    std::string archive = RawArchive({Stored("a", "x")});
    archive.resize(archive.size() - 22);
    const std::size_t directory = archive.find("PK\1\2");
    const std::size_t end = archive.size();
    archive += "PK\6\6";
    test::AppendNumber(archive, 44, 8);
    test::AppendNumber(archive, 45, 2);
    test::AppendNumber(archive, 45, 2);
    test::AppendNumber(archive, 0, 8);
    for (const std::size_t number :
         {std::size_t{100'000'000}, std::size_t{100'000'000}, end - directory, directory})
        test::AppendNumber(archive, number, 8);
    archive += "PK\6\7";
    test::AppendNumber(archive, 0, 4);
    test::AppendNumber(archive, end, 8);
    test::AppendNumber(archive, 1, 4);
    archive += "PK\5\6";
    test::AppendNumber(archive, 0, 4);
    for (const int bytes : {2, 2, 4, 4})
        test::AppendNumber(archive, 0xFFFFFFFFU, bytes);
    test::AppendNumber(archive, 0, 2);
    CSDUnZip unzip;
    EXPECT_EQ(test::Open(unzip, archive), 0);
    rusage usage{};
    ASSERT_EQ(getrusage(RUSAGE_SELF, &usage), 0);
    EXPECT_LT(usage.ru_maxrss, 1'000'000L) << "KiB";
}

TEST(ZipDamage, WhatIsNoArchiveIsRefused) {
    const TemporaryFolder folder;
    test::WriteFile(folder / "text", std::string(100'000, 'x'));
    test::WriteFile(folder / "empty", "");
    for (const char* const name : {"text", "empty", "missing", "."}) {
        ODF::Diagnostics diagnostics;
        CSDUnZip unzip;
        unzip.SetDiagnostics(&diagnostics);
        EXPECT_EQ(unzip.OpenAndExtract(folder / name, folder / "out"), 0);
        EXPECT_EQ(unzip.itemTable, nullptr);
        const bool isThere = name[0] == 't' || name[0] == 'e';
        EXPECT_EQ(diagnostics.status(), isThere ? ODF::Status::NotAnArchive : ODF::Status::NotReadable)
            << name;
        EXPECT_FALSE(std::filesystem::exists(folder / "out"));
    }
}

namespace {

class CorpusArchive : public testing::TestWithParam<NameCase> {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(file())) GTEST_SKIP() << "no sample documents at " << ODFMODEL_CORPUS;
    }
    static std::filesystem::path file() { return std::filesystem::path(ODFMODEL_CORPUS) / GetParam().member; }
};

} // namespace

TEST_P(CorpusArchive, OpensOrIsRefused) {
    const TemporaryFolder folder;
    CSDUnZip unzip;
    const int result = unzip.OpenAndExtract(file().string(), folder / "out");
    EXPECT_EQ(result != 0, !GetParam().file.empty());
    if (result == 0) return;
    EXPECT_TRUE(std::filesystem::exists(folder / ("out/" + GetParam().file)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Damaged, CorpusArchive,
    testing::Values(NameCase{"Traversal", "damaged/path_traversal_members.odt", "content.xml"},
                    NameCase{"Slash", "damaged/member_name_slash.odt", "content.xml"},
                    NameCase{"Duplicates", "damaged/duplicate_members.odt", "content.xml"},
                    NameCase{"TwoArchives", "damaged/two_zips_concatenated.odt", "content.xml"},
                    NameCase{"BadChecksum", "damaged/flipped_byte_bad_crc.odt", "content.xml"},
                    NameCase{"NoArchive", "damaged/not_a_zip.odt", ""},
                    NameCase{"Truncated", "damaged/truncated_archive.odt", ""}),
    test::CaseName());
