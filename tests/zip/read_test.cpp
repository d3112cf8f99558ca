// Reading archives: lookups, single members, reading in pieces, folders.

#include "support/files.h"
#include "zip/items.h"
#include "zip/notes.h"
#include "zip/raw_archive.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <vector>

using test::Item;
using test::TemporaryFolder;

namespace {

std::string Counting(std::size_t size) {
    std::string text;
    for (std::size_t number = 0; text.size() < size; ++number)
        text += std::to_string(number) + ' ';
    text.resize(size);
    return text;
}

/// Reads a member in pieces to its end.
std::string InPieces(CSDUnZip& unzip, std::string_view name, int capacity) {
    const CTulStringW item(name);
    std::string result;
    std::string buffer(static_cast<std::size_t>(capacity), '\0');
    int cursor = 0;
    int byteCount = 0;
    while (unzip.Decompress(item.c_str(), buffer.data(), capacity, cursor, byteCount) != 0) {
        EXPECT_LE(byteCount, capacity);
        result.append(buffer, 0, static_cast<std::size_t>(byteCount));
    }
    return result;
}

std::string SampleArchive() {
    const TemporaryFolder folder;
    const std::string large = Counting(100'000);
    CSDZip zip;
    EXPECT_NE(zip.CreareZipFile(folder / "a.zip"), 0);
    EXPECT_NE(test::Add(zip, "content.xml", large), 0);
    EXPECT_NE(zip.CompressStored("stored", large.data(), 5000), 0);
    EXPECT_NE(test::Add(zip, "empty", ""), 0);
    EXPECT_NE(test::Add(zip, "Pictures/a.png", "picture"), 0);
    EXPECT_NE(zip.CloseFile(), 0);
    return test::ReadFile(folder / "a.zip");
}

} // namespace

TEST(ZipRead, NothingIsOpenBeforeAndAfter) {
    CSDUnZip unzip;
    EXPECT_EQ(unzip.LargeMemoryOpenZipFileNonDecompress(nullptr, 100), 0);
    EXPECT_EQ(unzip.LargeMemoryOpenZipFileNonDecompress(reinterpret_cast<void*>(0x7FFFFFFFL), 100), 0);
    EXPECT_EQ(unzip.OpenZipFileNonDecompress(static_cast<void*>(nullptr), 100U), 0);
    EXPECT_LT(unzip.GetItemIndex("a"), 0);
    long size = 0;
    EXPECT_EQ(unzip.GetItemSize(0, size), 0);
    EXPECT_EQ(unzip.CloseFile(), 0);
    std::string archive = SampleArchive();
    ASSERT_NE(test::Open(unzip, archive), 0);
    EXPECT_NE(unzip.zipHandle, nullptr);
    EXPECT_NE(unzip.CloseFile(), 0);
    EXPECT_EQ(unzip.itemTable, nullptr);
    EXPECT_EQ(unzip.zipHandle, nullptr);
    EXPECT_EQ(InPieces(unzip, "content.xml", 100), "");
}

TEST(ZipRead, TheTableIsInBinaryOrderOfTheNames) {
    std::string archive = test::RawArchive({test::Stored("b", "1"), test::Stored("META-INF/", ""),
                                            test::Stored("B", "22"), test::Stored("META-INF/m.xml", "333")});
    CSDUnZip unzip;
    ASSERT_NE(test::Open(unzip, archive), 0);
    std::vector<std::string> names;
    for (const auto& [name, item] : *unzip.itemTable)
        names.push_back(name.utf8() + ':' + std::to_string(item.index) + ':' + std::to_string(item.size));
    EXPECT_EQ(names, (std::vector<std::string>{"B:2:2", "META-INF/:-1:0", "META-INF/m.xml:3:3", "b:0:1"}));
    EXPECT_LT(unzip.GetItemIndex("META-INF/"), 0);
    EXPECT_LT(unzip.GetItemIndex("meta-inf/m.xml"), 0) << "names are told apart by case";
}

TEST(ZipRead, AMemberThatDoesNotFitTheBufferLeavesItAlone) {
    std::string archive = SampleArchive();
    CSDUnZip unzip;
    ASSERT_NE(test::Open(unzip, archive), 0);
    std::vector<unsigned char> buffer(5000, 1);
    long size = 4999;
    EXPECT_EQ(unzip.GetItem(unzip.GetItemIndex("stored"), buffer.data(), size), 0);
    EXPECT_EQ(size, 5000) << "tells how much room it takes";
    EXPECT_EQ(buffer[4999], 1);
    EXPECT_NE(unzip.GetItem(unzip.GetItemIndex("stored"), buffer.data(), size), 0);
}

TEST(ZipRead, PiecesOfAnySizeGiveTheWholeMember) {
    const TemporaryFolder folder;
    test::WriteFile(folder / "a.zip", SampleArchive());
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenForItems(folder / "a.zip"), 0);
    std::filesystem::remove(folder / "a.zip"); // it may go while it is open
    for (const int capacity : {1, 7, 1024, 4096, 5000, 10240, 200'000}) {
        SCOPED_TRACE(capacity);
        char first = 0; // of a read that is broken off and may not disturb the next
        int cursor = 0;
        int byteCount = 0;
        ASSERT_NE(unzip.Decompress("stored", &first, 1, cursor, byteCount), 0);
        EXPECT_EQ(InPieces(unzip, "content.xml", capacity), Counting(100'000));
        EXPECT_EQ(InPieces(unzip, "stored", capacity), Counting(5000));
        EXPECT_EQ(InPieces(unzip, "empty", capacity), "");
        EXPECT_EQ(InPieces(unzip, "missing", capacity), "");
        EXPECT_EQ(InPieces(unzip, "stored", capacity), Counting(5000)) << "a member may be read again";
    }
}

TEST(ZipRead, PiecesOfManyMembersMayBeInterleaved) {
    struct Read {
        CTulStringW name;
        std::string text;
        int cursor = 0;
        int count = 0;
    };
    std::vector<test::RawMember> members;
    std::vector<Read> reads;
    for (std::size_t number = 0; number < 9; ++number) {
        members.push_back(test::Stored(std::to_string(number), Counting(3000 + number)));
        reads.push_back({CTulStringW(members.back().name), {}});
    }
    std::string archive = test::RawArchive(members);
    CSDUnZip unzip;
    ASSERT_NE(test::Open(unzip, archive), 0);
    char buffer[100];
    for (int round = 0; round < 40; ++round)
        for (Read& read : reads)
            if (unzip.Decompress(read.name.c_str(), buffer, 100, read.cursor, read.count) != 0)
                read.text.append(buffer, static_cast<std::size_t>(read.count));
    for (std::size_t at = 0; at < members.size(); ++at)
        EXPECT_EQ(reads[at].text, members[at].data);
}

TEST(ZipRead, ADamagedMemberGivesWhatCouldBeDecodedInPieces) {
    std::string archive = SampleArchive();
    const auto stored = archive.find(Counting(100), archive.find("stored"));
    ASSERT_NE(stored, std::string::npos);
    archive[stored + 4000] = '#';
    ODF::Diagnostics diagnostics;
    CSDUnZip unzip;
    unzip.SetDiagnostics(&diagnostics);
    ASSERT_NE(test::Open(unzip, archive), 0);
    EXPECT_EQ(InPieces(unzip, "stored", 1024).size(), 5000U);
    EXPECT_TRUE(test::HasNote(diagnostics, ODF::NoteCode::MemberUnreadable, "stored"));
    EXPECT_EQ(Item(unzip, "stored"), "(unreadable)");
}

TEST(ZipRead, AFolderStandsForAnArchive) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "tree/_rels/.hidden");
    test::WriteFile(folder / "tree/_rels/.rels", "<r/>");
    test::WriteFile(folder / "tree/a.bin", Counting(5000));
    test::WriteFile(folder / "outside", "secret");
    std::filesystem::create_symlink(folder / "outside", folder / "tree/link");
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenFolder(folder / "tree"), 0);
    ASSERT_EQ(unzip.itemTable->size(), 2U);
    EXPECT_EQ(unzip.zipHandle, nullptr);
    EXPECT_EQ(Item(unzip, "_rels/.rels"), "<r/>");
    EXPECT_EQ(InPieces(unzip, "a.bin", 999), Counting(5000));
    EXPECT_EQ(InPieces(unzip, "../outside", 999), "");
    EXPECT_NE(unzip.Decompress("a.bin", folder / "copy"), 0);
    EXPECT_EQ(test::ReadFile(folder / "copy"), Counting(5000));
    EXPECT_EQ(unzip.OpenFolder(folder / "missing"), 0);
}
