// Saves that fail: the old file stays, nothing is left behind, the status tells.

#include "document/kinds.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <random>

using namespace ODF;

namespace {

constexpr std::string_view kOld = "the old file";

class FailedSave : public test::InWorkspace<> {
protected:
    void SetUp() override { test::WriteFile(file("old.odt"), kOld); }

    /// A document to save: new, or one that was opened.
    std::unique_ptr<CODFDoc> document(bool isNew) {
        auto made = std::make_unique<CODFDoc>();
        test::Build(*made, test::kTextKind, u"text");
        if (isNew) return made;
        made->Save(file("source.odt"));
        EXPECT_EQ(made->Open(file("source.odt")), 1);
        return made;
    }

    void expectFailure(const std::string& target) {
        for (const bool isNew : {true, false}) {
            const auto given = document(isNew);
            EXPECT_EQ(given->Save(target), 1) << "the plain result tells nothing of the package";
            EXPECT_EQ(given->GetDiagnostics().status(), Status::CouldNotWrite) << isNew;
            EXPECT_EQ(temporaryEntries(), std::vector<std::string>()) << isNew;
            EXPECT_NE(given->GetContentClass(), nullptr) << "the trees stay";
            EXPECT_EQ(test::ReadFile(file("old.odt")), kOld);
        }
    }
};

/// Bounds what a process may have for the life of the object.
class Bound {
public:
    Bound(__rlimit_resource resource, rlim_t value) : resource_(resource) {
        getrlimit(resource_, &before_);
        const rlimit bound{value, before_.rlim_max};
        setrlimit(resource_, &bound);
    }
    Bound(const Bound&) = delete;
    Bound& operator=(const Bound&) = delete;
    ~Bound() { setrlimit(resource_, &before_); }

private:
    __rlimit_resource resource_;
    rlimit before_{};
};

} // namespace

TEST_F(FailedSave, IntoAFolderThatIsNotThere) {
    expectFailure(file("nowhere/out.odt"));
    EXPECT_FALSE(std::filesystem::exists(file("nowhere")));
}

TEST_F(FailedSave, OverAFolder) {
    std::filesystem::create_directory(file("folder.odt"));
    test::WriteFile(file("folder.odt/inside"), "x");
    expectFailure(file("folder.odt"));
    EXPECT_EQ(test::ReadFile(file("folder.odt/inside")), "x");
}

TEST_F(FailedSave, OntoAFullDevice) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    expectFailure("/dev/full");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(FailedSave, IntoAFolderThatCanNotBeWritten) {
    if (geteuid() == 0) GTEST_SKIP() << "the superuser may write everywhere";
    std::filesystem::permissions(file(""),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const auto given = document(true);
    EXPECT_EQ(given->Save(file("old.odt")), 1);
    std::filesystem::permissions(file(""), std::filesystem::perms::owner_all);
    EXPECT_EQ(given->GetDiagnostics().status(), Status::CouldNotWrite);
    EXPECT_EQ(test::EntriesOf(file("")), std::vector<std::string>{"old.odt"});
    EXPECT_EQ(test::ReadFile(file("old.odt")), kOld);
}

TEST_F(FailedSave, OnADiskThatFillsUp) {
    std::u16string text; // that doesn't pack well
    for (unsigned i = 0; i < 300000; ++i)
        text += static_cast<char16_t>(u'0' + i * 2654435761U % 8191);
    std::mt19937 random(1);
    std::string noise(2'000'000, '\0');
    for (char& c : noise)
        c = static_cast<char>(random());
    test::WriteFile(file("noise.png"), noise);
    std::signal(SIGXFSZ, SIG_IGN);
    // The first bound stops the trees, the second the archive.
    for (const rlim_t bytes : {rlim_t{1000}, rlim_t{1000000}}) {
        for (const bool isNew : {true, false}) {
            const auto given = document(isNew);
            given->GetContentClass()->SetOfficeBody()->SetOfficeText()->SetTextP()->SetText(text);
            _CreateImagePart(given->GetRootPart(), file("noise.png"));
            const Bound bound(RLIMIT_FSIZE, bytes);
            EXPECT_EQ(given->Save(file("old.odt")), 1);
            EXPECT_EQ(given->GetDiagnostics().status(), Status::CouldNotWrite) << isNew << bytes;
            EXPECT_EQ(temporaryEntries(), std::vector<std::string>());
            EXPECT_EQ(test::ReadFile(file("old.odt")), kOld);
        }
    }
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"noise.png", "old.odt", "source.odt"}));
}

TEST_F(FailedSave, WithAPictureThatHasGone) {
    for (const bool isNew : {true, false}) {
        const auto given = document(isNew);
        _CreateImagePart(given->GetRootPart(), file("gone.png"));
        EXPECT_EQ(given->Save(file("old.odt")), 1);
        EXPECT_EQ(given->GetDiagnostics().status(), Status::CouldNotWrite);
        EXPECT_EQ(test::ReadFile(file("old.odt")), kOld);
        EXPECT_EQ(temporaryEntries(), std::vector<std::string>());
    }
}

TEST_F(FailedSave, WithoutATemporaryDirectory) {
    const auto given = document(true);
    const auto opened = document(false);
    const test::ScopedVariable nowhere("TMPDIR", file("nowhere"));
    const std::string fallback = std::filesystem::exists("/tmp") ? "/tmp" : "";
    // Where the system has another temporary directory, that one serves.
    EXPECT_EQ(given->Save(file("out.odt")), fallback.empty() ? 0 : 1);
    EXPECT_EQ(opened->Save(file("out.odt")), 1) << "its folder is there";
}

namespace {

struct OpenCase {
    const char* name;
    std::function<void(const std::string& path)> make;
    Status status;
};

class FailedOpen : public test::InWorkspace<testing::TestWithParam<OpenCase>> {};

} // namespace

TEST_P(FailedOpen, LeavesNothing) {
    GetParam().make(file("a.odt"));
    for (int round = 0; round < 2; ++round) {
        CODFDoc document;
        EXPECT_EQ(document.Open(file("a.odt")), 0);
        EXPECT_EQ(document.GetDiagnostics().status(), GetParam().status)
            << ToText(document.GetDiagnostics().status());
        EXPECT_EQ(document.GetContentClass(), nullptr);
        EXPECT_EQ(document.GetMainPart(), nullptr);
        EXPECT_EQ(document.Save(file("out.odt")), 0);
        EXPECT_EQ(document.GetDiagnostics().status(), Status::NothingToSave);
        EXPECT_FALSE(std::filesystem::exists(file("out.odt")))
            << "half a package must not become a whole one";
    }
    EXPECT_EQ(temporaryEntries(), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(
    Files, FailedOpen,
    testing::Values(
        OpenCase{"Empty", [](const std::string& path) { test::WriteFile(path, ""); }, Status::NotAnArchive},
        OpenCase{"NotAnArchive", [](const std::string& path) { test::WriteFile(path, "plain text"); },
                 Status::NotAnArchive},
        OpenCase{"EmptyArchive", [](const std::string& path) { test::WritePackage(path, {}); },
                 Status::NoContent},
        OpenCase{"NoManifest",
                 [](const std::string& path) {
                     test::WritePackage(path, {{"content.xml", test::TextContent("<text:p/>")}});
                 },
                 Status::NoContent},
        OpenCase{"ManifestWithoutContent",
                 [](const std::string& path) {
                     test::WriteOdf(path, test::kTextType, {{"styles.xml", "<x/>"}}, {{"content.xml"}});
                 },
                 Status::NoContent},
        OpenCase{"Pipe", [](const std::string& path) { mkfifo(path.c_str(), 0600); }, Status::NotReadable},
        OpenCase{"BrokenLink",
                 [](const std::string& path) { std::filesystem::create_symlink("nowhere", path); },
                 Status::NotReadable}),
    [](const auto& given) { return std::string(given.param.name); });
