// Many members on one stretch of the archive: what they fill is bounded by the archive.

#include "support/files.h"
#include "zip/raw_archive.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace {

/// An archive of one member of zeros with `count` entries that lead to it, under names of their own.
std::string ManyEntriesOnOne(const test::TemporaryFolder& folder, std::size_t count) {
    std::string zeros(std::size_t{4} << 20, '\0');
    CSDZip zip;
    EXPECT_NE(zip.CreareZipFile(folder / "one.zip"), 0);
    EXPECT_NE(zip.Compress(CTulStringW("m00000"), zeros.data(), static_cast<int>(zeros.size())), 0);
    EXPECT_NE(zip.CloseFile(), 0);
    const std::string one = test::ReadFile(folder / "one.zip");
    const std::size_t start = one.find("PK\1\2");
    const std::size_t end = one.find("PK\5\6");
    std::string directory;
    for (std::size_t number = 0; number < count; ++number) {
        std::string entry = one.substr(start, end - start);
        const std::string name = std::to_string(100'000 + number).substr(1);
        directory += entry.replace(entry.find("m00000") + 1, name.size(), name);
    }
    std::string last = one.substr(end, 8);
    test::AppendNumber(last, count, 2);
    test::AppendNumber(last, count, 2);
    test::AppendNumber(last, directory.size(), 4);
    return one.substr(0, start) + directory + last + one.substr(end + 16);
}

} // namespace

TEST(MembersThatShareBytes, FillNoMoreThanTheArchiveCanBecome) {
    for (const std::size_t count : {std::size_t{1}, std::size_t{600}}) {
        const test::TemporaryFolder folder;
        const std::string archive = ManyEntriesOnOne(folder, count);
        test::WriteFile(folder / "many.zip", archive);
        ODF::Diagnostics diagnostics;
        CSDUnZip unzip;
        unzip.SetDiagnostics(&diagnostics);
        const bool isExtracted = unzip.OpenAndExtract(folder / "many.zip", folder / "out") != 0;
        EXPECT_EQ(isExtracted, count == 1);
        EXPECT_EQ(diagnostics.status() == ODF::Status::LimitExceeded, count != 1);
        std::uintmax_t total = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "out"))
            if (entry.is_regular_file()) total += entry.file_size();
        EXPECT_GE(total, std::uintmax_t{4} << 20);
        EXPECT_LE(total, std::uintmax_t{archive.size()} * 1100);
    }
}
