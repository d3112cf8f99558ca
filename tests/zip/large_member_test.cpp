// Members that are deflated in pieces: other readers find one stream, and the bytes are those that went in.

#include "support/files.h"
#include "support/process.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr std::size_t kPiece = std::size_t{4} << 20;

std::vector<unsigned char> Content(char kind, std::size_t byteCount) {
    std::mt19937 random(1);
    std::vector<unsigned char> bytes(byteCount);
    for (std::size_t i = 0; i < byteCount; ++i)
        bytes[i] = kind == '0'   ? 0
                   : kind == 'r' ? static_cast<unsigned char>(random())
                                 : static_cast<unsigned char>("a table of words "[random() % 17]);
    return bytes;
}

} // namespace

TEST(LargeMember, IsOneStreamWhateverTheThreads) {
    const test::TemporaryFolder folder;
    for (const char kind : {'0', 'r', 'w'})
        for (const std::size_t byteCount : {2 * kPiece - 1, 2 * kPiece + 1, 3 * kPiece + 70'001})
            for (const unsigned threads : {1U, 3U}) {
                SCOPED_TRACE(testing::Message() << kind << ' ' << byteCount << ' ' << threads);
                const std::vector<unsigned char> bytes = Content(kind, byteCount);
                ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
                ASSERT_TRUE(document.WriteMember("large.bin", bytes));
                const std::string path = folder / "large.odt";
                ASSERT_TRUE(document.Save(path, {.threads = threads}));
                ODF::Document again;
                ASSERT_TRUE(again.Open(path));
                std::vector<unsigned char> read;
                ASSERT_TRUE(again.ReadMember("large.bin", read));
                EXPECT_TRUE(read == bytes);
                // A reader that inflates with zlib and counts the checksum.
                EXPECT_EQ(test::Run({"python3", "-m", "zipfile", "-t", path}, std::chrono::seconds(60)).code,
                          0);
                if (kind != 'r') {
                    EXPECT_LT(test::ReadFile(path).size(), byteCount / 2);
                }
            }
}
