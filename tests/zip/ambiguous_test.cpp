// Archives that other programs may read otherwise: one reading, and a note.

#include "support/files.h"
#include "zip/items.h"
#include "zip/notes.h"
#include "zip/raw_archive.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>

#include <gtest/gtest.h>

#include <vector>

using ODF::NoteCode;
using test::RawArchive;
using test::Stored;

namespace {

/// With `from` changed to `to` where it comes first, or last.
std::string Changed(std::string text, std::string_view from, std::string_view to, bool isLast = false) {
    const std::size_t at = isLast ? text.rfind(from) : text.find(from);
    EXPECT_NE(at, std::string::npos);
    return text.replace(at, from.size(), to);
}

/// The archive with the end record of large ones, to which the plain one refers.
std::string Large(const std::string& archive) {
    const std::size_t at = archive.size() - 22;
    std::string large("PK\6\6");
    test::AppendNumber(large, 44, 8);
    large += std::string("\x2D\0\x2D\0", 4);
    test::AppendNumber(large, 0, 8);
    for (const std::size_t field : {8U, 10U}) // the counts
        large += archive.substr(at + field, 2) + std::string(6, '\0');
    for (const std::size_t field : {12U, 16U}) // size and place of the directory
        large += archive.substr(at + field, 4) + std::string(4, '\0');
    large += "PK\6\7";
    test::AppendNumber(large, 0, 4);
    test::AppendNumber(large, at, 8);
    test::AppendNumber(large, 1, 4);
    return archive.substr(0, at) + large + archive.substr(at, 8) + std::string(12, '\xFF') +
           std::string(2, '\0');
}

struct Row {
    const char* what;
    std::string archive;
    std::vector<NoteCode> notes;
    std::string content; ///< of a.txt
};

std::vector<Row> Rows() {
    const std::string one = RawArchive({Stored("a.txt", "first"), Stored("b.txt", "other")});
    const std::string two = RawArchive({Stored("a.txt", "later"), Stored("b.txt", "other")});
    test::RawMember folded = Stored("a.txt", "first");
    folded.flags |= 8U;
    // The first member claims the header and the data of the second too.
    const std::string whole = RawArchive({Stored("a.txt", "first")});
    const std::string inner = whole.substr(0, whole.find("PK\1\2"));
    std::string place;
    std::string inside;
    test::AppendNumber(place, 35 + inner.size(), 4);
    test::AppendNumber(inside, 35, 4);
    const std::string overlap = Changed(RawArchive({Stored("c.txt", inner), Stored("a.txt", "first")}),
                                        place + "a.txt", inside + "a.txt", true);
    return {
        {"sound", one, {}, "first"},
        {"sizes after the data", RawArchive({folded}), {}, "first"},
        {"two archives", one + two, {NoteCode::Ambiguous}, "later"},
        {"two archives of two sizes",
         RawArchive({Stored("a.txt", "first and long")}) + two,
         {NoteCode::Ambiguous},
         "later"},
        {"three archives", two + one + two, {NoteCode::Ambiguous}, "later"},
        {"something before it", "#!/bin/sh\n" + one, {NoteCode::Ambiguous}, "first"},
        {"another name before the data", Changed(one, "a.txt", "A.txt"), {NoteCode::Ambiguous}, "first"},
        {"another checksum before the data",
         Changed(one, one.substr(14, 4), "\1\2\3\4"),
         {NoteCode::Ambiguous},
         "first"},
        {"another method before the data",
         Changed(one, one.substr(8, 6), std::string("\x08\0", 2) + one.substr(10, 4)),
         {NoteCode::Ambiguous},
         "first"},
        {"two that share bytes", overlap, {NoteCode::Ambiguous}, "first"},
        {"large numbers", Large(one), {}, "first"},
        {"large numbers, another name before the data",
         Large(Changed(one, "a.txt", "A.txt")),
         {NoteCode::Ambiguous},
         "first"},
        {"large numbers, two that share bytes", Large(overlap), {NoteCode::Ambiguous}, "first"},
        {"two of one name",
         RawArchive({Stored("a.txt", "first"), Stored("a.txt", "later")}),
         {NoteCode::MemberDuplicate},
         "later"},
        {"a second way to write the name",
         RawArchive({Stored("a.txt", "first"), Stored("./a.txt", "later")}),
         {NoteCode::MemberDuplicate},
         "later"},
        {"a name from the root",
         RawArchive({Stored("a.txt", "first"), Stored("/a.txt", "later")}),
         {NoteCode::MemberSkipped},
         "first"},
    };
}

} // namespace

TEST(AmbiguousArchive, IsReadByItsLastDirectoryAndNoted) {
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.what);
        const test::TemporaryFolder folder;
        test::WriteFile(folder / "a.zip", row.archive);
        ODF::Diagnostics diagnostics;
        CSDUnZip unzip;
        unzip.SetDiagnostics(&diagnostics);
        ASSERT_EQ(unzip.OpenAndExtract(folder / "a.zip", folder / "out"), 1);
        EXPECT_EQ(test::ReadFile(folder / "out/a.txt"), row.content);
        std::vector<NoteCode> codes;
        for (const ODF::Note& note : diagnostics.notes())
            codes.push_back(note.code);
        EXPECT_EQ(codes, row.notes) << (codes.empty() ? "" : diagnostics.notes().front().text);

        diagnostics.clear();
        CSDUnZip fromMemory;
        fromMemory.SetDiagnostics(&diagnostics);
        std::string bytes = row.archive;
        ASSERT_EQ(fromMemory.OpenZipFileNonDecompress(bytes.data(), static_cast<unsigned>(bytes.size())), 1);
        if (row.what != std::string("a second way to write the name")) {
            char text[64] = {};
            long size = sizeof text;
            EXPECT_EQ(fromMemory.GetItem(fromMemory.GetItemIndex("a.txt"),
                                         reinterpret_cast<unsigned char*>(text), size),
                      1);
            EXPECT_EQ(std::string(text, static_cast<std::size_t>(size)), row.content);
        }
    }
}
