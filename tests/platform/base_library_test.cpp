// The functions of the base library, the configuration store, clock and mappings.

#include "support/workspace.h"
#include "system/clock.h"

#include <odfmodel/core/date_time.h>
#include <odfmodel/platform/memory_mapping.h>
#include <odfmodel/serial/base_library.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

using namespace ODF;

namespace {

class BaseLibrary : public test::InWorkspace<> {
protected:
    CTulStringW at(std::string_view name) const { return CTulStringW(file(name)); }
};

std::string Text(const unsigned short* units) {
    return ToUtf8(units);
}

} // namespace

TEST_F(BaseLibrary, AnOpenFileStaysReadableWhenItsNameGoes) {
    test::WriteFile(file("f"), "x");
    const TulFileHandle handle = TulOpenFile(at("f").view());
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(TulDeleteFile(at("f").c_str()), 0);
    EXPECT_EQ(TulFileExist(at("f").c_str()), 0);
    EXPECT_NE(TulCloseFile(handle), 0);
    EXPECT_EQ(TulCloseFile(nullptr), 0);
    EXPECT_EQ(TulOpenFile(at("f").view()), nullptr);
    EXPECT_EQ(TulDeleteFile(at("f").c_str()), 0);
    EXPECT_EQ(TulCreateFile(at("").c_str(), 0x80000000U, 3, nullptr, 3, 128, nullptr), nullptr) << "no file";
}

TEST_F(BaseLibrary, SomethingStandsThere) {
    test::WriteFile(file("f"), "x");
    std::filesystem::create_symlink("nowhere", file("broken"));
    for (const char* const name : {"f", "", "broken", "missing"})
        EXPECT_EQ(TulExistDir(at(name).c_str()) != 0, std::string_view(name) != "missing") << name;
    EXPECT_NE(TulFileExist(at("f").c_str()), 0);
    EXPECT_EQ(TulFileExist(at("").c_str()), 0) << "a folder is no file";
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

namespace {

/// The value "module" of the key that the user data module stands under, or "(none)".
std::string ReadModule(HKEY root) {
    std::array<unsigned short, 32> buffer{};
    const CTulRegistry registry(u"Software\\TUL\\Shared\\Serializer", root);
    return registry.GetStringValue(u"module", buffer.data(), 32) != 0 ? Text(buffer.data()) : "(none)";
}

} // namespace

TEST_F(BaseLibrary, ASettingIsReadForUserAndMachine) {
    for (const char* const folder : {"user/odfmodel", "first/odfmodel", "second/odfmodel"})
        std::filesystem::create_directories(file(folder));
    const test::ScopedVariable user("XDG_CONFIG_HOME", file("user"));
    const test::ScopedVariable machine("XDG_CONFIG_DIRS", file("first") + ':' + file("second"));
    const std::string key = "[Software\\TUL\\Shared\\Serializer]";
    const std::pair<std::string, std::string> kRows[] = {
        {key + "\nmodule = /m.so\n", "/m.so"},
        {key + "\nmodule=/m.so", "/m.so"},
        {key + "\r\nmodule=/m.so\r\n", "/m.so"},
        {"\xEF\xBB\xBF" + key + "\nmodule=/m.so\n", "/m.so"},
        {"[software/tul/shared/serializer]\nMODULE=/m.so\n", "/m.so"},
        {"# [x]\n" + key + "\n;module=a\nmodule=b\n", "b"},
        {key + "\nmodule=a\nmodule=b\n", "a"},
        {key + "\nmodule = a = b \n", "a = b"},
        {key + "\nmodule=\xC3\xA4\n", "\xC3\xA4"},
        {"", "(none)"},
        {"[Software]\nmodule=/m.so\n", "(none)"},
        {"module=/m.so\n", "(none)"},
        {key + "\nmodules=/m.so\n", "(none)"},
        {"[\n[]\n" + key.substr(0, key.size() - 1) + "\nmodule=/m.so\n", "(none)"},
        {key + "\nmodule=/a/name/that/is/longer/than/32/units\n", "(none)"}};
    for (const auto& [contents, expected] : kRows) {
        SCOPED_TRACE(contents);
        test::WriteFile(file("user/odfmodel/settings.ini"), contents);
        EXPECT_EQ(ReadModule(HKEY_CURRENT_USER), expected);
        EXPECT_EQ(ReadModule(HKEY_LOCAL_MACHINE), "(none)");
        test::WriteFile(file("second/odfmodel/settings.ini"), contents);
        EXPECT_EQ(ReadModule(HKEY_LOCAL_MACHINE), expected);
        test::WriteFile(file("first/odfmodel/settings.ini"), key + "\nmodule=first\n");
        EXPECT_EQ(ReadModule(HKEY_LOCAL_MACHINE), "first");
        for (const char* const folder : {"first", "second"})
            std::filesystem::remove(file(folder) + "/odfmodel/settings.ini");
    }
}

TEST(Clock, TellsDateAndTime) {
    const SYSTEMTIME time = system::UtcTime(951'782'400 + 3661);
    EXPECT_EQ(time, (SYSTEMTIME{2000, 2, 2, 29, 1, 1, 1, 0})) << "days of the week count from Sunday";
    EXPECT_EQ(system::UtcTime(INT64_MAX).wYear, 0) << "out of the calendar";
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
