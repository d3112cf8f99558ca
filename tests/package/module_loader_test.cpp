#include "package/fixture.h"

#include <odfmodel/package/module_loader.h>

#include <cstring>
#include <regex>

using namespace package_test;
using namespace SDPackage;

namespace {

/// The folder of this program.
fs::path Home() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

class Loader : public PackageTest {
protected:
    Loader() {
        fs::create_directories(at("appdata/TUL"));
        loader_.SetMarkerFile(kMarker);
        loader_.SetMessageFunction([this](const unsigned short* title, const unsigned short* message) {
            EXPECT_EQ(Utf8(title), "DllLoader error");
            messages_.push_back(Utf8(message));
        });
    }
    ~Loader() override {
        for (const fs::path& marker : markers_) {
            std::error_code ignored;
            fs::remove(marker, ignored);
            fs::remove(marker.parent_path(), ignored); // only a folder that is empty now
        }
    }

    void mark(const fs::path& folder) {
        markers_.push_back(folder / kMarker);
        WriteFile(markers_.back(), "marker");
    }

    /// The text of the log of the day, without its byte order mark.
    std::string log(const fs::path& folder) {
        std::string text;
        for (const auto& entry : fs::directory_iterator(folder)) {
            EXPECT_TRUE(std::regex_match(entry.path().filename().string(), std::regex("\\d{8}\\.log")));
            const std::string bytes = ReadFile(entry.path());
            EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
            std::u16string units(bytes.size() / 2 - 1, u'\0');
            std::memcpy(units.data(), bytes.data() + 2, units.size() * 2);
            text += ODF::ToUtf8(units);
        }
        return text;
    }
    std::string log() { return fs::exists(at("appdata/TUL/User")) ? log(at("appdata/TUL/User")) : ""; }

    static constexpr const char* kMarker = "package-test-marker.so";
    std::vector<std::string> messages_;
    ModuleLoader loader_;

private:
    ScopedVariable path_{"PATH", "/bin"};
    ScopedVariable data_{"APPDATA", text("appdata")};
    ScopedVariable state_{"XDG_STATE_HOME", text("state")};
    ScopedVariable machine_{"XDG_CONFIG_DIRS", text("etc")};
    std::vector<fs::path> markers_;
};

} // namespace

TEST_F(Loader, LogsWithTheTimeBelowAFolderThatIsThere) {
    loader_.WriteDiagnosticLog(u"first %s %d\n", u"é", 1);
    setenv("APPDATA", (text("appdata") + "/").c_str(), 1);
    loader_.WriteDiagnosticLog(u"second");
    const std::string pattern = "\\[\\d\\d:\\d\\d:\\d\\d\\]";
    EXPECT_TRUE(std::regex_match(log(), std::regex(pattern + "first é 1\\n" + pattern + "second"))) << log();
    setenv("APPDATA", text("other").c_str(), 1);
    loader_.WriteDiagnosticLog(u"x");
    EXPECT_FALSE(fs::exists(at("other"))) << "lost in silence";
    unsetenv("APPDATA");
    loader_.WriteDiagnosticLog(u"y");
    EXPECT_TRUE(log(at("state/Tul")).ends_with("]y"));
}

TEST_F(Loader, NearestMarkerWins) {
    CTulStringW found(u"untouched");
    EXPECT_FALSE(loader_.FindCommonPath(found));
    EXPECT_EQ(found, "untouched");
    EXPECT_EQ(messages_.size(), 1U);

    WriteFile(at("etc/odfmodel/settings.ini"),
              "[Software\\TUL\\Shared\\Common9.6]\nCommon Path = " + text("machine") + "\n");
    const std::string home = Home().string();
    const std::pair<fs::path, std::string> rows[] = {{at("machine"), text("machine")},
                                                     {Home() / "../Bin", home + "/./../Bin"},
                                                     {Home() / "Bin", home + "/./Bin"},
                                                     {Home(), home + "/././"}};
    for (const auto& [folder, path] : rows) {
        mark(folder);
        unsigned short buffer[260] = {};
        EXPECT_TRUE(loader_.FindCommonPath(buffer));
        EXPECT_EQ(Utf8(buffer), path);
    }
    EXPECT_EQ(messages_.size(), 1U);
}

TEST_F(Loader, CommonPathIsPutAtTheHeadOfThePath) {
    setenv("PATH", "/bin", 1);
    loader_.InsertCommonPath();
    EXPECT_STREQ(std::getenv("PATH"), "/bin") << "no Common path";
    EXPECT_EQ(messages_.size(), 1U);

    mark(Home());
    const std::string common = Home().string() + "/././";
    const std::pair<std::string, std::string> rows[] = {
        {"/bin", common + ":/bin"},
        {common + ":/bin:" + common, common + ":/bin:" + common},
        {"/a:" + common + ":/b", common + ":/a:/b"},
        {"/a:" + common, common + ":/a:"}};
    for (const auto& [before, after] : rows) {
        setenv("PATH", before.c_str(), 1);
        loader_.InsertCommonPath();
        EXPECT_EQ(std::getenv("PATH"), after);
    }
    unsetenv("PATH");
    loader_.InsertCommonPath();
    EXPECT_EQ(std::getenv("PATH"), nullptr);
}

TEST_F(Loader, LoadsFromTheCommonPathOnceItIsActive) {
    const fs::path module = SAMPLE_MODULE;
    mark(Home());
    fs::copy_file(module, Home() / "package-test-module.so", fs::copy_options::overwrite_existing);
    const DelayLoadInfo bare{"package-test-module.so", 0};
    EXPECT_EQ(loader_.OnDelayLoadNotify(2, &bare), nullptr);
    EXPECT_EQ(log(), "");
    EXPECT_EQ(loader_.OnDelayLoadNotify(DelayLoadPreLoad, &bare), nullptr) << "not active yet";
    EXPECT_NE(log().find("::LoadLibrary() Failed. base: "), std::string::npos);
    EXPECT_NE(log().find("szModuleName: package-test-module.so\n"), std::string::npos);
    loader_.InsertCommonPath();
    EXPECT_NE(loader_.OnDelayLoadNotify(DelayLoadPreLoad, &bare), nullptr);
    const DelayLoadInfo whole{SAMPLE_MODULE, 0};
    EXPECT_NE(loader_.OnDelayLoadNotify(DelayLoadPreLoad, &whole), nullptr) << "by the system's own search";
    loader_.RememberLoadedModule(nullptr);
    loader_.ReleaseLoadedModules();
    fs::remove(Home() / "package-test-module.so");
    EXPECT_TRUE(messages_.empty());
}

TEST_F(Loader, FailuresAreLoggedAndShown) {
    setenv("PATH", "/the/path", 1);
    const DelayLoadInfo info{"libKesto.so", 0x7E};
    EXPECT_EQ(loader_.OnDelayLoadFailure(1, &info), nullptr);
    EXPECT_TRUE(messages_.empty());
    EXPECT_EQ(loader_.OnDelayLoadFailure(DelayLoadFailed, &info), nullptr);
    ASSERT_EQ(messages_.size(), 1U);
    EXPECT_TRUE(messages_[0].starts_with("could not find DLL(libKesto.so).\n")) << messages_[0];
    EXPECT_NE(log().find("GetLastError: 0000007E, szModuleName: libKesto.so\n["), std::string::npos) << log();
    EXPECT_TRUE(log().ends_with("]%PATH%: /the/path\n")) << log();
}
