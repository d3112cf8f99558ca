// Targets that are no plain files: they get the whole archive or are refused.

#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/serial/zip.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <thread>

namespace {

class OddTarget : public test::InWorkspace<> {
protected:
    static int write(const std::string& path, const std::string& bytes) {
        CSDZip zip;
        if (zip.CreareZipFile(path) == 0) return 0;
        zip.CompressStored("member", bytes.data(), static_cast<int>(bytes.size()));
        return zip.CloseFile();
    }
};

} // namespace

TEST_F(OddTarget, APipeGetsAllOrIsRefused) {
    const std::string bytes(300'000, 'x'); // more than a pipe holds
    mkfifo(file("pipe").c_str(), 0600);
    EXPECT_EQ(write(file("pipe"), bytes), 0) << "nobody reads";
    std::string received;
    const int reader = ::open(file("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    fcntl(reader, F_SETFL, 0);
    std::thread reading([&] {
        std::array<char, 4096> piece{};
        // Until a writer has come, the end of the pipe shows again and again.
        for (ssize_t count = 0; (count = ::read(reader, piece.data(), piece.size())) > 0 || received.empty();)
            if (count > 0) received.append(piece.data(), static_cast<std::size_t>(count));
    });
    EXPECT_EQ(write(file("pipe"), bytes), 1);
    reading.join();
    ::close(reader);
    test::WriteFile(file("received.zip"), received);
    EXPECT_EQ(test::ReadPackage(file("received.zip")), (test::Members{{"member", bytes}}));
    EXPECT_TRUE(std::filesystem::is_fifo(file("pipe")));
}

TEST_F(OddTarget, LinksInACircleAreRefused) {
    std::filesystem::create_symlink("b", file("a"));
    std::filesystem::create_symlink("a", file("b"));
    EXPECT_EQ(write(file("a"), "x"), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(file("a")));
    EXPECT_TRUE(std::filesystem::is_symlink(file("b")));
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"a", "b"}));
}
