// The functions of the base library, the configuration store, clock and mappings.

#include "platform/clock.h"
#include "support/workspace.h"
#include "zip/case_name.h"

#include <odfmodel/core/date_time.h>
#include <odfmodel/platform/memory_mapping.h>
#include <odfmodel/serial/base_library.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

using namespace ODF;

namespace {

class BaseLibrary : public test::InWorkspace<> {};

std::string Text(const unsigned short* units) {
    return ToUtf8(units);
}

} // namespace

TEST_F(BaseLibrary, AnOpenFileStaysReadableWhenItsNameGoes) {
    test::WriteFile(file("f"), "x");
    const TulFileHandle handle = TulOpenFile(CTulStringW(file("f")).view());
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(TulDeleteFile(CTulStringW(file("f")).c_str()), 0);
    EXPECT_EQ(TulFileExist(CTulStringW(file("f")).c_str()), 0);
    EXPECT_NE(TulCloseFile(handle), 0);
    EXPECT_EQ(TulCloseFile(nullptr), 0);
    EXPECT_EQ(TulOpenFile(CTulStringW(file("f")).view()), nullptr);
    EXPECT_EQ(TulDeleteFile(CTulStringW(file("f")).c_str()), 0);
    const CTulStringW folder(file(""));
    EXPECT_EQ(TulCreateFile(folder.c_str(), 0x80000000U, 3, nullptr, 3, 128, nullptr), nullptr) << "no file";
}

TEST_F(BaseLibrary, SomethingStandsThere) {
    test::WriteFile(file("f"), "x");
    std::filesystem::create_symlink("nowhere", file("broken"));
    EXPECT_NE(TulExistDir(CTulStringW(file("f")).c_str()), 0);
    EXPECT_NE(TulExistDir(CTulStringW(file("")).c_str()), 0);
    EXPECT_NE(TulExistDir(CTulStringW(file("broken")).c_str()), 0);
    EXPECT_EQ(TulExistDir(CTulStringW(file("missing")).c_str()), 0);
    EXPECT_EQ(TulFileExist(CTulStringW(file("")).c_str()), 0) << "a folder is no file";
    EXPECT_EQ(TulFileExist(nullptr), 0);
}

TEST_F(BaseLibrary, ATemporaryFileIsMadeWhenItsNameFits) {
    std::array<unsigned short, 260> buffer{};
    ASSERT_NE(TulPathMakeTemp(ToUnits(u"TOOXML"), nullptr, buffer.data(), 260), 0);
    const std::filesystem::path made = Text(buffer.data());
    EXPECT_TRUE(std::filesystem::is_regular_file(made));
    EXPECT_EQ(made.filename().string().substr(0, 6), "TOOXML");
    std::filesystem::remove(made);
    buffer.fill(7);
    EXPECT_EQ(TulPathMakeTemp(ToUnits(u"TOOXML"), nullptr, buffer.data(), 10), 0);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(buffer[10], 7);
    EXPECT_TRUE(temporaryEntries().empty());
}

TEST_F(BaseLibrary, AModuleIsLoadedAndAsked) {
    const TulModuleHandle module = TulLoadLibraryModulePath(ToUnits(u"libz.so.1"));
    ASSERT_NE(module, nullptr);
    EXPECT_NE(TulGetProcAddress(module, "zlibVersion"), nullptr);
    EXPECT_EQ(TulGetProcAddress(module, "GetUserPrefixName"), nullptr);
    TulFreeLibrary(module);
    TulFreeLibrary(nullptr);
    EXPECT_EQ(TulLoadLibraryModulePath(ToUnits(u"/no/such/module.so")), nullptr);
    EXPECT_EQ(TulLoadLibraryModulePath(ToUnits(u"")), nullptr);
    EXPECT_EQ(TulLoadLibraryModulePath(nullptr), nullptr);
}

namespace {

struct SettingCase {
    const char* name;
    const char* contents;
    const char* value; ///< null: none
};

class Setting : public test::InWorkspace<testing::TestWithParam<SettingCase>> {
protected:
    /// The value "module" of the key that the user data module stands under, or "(none)".
    static std::string read(HKEY root) {
        std::array<unsigned short, 32> buffer{};
        buffer.fill(7);
        const CTulRegistry registry(u"Software\\TUL\\Shared\\Serializer", root);
        return registry.GetStringValue(u"module", buffer.data(), 32) != 0 ? Text(buffer.data()) : "(none)";
    }
};

} // namespace

TEST_P(Setting, IsReadForUserAndMachine) {
    std::filesystem::create_directories(file("user/odfmodel"));
    std::filesystem::create_directories(file("first/odfmodel"));
    std::filesystem::create_directories(file("second/odfmodel"));
    const test::ScopedVariable user("XDG_CONFIG_HOME", file("user"));
    const test::ScopedVariable machine("XDG_CONFIG_DIRS", file("first") + ':' + file("second"));
    const std::string expected = GetParam().value ? GetParam().value : "(none)";
    test::WriteFile(file("user/odfmodel/settings.ini"), GetParam().contents);
    EXPECT_EQ(read(HKEY_CURRENT_USER), expected);
    EXPECT_EQ(read(HKEY_LOCAL_MACHINE), "(none)");
    test::WriteFile(file("second/odfmodel/settings.ini"), GetParam().contents);
    EXPECT_EQ(read(HKEY_LOCAL_MACHINE), expected);
    test::WriteFile(file("first/odfmodel/settings.ini"),
                    "[Software\\TUL\\Shared\\Serializer]\nmodule=first\n");
    EXPECT_EQ(read(HKEY_LOCAL_MACHINE), "first");
}

INSTANTIATE_TEST_SUITE_P(
    Files, Setting,
    testing::Values(
        SettingCase{"Plain", "[Software\\TUL\\Shared\\Serializer]\nmodule = /m.so\n", "/m.so"},
        SettingCase{"NoLineEnd", "[Software\\TUL\\Shared\\Serializer]\nmodule=/m.so", "/m.so"},
        SettingCase{"DosLines", "[Software\\TUL\\Shared\\Serializer]\r\nmodule=/m.so\r\n", "/m.so"},
        SettingCase{"Mark", "\xEF\xBB\xBF[Software\\TUL\\Shared\\Serializer]\nmodule=/m.so\n", "/m.so"},
        SettingCase{"Slashes", "[software/tul/shared/serializer]\nMODULE=/m.so\n", "/m.so"},
        SettingCase{"Comments", "# [x]\n[Software\\TUL\\Shared\\Serializer]\n;module=a\nmodule=b\n", "b"},
        SettingCase{"FirstCounts", "[Software\\TUL\\Shared\\Serializer]\nmodule=a\nmodule=b\n", "a"},
        SettingCase{"EqualsInside", "[Software\\TUL\\Shared\\Serializer]\nmodule = a = b \n", "a = b"},
        SettingCase{"Umlaut", "[Software\\TUL\\Shared\\Serializer]\nmodule=\xC3\xA4\n", "\xC3\xA4"},
        SettingCase{"Empty", "", nullptr}, SettingCase{"OtherKey", "[Software]\nmodule=/m.so\n", nullptr},
        SettingCase{"NoKey", "module=/m.so\n", nullptr},
        SettingCase{"OtherName", "[Software\\TUL\\Shared\\Serializer]\nmodules=/m.so\n", nullptr},
        SettingCase{"BrokenKey", "[\n[]\n[Software\\TUL\\Shared\\Serializer\nmodule=/m.so\n", nullptr},
        SettingCase{"TooLong",
                    "[Software\\TUL\\Shared\\Serializer]\nmodule=/a/name/that/is/longer/than/32/units\n",
                    nullptr}),
    test::CaseName());

TEST(Clock, TellsDateAndTime) {
    const SYSTEMTIME time = platform::UtcTime(951'782'400 + 3661);
    EXPECT_EQ(time.wYear, 2000);
    EXPECT_EQ(time.wMonth, 2);
    EXPECT_EQ(time.wDay, 29);
    EXPECT_EQ(time.wDayOfWeek, 2) << "days of the week count from Sunday";
    EXPECT_EQ(time.wHour, 1);
    EXPECT_EQ(time.wMinute, 1);
    EXPECT_EQ(time.wSecond, 1);
    EXPECT_EQ(platform::UtcTime(INT64_MAX).wYear, 0) << "out of the calendar";
    const std::int64_t before = platform::SecondsNow();
    const SYSTEMTIME now = platform::UtcNow();
    const SYSTEMTIME start = platform::UtcTime(before);
    EXPECT_LT(now.wMilliseconds, 1000);
    EXPECT_EQ(now.wYear, start.wYear);
}

TEST(MemoryMapping, IsViewedByItsHandle) {
    MemoryMapping mapping = MemoryMapping::create(10'000);
    ASSERT_TRUE(mapping.isOpen());
    EXPECT_EQ(mapping.size(), 10'000U);
    std::memset(mapping.map(), 'm', 10'000);
    const MemoryView view(mapping.handle(), 20'000, false);
    ASSERT_NE(view.data(), nullptr);
    EXPECT_EQ(view.size(), 10'000U) << "no more than there is";
    EXPECT_EQ(view.data()[9999], 'm');
    ASSERT_TRUE(mapping.resize(20'000));
    EXPECT_EQ(static_cast<char*>(mapping.map())[15'000], 0);

    void* const handle = mapping.release();
    EXPECT_FALSE(mapping.isOpen());
    EXPECT_EQ(MemoryMapping::sizeOf(handle), 20'000U);
    MemoryMapping::adopt(handle).close();
    EXPECT_EQ(MemoryMapping::sizeOf(handle), 0U);
    EXPECT_EQ(MemoryView(handle, 10, false).data(), nullptr);
    EXPECT_EQ(MemoryMapping::sizeOf(nullptr), 0U);
}

TEST(MemoryMapping, OfImpossibleSizeIsNone) {
    EXPECT_FALSE(MemoryMapping::create(SIZE_MAX).isOpen());
    MemoryMapping none = MemoryMapping::create(0);
    EXPECT_EQ(none.map(), nullptr);
}
