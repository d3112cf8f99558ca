// What belongs to a file besides its contents, and targets that go away.

#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <thread>

using namespace ODF;

namespace {

class ReplacedFile : public test::InWorkspace<> {
protected:
    void SetUp() override {
        test::WriteOdf(
            file("a.odt"), test::kTextType,
            {{"content.xml", test::TextContent("<text:p>" + std::string(300'000, 'x') + "</text:p>")},
             {"Pictures/a.png", std::string(300'000, 'p')}});
        ASSERT_TRUE(document.Open(file("a.odt")));
    }

    static bool tellsLoss(const std::vector<Note>& notes) {
        return std::any_of(notes.begin(), notes.end(),
                           [](const Note& note) { return note.code == NoteCode::TargetChanged; });
    }

    Document document;
};

} // namespace

TEST_F(ReplacedFile, ASecondNameIsTold) {
    EXPECT_FALSE(tellsLoss(document.Save(file("a.odt")).Notes()));
    std::filesystem::create_hard_link(file("a.odt"), file("b.odt"));
    const Result saved = document.Save(file("a.odt"));
    EXPECT_TRUE(saved);
    EXPECT_TRUE(tellsLoss(saved.Notes()));

    std::filesystem::create_hard_link(file("a.odt"), file("c.odt"));
    CODFDoc listed;
    ASSERT_EQ(listed.Open(file("a.odt")), 1);
    ASSERT_EQ(listed.Save(file("a.odt")), 1);
    EXPECT_EQ(listed.GetDiagnostics().status(), Status::Ok);
    EXPECT_TRUE(tellsLoss(listed.GetDiagnostics().notes()));
}

TEST_F(ReplacedFile, ExtendedAttributesAreKept) {
    const std::string path = file("a.odt");
    if (setxattr(path.c_str(), "user.origin", "scanner", 7, 0) != 0)
        GTEST_SKIP() << "this file system has no extended attributes";
    const Result saved = document.Save(path);
    EXPECT_TRUE(saved);
    EXPECT_FALSE(tellsLoss(saved.Notes()));
    char value[16] = {};
    EXPECT_EQ(getxattr(path.c_str(), "user.origin", value, sizeof value), 7);
    EXPECT_STREQ(value, "scanner");
}

// The process lives on, and the status tells.
TEST_F(ReplacedFile, APipeWhoseReaderLeavesIsAFailedWrite) {
    ASSERT_EQ(mkfifo(file("pipe").c_str(), 0600), 0);
    std::vector<unsigned char> noise(300'000); // more than a pipe holds, also when it is packed
    unsigned number = 1;
    for (unsigned char& unit : noise)
        unit = static_cast<unsigned char>((number = number * 1664525U + 1013904223U) >> 24U);
    for (const bool isListed : {false, true}) {
        const int reader = ::open(file("pipe").c_str(), O_RDONLY | O_NONBLOCK);
        ASSERT_GE(reader, 0);
        fcntl(reader, F_SETFL, 0);
        std::thread leaving([&] {
            char byte = 0;
            while (::read(reader, &byte, 1) != 1)
                std::this_thread::yield();
            ::close(reader);
        });
        if (isListed) {
            SDPackage::IPackage package;
            Diagnostics diagnostics;
            package.SetDiagnostics(&diagnostics);
            ASSERT_EQ(package.Open(file("a.odt")), 1);
            test::WriteFile(file("noise"), std::string(noise.begin(), noise.end()));
            (*package.GetWriteList())[CTulStringW("noise")] = CTulStringW(file("noise"));
            EXPECT_EQ(package.Save(file("pipe")), 0);
            EXPECT_EQ(diagnostics.status(), Status::CouldNotWrite);
        } else {
            ASSERT_NE(document.AddPicture(noise, "noise.png"), "");
            EXPECT_EQ(document.Save(file("pipe")).Code(), Status::CouldNotWrite);
        }
        leaving.join();
    }
}
