// Saves that fail: the old file stays, nothing is left behind, the status tells.

#include "document/kinds.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <random>

using namespace ODF;

namespace {

constexpr std::string_view kOld = "the old file";

class FailedSave : public test::InWorkspace<> {
protected:
    void SetUp() override { test::WriteFile(file("old.odt"), kOld); }

    /// A new document and one that was opened, each changed, can't be saved while files are bounded, but are
    /// saved elsewhere after `mend`.
    void expectFailure(const std::string& target, const std::function<void(CODFDoc&)>& change = {},
                       rlim_t fileBytes = RLIM_INFINITY, const std::function<void(CODFDoc&)>& mend = {}) {
        for (const bool isNew : {true, false}) {
            CODFDoc document;
            test::Build(document, test::kTextKind, u"text");
            if (!isNew) {
                document.Save(file("source.odt"));
                EXPECT_EQ(document.Open(file("source.odt")), 1);
            }
            if (change) change(document);
            rlimit before{};
            getrlimit(RLIMIT_FSIZE, &before);
            const rlimit bound{std::min(fileBytes, before.rlim_cur), before.rlim_max};
            setrlimit(RLIMIT_FSIZE, &bound);
            EXPECT_EQ(document.Save(target), 1) << "the plain result tells nothing of the package";
            setrlimit(RLIMIT_FSIZE, &before);
            EXPECT_EQ(document.GetDiagnostics().status(), Status::CouldNotWrite) << isNew << target;
            EXPECT_NE(document.GetContentClass(), nullptr) << "the trees stay";
            EXPECT_EQ(test::ReadFile(file("old.odt")), kOld);
            if (mend) mend(document);
            EXPECT_EQ(document.Save(file("elsewhere.odt")), 1);
            EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok) << isNew << target;
            test::Members saved = test::ReadPackage(file("elsewhere.odt"));
            for (const char* const name : {"content.xml", "styles.xml", "meta.xml", "settings.xml"})
                EXPECT_EQ(saved.count(name), 1U) << name;
            EXPECT_NE(saved["content.xml"].find("text"), std::string::npos);
            EXPECT_EQ(saved.count("Pictures/gone.png"), 0U);
            EXPECT_EQ(temporaryEntries(), std::vector<std::string>()) << isNew << target;
            std::filesystem::remove(file("elsewhere.odt"));
        }
    }
};

} // namespace

TEST_F(FailedSave, OntoATargetThatIsNoFile) {
    std::filesystem::create_directory(file("folder.odt"));
    test::WriteFile(file("folder.odt/inside"), "x");
    for (const std::string& target : {file("nowhere/out.odt"), file("folder.odt"), std::string("/dev/full")})
        expectFailure(target);
    EXPECT_FALSE(std::filesystem::exists(file("nowhere")));
    EXPECT_EQ(test::ReadFile(file("folder.odt/inside")), "x");
    EXPECT_FALSE(std::filesystem::is_regular_file("/dev/full"));
}

TEST_F(FailedSave, OnADiskThatFillsUp) {
    std::mt19937 random(1);
    std::string noise(2'000'000, '\0');
    for (char& c : noise)
        c = static_cast<char>(random());
    test::WriteFile(file("noise.png"), noise);
    std::signal(SIGXFSZ, SIG_IGN);
    // The first bound stops a tree, of which an archive would hold even the half; the second the archive.
    expectFailure(
        file("old.odt"),
        [](CODFDoc& document) {
            document.GetContentClass()->SetOfficeBody()->SetOfficeText()->SetTextP()->SetText(
                std::u16string(1'000'000, u'x'));
        },
        500'000);
    expectFailure(
        file("old.odt"),
        [this](CODFDoc& document) { _CreateImagePart(document.GetRootPart(), file("noise.png")); },
        1'000'000);
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"noise.png", "old.odt", "source.odt"}));
}

TEST_F(FailedSave, WithAPictureThatHasGone) {
    const auto add = [this](CODFDoc& document) {
        _CreateImagePart(document.GetRootPart(), file("gone.png"))->SetPackagePath(u"Pictures/there.png");
    };
    const auto mend = [this](CODFDoc& document) {
        test::WriteFile(file("there.png"), "a picture");
        _CreateImagePart(document.GetRootPart(), file("gone.png"))
            ->SetLocalPath(CTulStringW(file("there.png")));
    };
    expectFailure(file("old.odt"), add, RLIM_INFINITY, mend);
}

TEST_F(FailedSave, OfWhatCouldNotBeOpened) {
    const std::string content = test::TextContent("");
    const auto manifest = [](std::initializer_list<test::ManifestEntry> entries) {
        std::vector<test::ManifestEntry> all{{"/", std::string(test::kTextType)}};
        all.insert(all.end(), entries);
        return test::Manifest(all);
    };
    const test::Members packages[] = {
        {},
        {{"content.xml", content}},
        {{"META-INF/manifest.xml", manifest({{"styles.xml"}, {"content.xml"}})}, {"styles.xml", "<x/>"}},
        {{"META-INF/manifest.xml", manifest({{"Object 1/content.xml"}})}, {"Object 1/content.xml", content}},
        // The first in the manifest counts, here the one in capitals: it is no main part.
        {{"META-INF/manifest.xml", manifest({{"Content.xml"}, {"content.xml"}})},
         {"Content.xml", content},
         {"content.xml", content}}};
    std::vector<std::pair<std::string, Status>> rows{
        {"missing.odt", Status::NotReadable}, {"", Status::NotReadable},
        {"pipe.odt", Status::NotReadable},    {"broken link.odt", Status::NotReadable},
        {"empty.odt", Status::NotAnArchive},  {"plain text.odt", Status::NotAnArchive}};
    mkfifo(file("pipe.odt").c_str(), 0600);
    std::filesystem::create_symlink("nowhere", file("broken link.odt"));
    test::WriteFile(file("empty.odt"), "");
    test::WriteFile(file("plain text.odt"), "plain text");
    for (const test::Members& members : packages) {
        rows.emplace_back("package " + std::to_string(rows.size()) + ".odt", Status::NoContent);
        test::WritePackage(file(rows.back().first), members);
    }
    for (const auto& [name, status] : rows) {
        SCOPED_TRACE(name);
        for (int round = 0; round < 2; ++round) {
            CODFDoc document;
            EXPECT_EQ(document.Open(file(name)), 0);
            EXPECT_EQ(document.GetDiagnostics().status(), status)
                << ToText(document.GetDiagnostics().status());
            EXPECT_EQ(document.GetContentClass(), nullptr);
            EXPECT_EQ(document.GetMainPart(), nullptr);
            EXPECT_EQ(document.Save(file("out.odt")), 0);
            EXPECT_EQ(document.GetDiagnostics().status(), Status::NothingToSave);
            EXPECT_FALSE(std::filesystem::exists(file("out.odt"))) << "half a package makes no whole one";
        }
        EXPECT_EQ(temporaryEntries(), std::vector<std::string>());
    }
    CODFDoc document;
    EXPECT_EQ(document.Open(static_cast<const unsigned short*>(nullptr)), 0);
    EXPECT_EQ(document.Open(""), 0);
    EXPECT_EQ(document.GetRootPart(), nullptr);
    EXPECT_EQ(document.GetDocType(), sd::SDDocType::DocTypeUnknown);
}
