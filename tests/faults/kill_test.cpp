// Processes that are killed while they open an encrypted document or save: the target is the old or the new
// file, and what they leave in the temporary directory goes with the next run.

#include "faults/attempt.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <thread>

using namespace ODF;

namespace {

constexpr const char* kPassword = "geheim 漢";

class KilledProcess : public test::InWorkspace<> {
protected:
    const std::string encrypted = std::string(ODFMODEL_TEST_DATA) + "/encrypted/letter.odt";

    /// Opens and saves by all routes until it is killed.
    void work() const {
        for (;;) {
            CODFDoc listed;
            listed.SetPassword(kPassword);
            if (listed.Open(encrypted) != 1) _exit(1);
            listed.Save(file("to/listed.odt"));
            Document document;
            OpenOptions options;
            options.password = kPassword;
            if (!document.Open(file("to/kept.odt"), options)) _exit(2);
            if (!document.Save(file("to/kept.odt"))) _exit(3);
        }
    }
};

} // namespace

TEST_F(KilledProcess, LeavesWholeFilesAndNothingInTheTemporaryDirectory) {
    std::filesystem::create_directory(file("to"));
    std::filesystem::copy_file(encrypted, file("to/kept.odt"));
    CODFDoc first;
    first.SetPassword(kPassword);
    ASSERT_EQ(first.Open(encrypted), 1);
    ASSERT_EQ(first.Save(file("to/listed.odt")), 1);
    const test::Members listed = test::ReadPackage(file("to/listed.odt"));

    std::mt19937 random(20261); // the same each time, as far as the machine is
    std::size_t forsaken = 0;
    std::size_t beside = 0;
    const int kills = test::IsLongRun() ? 1000 : 20;
    for (int kill = 0; kill < kills; ++kill) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) work();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 700'000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "ended by itself: " << status;
        if (!temporaryEntries().empty()) ++forsaken;

        CODFDoc next; // the next run
        ASSERT_EQ(next.Open(file("to/listed.odt")), 1) << "torn after kill " << kill;
        EXPECT_EQ(temporaryEntries().size(), 1U) << "only what is in use stays";
        next.Open(std::string("none"));
        EXPECT_TRUE(temporaryEntries().empty());
        ASSERT_EQ(test::ReadPackage(file("to/listed.odt")), listed);
        const test::Members kept = test::ReadPackage(file("to/kept.odt"), kPassword);
        ASSERT_TRUE(kept.contains("content.xml")) << "torn after kill " << kill;
        ASSERT_NE(kept.at("content.xml").find("</office:document-content>"), std::string::npos);
        for (const std::string& name : test::EntriesOf(file("to")))
            if (name != "kept.odt" && name != "listed.odt") {
                ++beside;
                std::filesystem::remove(file("to/" + name));
            }
    }
    EXPECT_GT(forsaken, 0U) << "no kill came while a document was open";
    RecordProperty("forsaken", static_cast<int>(forsaken));
    RecordProperty("beside", static_cast<int>(beside));
    std::printf("%d kills: %zu times something was left in the temporary directory, %zu files beside\n",
                kills, forsaken, beside);
}
