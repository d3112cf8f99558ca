// Each system call of an open and of a save fails once: a document is whole or says that it isn't, and what
// is at the target is the old file or the new one.

#include "document/kinds.h"
#include "faults/attempt.h"
#include "faults/failing_calls.h"
#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <cerrno>

using namespace ODF;

namespace {

constexpr std::string_view kOld = "the old file";

class SystemCallFaults : public test::InWorkspace<> {
protected:
    void SetUp() override {
        std::filesystem::create_directory(file("to"));
        CODFDoc document;
        build(document);
        document.Save(file("source.odt"));
        whole = test::ReadPackage(file("source.odt"));
        ASSERT_EQ(whole.size(), 5U);
    }

    static void build(CODFDoc& document) {
        test::Build(document, test::kTextKind, u"text")->SetTextStyleName(u"Standard");
        document.GetContentClass()->SetOfficeBody()->SetOfficeText()->SetTextP()->SetText(
            std::u16string(200'000, u'x')); // more than one read takes
    }

    std::string target() const { return file("to/old.odt"); }
    /// What is at the target, and whether the status tells the truth of it.
    std::string outcome(const CODFDoc& document) const {
        const bool isOld = test::ReadFile(target()) == kOld;
        const bool isNew = !isOld && test::ReadPackage(target()) == whole;
        std::string word = isOld ? "old" : isNew ? "new" : "TORN";
        const Status status = document.GetDiagnostics().status();
        if ((status == Status::Ok) != isNew) word += std::string(", STATUS ") + ToText(status);
        if (test::EntriesOf(file("to")).size() != 1) word += ", FILES LEFT BESIDE";
        return word;
    }

    /// Of an open: "whole", or the status of a document that isn't.
    static std::string reading(const CODFDoc& opened, const CODFDoc& complete) {
        const Status status = opened.GetDiagnostics().status();
        const bool isWhole = opened.GetMainPart() && test::Difference(opened, complete).empty();
        if ((status == Status::Ok) == isWhole || (isWhole && status != Status::Ok)) return ToText(status);
        return "PARTIAL, STATUS OK";
    }

    /// A call that was only interrupted is made again, so all may end whole.
    static void expectSound(const test::Endings& endings, int error) {
        EXPECT_GT(endings.size(), error == EINTR ? 0U : 1U) << "no fault was met";
        for (const auto& [word, count] : endings)
            EXPECT_TRUE(word.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos &&
                        !word.starts_with("ended") && !word.starts_with("took"))
                << count << " times: " << word;
    }

    test::Members whole;
};

} // namespace

TEST_F(SystemCallFaults, InASave) {
    for (const int error : {EIO, ENOSPC, EMFILE, EINTR})
        for (const bool isNew : {false, true}) {
            SCOPED_TRACE(std::to_string(error) + (isNew ? " new" : " opened"));
            const test::Endings endings = test::ForEachFault(100, [&](std::size_t number) -> std::string {
                test::WriteFile(target(), kOld);
                CODFDoc document;
                if (isNew)
                    build(document);
                else if (document.Open(file("source.odt")) != 1)
                    return "NOT OPENED";
                bool hasFailed = false;
                {
                    const test::FailingCall fault(test::Call::All, number, error);
                    document.Save(target());
                    hasFailed = fault.hasFailed();
                }
                return hasFailed ? outcome(document) : std::string();
            });
            expectSound(endings, error);
        }
}

TEST_F(SystemCallFaults, InAnOpen) {
    CODFDoc complete;
    ASSERT_EQ(complete.Open(file("source.odt")), 1);
    for (const int error : {EIO, ENOSPC, EMFILE, EINTR}) {
        SCOPED_TRACE(error);
        const test::Endings endings = test::ForEachFault(200, [&](std::size_t number) -> std::string {
            CODFDoc document;
            bool hasFailed = false;
            {
                const test::FailingCall fault(test::Call::All, number, error);
                document.Open(file("source.odt"));
                hasFailed = fault.hasFailed();
            }
            if (!hasFailed) return {};
            const std::string word = reading(document, complete);
            if (word == ToText(Status::Ok)) return word;
            // What isn't whole says so in its save too.
            document.Save(target());
            return document.GetDiagnostics().status() == Status::Ok ? "PARTIAL, SAVED WITH STATUS OK" : word;
        });
        expectSound(endings, error);
    }
    complete.Save(file("to/out.odt"));
}

TEST_F(SystemCallFaults, ASaveWaitsForTheMedium) {
    for (const bool isThere : {false, true}) {
        CODFDoc document;
        build(document);
        const test::FailingCall counter(test::Call::Sync, 0, 0);
        document.Save(target());
        EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);
        EXPECT_EQ(counter.count(), 2U) << "the file and the name in its folder " << isThere;
    }
}
