#include <odfmodel/serial/base_library.h>

#include "platform/files.h"
#include "platform/modules.h"
#include "platform/settings_store.h"
#include "platform/temporary.h"

#include <algorithm>
#include <memory>

namespace {

using namespace ODF;

constexpr unsigned kReadAccess = 0x80000000U;
constexpr unsigned kExistingFile = 3;

/// Puts `text` with its terminator into the caller's buffer, or the empty text when it doesn't fit.
bool CopyOut(std::string_view text, unsigned short* buffer, int capacity) {
    if (!buffer || capacity <= 0) return false;
    *buffer = 0;
    const std::u16string units = ToUtf16(text);
    if (units.size() >= static_cast<std::size_t>(capacity)) return false;
    *std::copy(units.begin(), units.end(), buffer) = 0;
    return true;
}

} // namespace

TulFileHandle TulCreateFile(const unsigned short* path, unsigned access, unsigned /*share*/,
                            void* /*security*/, unsigned disposition, unsigned /*attributes*/,
                            TulFileHandle /*templateFile*/) {
    if (access != kReadAccess || disposition != kExistingFile) return nullptr;
    auto file = std::make_unique<platform::InputFile>(path);
    return file->isOpen() ? file.release() : nullptr;
}

int TulCloseFile(TulFileHandle file) {
    const std::unique_ptr<platform::InputFile> owner(static_cast<platform::InputFile*>(file));
    return owner ? 1 : 0;
}

int TulDeleteFile(const unsigned short* path) {
    return platform::RemoveFile(path) ? 1 : 0;
}

int TulFileExist(const unsigned short* path) {
    return platform::IsFile(path) ? 1 : 0;
}

int TulExistDir(const unsigned short* path) {
    return platform::IsTaken(path) ? 1 : 0;
}

int TulPathMakeTemp(const unsigned short* prefix, const unsigned short* /*reserved*/, unsigned short* buffer,
                    int capacity) {
    const platform::Path file = platform::CreateTemporaryFile(ToUtf8(prefix), ".tmp");
    const bool fits = CopyOut(file.utf8(), buffer, capacity);
    if (!fits && !file.empty()) platform::RemoveFile(file);
    return fits && !file.empty() ? 1 : 0;
}

TulModuleHandle TulLoadLibraryModulePath(const unsigned short* path) {
    platform::Module module;
    module.load(path);
    return module.release();
}

void* TulGetProcAddress(TulModuleHandle module, const char* name) {
    platform::Module borrowed(module);
    void* const address = name ? borrowed.symbol(name) : nullptr;
    borrowed.release();
    return address;
}

void TulFreeLibrary(TulModuleHandle module) {
    platform::Module(module).unload();
}

CTulRegistry::CTulRegistry(const unsigned short* subKey, HKEY root, int /*flags*/)
    : key_(subKey), root_(root) {}

int CTulRegistry::GetStringValue(const unsigned short* subKey, const unsigned short* valueName,
                                 unsigned short* buffer, int capacity) const {
    if (buffer && capacity > 0) *buffer = 0;
    std::string key = key_.utf8();
    if (subKey && *subKey) key += '\\' + ToUtf8(subKey);
    const auto root =
        root_ == HKEY_LOCAL_MACHINE ? platform::SettingsRoot::Machine : platform::SettingsRoot::User;
    const auto value = platform::ReadSetting(root, key, ToUtf8(valueName));
    return value && CopyOut(*value, buffer, capacity) ? 1 : 0;
}
