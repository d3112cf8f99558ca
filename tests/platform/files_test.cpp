#include "platform/files.h"
#include "platform/temporary.h"
#include "support/workspace.h"
#include "zip/files_below.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <set>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using namespace ODF;
using platform::Path;

namespace {

class Files : public test::InWorkspace<> {
protected:
    static fs::perms permissionsOf(const std::string& name) { return fs::status(name).permissions(); }
};

} // namespace

TEST_F(Files, ATreeGoesWholeAndNothingBesideIt) {
    fs::create_directories(file("tree/.hidden/..odd/deep"));
    fs::create_directories(file("tree/sealed/inner"));
    fs::create_directories(file("outside"));
    test::WriteFile(file("outside/kept"), "kept");
    test::WriteFile(file("tree/.hidden/..odd/deep/f"), "x");
    test::WriteFile(file("tree/sealed/inner/f"), "x");
    fs::permissions(file("tree/sealed/inner/f"), fs::perms::owner_read);
    fs::permissions(file("tree/sealed/inner"), fs::perms::none);
    fs::permissions(file("tree/sealed"), fs::perms::owner_read | fs::perms::owner_exec);
    fs::create_directory_symlink(file("outside"), file("tree/link"));
    fs::create_symlink(file("outside/kept"), file("tree/file-link"));
    fs::create_symlink("nowhere", file("tree/broken"));
    mkfifo(file("tree/pipe").c_str(), 0600);
    EXPECT_TRUE(platform::RemoveTree(file("tree") + "/"));
    EXPECT_FALSE(fs::exists(file("tree")));
    // A link to a tree goes alone.
    fs::create_directory_symlink(file("outside"), file("link"));
    EXPECT_TRUE(platform::RemoveTree(file("link/")));
    EXPECT_FALSE(fs::is_symlink(file("link")));
    EXPECT_EQ(test::ReadFile(file("outside/kept")), "kept");
    EXPECT_TRUE(platform::RemoveTree(file("missing")));
}

TEST_F(Files, AVeryDeepTreeGoes) {
    const int top = open(file("").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(top, 0);
    int folder = dup(top);
    for (int level = 0; level < 1000; ++level) {
        ASSERT_EQ(mkdirat(folder, "deep", 0700), 0);
        const int next = openat(folder, "deep", O_RDONLY | O_DIRECTORY);
        close(folder);
        folder = next;
    }
    close(folder);
    close(top);
    EXPECT_TRUE(platform::RemoveTree(file("deep")));
    EXPECT_FALSE(fs::exists(file("deep")));
}

TEST_F(Files, AWalkIsInOrderAndEntersNoLink) {
    fs::create_directories(file("tree/b/.c"));
    test::WriteFile(file("tree/b/.c/f"), "x");
    test::WriteFile(file("tree/a"), "x");
    test::WriteFile(file("tree/b-file"), "x");
    fs::create_directory_symlink(file("tree"), file("tree/loop"));
    std::vector<std::string> seen;
    EXPECT_TRUE(platform::Walk(file("tree"), [&](const std::string& name, platform::FileKind kind) {
        seen.push_back(name + (kind == platform::FileKind::Folder ? "/"
                               : kind == platform::FileKind::Link ? "@"
                                                                  : ""));
        return true;
    }));
    EXPECT_EQ(seen, (std::vector<std::string>{"a", "b/", "b/.c/", "b/.c/f", "b-file", "loop@"}));
    EXPECT_FALSE(
        platform::Walk(file("missing"), [](const std::string&, platform::FileKind) { return true; }));
    int calls = 0;
    platform::Walk(file("tree"), [&](const std::string&, platform::FileKind) { return ++calls < 2; });
    EXPECT_EQ(calls, 2);
}

TEST_F(Files, FoldersAreMadeWithTheirParents) {
    EXPECT_TRUE(platform::CreateFolders(file("a/b/c"), true));
    EXPECT_TRUE(platform::CreateFolders(file("a/b/c"), true)) << "there already";
    EXPECT_TRUE(platform::CreateFolders(file("a/b/d/"), true));
    for (const char* const name : {"a", "a/b", "a/b/c", "a/b/d"})
        EXPECT_EQ(permissionsOf(file(name)), fs::perms::owner_all) << name;
    test::WriteFile(file("plain"), "x");
    EXPECT_FALSE(platform::CreateFolders(file("plain/a")));
    EXPECT_FALSE(platform::CreateFolders(file("plain")));
    EXPECT_FALSE(platform::CreateFolders(""));
    fs::create_directory_symlink(file("a"), file("link"));
    EXPECT_TRUE(platform::CreateFolders(file("link/through")));
}

TEST_F(Files, OnlyRegularFilesAreRead) {
    mkfifo(file("pipe").c_str(), 0600);
    test::WriteFile(file("ten"), "0123456789");
    EXPECT_FALSE(platform::ReadFile(file("pipe"))) << "must not wait for a writer";
    EXPECT_FALSE(platform::ReadFile(file("")));
    EXPECT_FALSE(platform::ReadFile(file("ten"), 9));
    EXPECT_EQ(platform::ReadFile(file("ten"), 10).value().size(), 10U);
    EXPECT_FALSE(platform::ReadFile(file("ten") + std::string("\0.odt", 5))) << "a 0 byte doesn't end a name";
    const platform::MappedFile mapped{Path(file("ten"))};
    EXPECT_EQ(std::string(mapped.bytes().begin(), mapped.bytes().end()), "0123456789");
}

TEST_F(Files, AFullDeviceIsNoticed) {
    EXPECT_FALSE(platform::WriteFile("/dev/full", std::string_view("x")));
    EXPECT_FALSE(platform::WriteFile(file("missing/x"), std::string_view("x")));
    EXPECT_TRUE(platform::AppendFile(file("log"), "one"));
    EXPECT_TRUE(platform::AppendFile(file("log"), "two"));
    EXPECT_EQ(test::ReadFile(file("log")), "onetwo");
}

TEST_F(Files, AMoveAcrossFileSystemsCopies) {
    const fs::path other = "/dev/shm";
    struct stat here {};
    struct stat there {};
    if (stat(other.c_str(), &there) != 0 || stat(file("").c_str(), &here) != 0 ||
        here.st_dev == there.st_dev || access(other.c_str(), W_OK) != 0)
        GTEST_SKIP() << "no second file system to move to";
    const std::string target = other / ("odfmodel-move-" + std::to_string(getpid()));
    test::WriteFile(target, "old");
    test::WriteFile(file("source"), std::string(1'000'000, 'm'));
    EXPECT_FALSE(platform::RenameReplacing(file("source"), target));
    EXPECT_TRUE(platform::MoveReplacing(file("source"), target));
    EXPECT_EQ(test::ReadFile(target).size(), 1'000'000U);
    EXPECT_FALSE(fs::exists(file("source")));
    fs::remove(target);
}

TEST_F(Files, AReplacementComesToNothingWithoutReplace) {
    for (const std::string& name : {std::string("f"), std::string(255, 'n')}) {
        test::WriteFile(file(name), "old");
        for (const bool isReplaced : {false, true}) {
            platform::ReplacementFile replacement;
            ASSERT_TRUE(replacement.open(file(name)));
            EXPECT_TRUE(replacement.file().write("new", 3));
            EXPECT_EQ(test::ReadFile(file(name)), "old");
            EXPECT_EQ(isReplaced && replacement.replace(), isReplaced);
        }
        EXPECT_EQ(test::ReadFile(file(name)), "new");
        EXPECT_EQ(test::FilesBelow(file("")), std::vector<std::string>{name});
        fs::remove(file(name));
    }
    EXPECT_FALSE(platform::ReplacementFile().open("/dev/null")) << "a device is never replaced";
}

using Temporary = test::InWorkspace<>;

TEST_F(Temporary, FoldersAreNewAndPrivate) {
    std::set<std::string> names;
    for (int number = 0; number < 50; ++number) {
        const auto claim = platform::FolderClaim::create("letter");
        ASSERT_NE(claim, nullptr);
        const Path folder = claim->folder();
        ASSERT_TRUE(platform::IsFolder(folder));
        EXPECT_EQ(fs::status(folder.utf8()).permissions(), fs::perms::owner_all);
        EXPECT_EQ(folder.parent(), platform::TemporaryDirectory());
        EXPECT_EQ(folder.name().substr(0, 6), "letter");
        EXPECT_GE(folder.name().size(), 10U);
        EXPECT_EQ(folder.name().find_first_not_of("0123456789abcdef", 6), std::string::npos);
        names.insert(folder.utf8());
        platform::RemoveTree(folder);
    }
    EXPECT_GT(names.size(), 45U) << "names can be foreseen";
}

TEST_F(Temporary, AFolderHasItsRecordWhileOthersComeAndGo) {
    const fs::path records = fs::path(P_tmpdir) / (".odfmodel-" + std::to_string(geteuid()));
    const auto isRecorded = [&](const Path& folder) {
        std::error_code failed; // records of others go meanwhile
        for (fs::directory_iterator entry(records, failed), end; !failed && entry != end;
             entry.increment(failed)) {
            std::string line;
            std::getline(std::ifstream(entry->path()), line);
            if (line == folder.utf8()) return true;
        }
        return false;
    };
    std::atomic<int> unrecorded = 0;
    {
        std::vector<std::jthread> workers;
        for (int worker = 0; worker < 4; ++worker)
            workers.emplace_back([&] {
                for (int number = 0; number < 1000; ++number) {
                    const auto claim = platform::FolderClaim::create("busy");
                    if (!claim || !isRecorded(claim->folder())) ++unrecorded;
                    if (claim) platform::RemoveTree(claim->folder());
                }
            });
    }
    EXPECT_EQ(unrecorded, 0) << "of 4,000 folders";
}

TEST_F(Temporary, FilesAreNewAndPrivate) {
    const Path made = platform::CreateTemporaryFile("a/b\\c", ".odt");
    ASSERT_TRUE(platform::IsFile(made));
    EXPECT_EQ(fs::status(made.utf8()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(made.name().substr(0, 5), "a_b_c");
    EXPECT_EQ(made.extension(), ".odt");
    EXPECT_EQ(made.name().size(), 5U + 4 + 4);
    EXPECT_TRUE(platform::RemoveFile(made));
    const Path free = platform::FreeTemporaryName("", ".zip");
    EXPECT_FALSE(platform::IsTaken(free));
    EXPECT_EQ(free.name().size(), 8U);
}

TEST_F(Temporary, ALongStemIsCutBetweenCharacters) {
    std::string stem;
    while (stem.size() < 400)
        stem += "\xE6\xBC\xA2";
    const auto claim = platform::FolderClaim::create(stem);
    ASSERT_NE(claim, nullptr);
    const Path folder = claim->folder();
    ASSERT_TRUE(platform::IsFolder(folder));
    EXPECT_EQ(folder.text().view().find(u'\uFFFD'), std::u16string_view::npos);
    platform::RemoveTree(folder);
}

TEST_F(Temporary, AFolderThatIsNoneFallsBack) {
    const test::ScopedVariable missing("TMPDIR", file("missing"));
    EXPECT_EQ(platform::TemporaryDirectory().utf8(), "/tmp");
}

TEST_F(Temporary, ANamelessFileLeavesNothing) {
    platform::OutputFile nameless;
    ASSERT_TRUE(nameless.createNameless());
    EXPECT_TRUE(temporaryEntries().empty());
    EXPECT_TRUE(nameless.writeAt(5, "x", 1));
    char byte = 0;
    EXPECT_EQ(nameless.readAt(5, &byte, 1), 1);
    EXPECT_EQ(byte, 'x');
}
