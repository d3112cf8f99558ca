#include <odfmodel/package/module_loader.h>

#include "package/paths.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/modules.h"
#include "platform/settings_store.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace SDPackage {

namespace {

namespace platform = ODF::platform;

/// Where the Common path may be, from the executable's folder.
constexpr const char* kCandidates[] = {"././", "./Bin", "./../Bin", "./../../Bin", "./../../../Bin"};
constexpr const char* kSettingsKey = "Software\\TUL\\Shared\\Common9.6";
constexpr const char* kSettingsName = "Common Path";
constexpr std::size_t kPathUnits = 260;
constexpr char kListSeparator = ':';

// What the log calls the place of a failure; numbers of its own, as those of source lines change.
constexpr int kInsertPlace = 1;
constexpr int kNotifyPlace = 2;
constexpr int kFailurePlace = 3;

CTulStringW Text(const std::string& utf8) {
    return CTulStringW(std::string_view(utf8));
}

} // namespace

ModuleLoader::ModuleLoader() : markerFile_(u"libTulCore.so") {}

ModuleLoader::~ModuleLoader() {
    ReleaseLoadedModules();
}

void ModuleLoader::ShowMessage(const CTulStringW& text) const {
    const CTulStringW title(u"DllLoader error");
    if (show_) {
        show_(title, text);
        return;
    }
    const std::string line = title.utf8() + ": " + text.utf8() + '\n';
    std::fputs(line.c_str(), stderr);
}

bool ModuleLoader::FindCommonPath(CTulStringW& out) {
    const std::string home = platform::ExecutableFolder().utf8() + '/';
    const platform::Path marker(markerFile_);
    std::string folder;
    for (const char* const candidate : kCandidates) {
        folder = home + candidate;
        if (!platform::Exists(platform::Path(folder) / marker)) continue;
        out = Text(folder);
        return true;
    }
    if (const auto value =
            platform::ReadSetting(platform::SettingsRoot::Machine, kSettingsKey, kSettingsName)) {
        folder = *value;
        if (!folder.empty() && platform::Exists(platform::Path(folder) / marker)) {
            out = Text(folder);
            return true;
        }
    }
    ShowLoaderError(u"could not find Common path(%s).", Text(folder));
    return false;
}

bool ModuleLoader::FindCommonPath(unsigned short* out) {
    CTulStringW found;
    if (!FindCommonPath(found) || !out || found.GetLength() >= kPathUnits) return false;
    std::copy_n(found.c_str(), found.GetLength() + 1, out);
    return true;
}

void ModuleLoader::InsertCommonPath() {
    isActive_ = true;
    std::string list = platform::GetEnvironment("PATH").value_or(std::string());
    CTulStringW found;
    if (list.empty() || !FindCommonPath(found)) return;
    const std::string common = found.utf8();
    const auto at = list.find(common);
    if (at == 0) return;
    const std::string before = list;
    if (at != std::string::npos) {
        const auto end = at + common.size();
        list.erase(at, common.size() + (end < list.size() && list[end] == kListSeparator ? 1 : 0));
    }
    errno = 0;
    if (platform::SetEnvironment("PATH", common + kListSeparator + list)) return;
    const int error = errno;
    WriteDiagnosticLog(
        u"::SetEnvironmentVariable() Failed. base: %s, line: %d, ::GetLastError: %08X, %%PATH%%: %s\n",
        platform::LibraryPath().text(), kInsertPlace, error, Text(before));
}

void* ModuleLoader::OnDelayLoadNotify(unsigned code, const DelayLoadInfo* info) {
    if (code != DelayLoadPreLoad || !info || !info->moduleName) return nullptr;
    platform::Module module;
    CTulStringW common;
    errno = 0;
    if (isActive_ && FindCommonPath(common))
        module.load(platform::Path(common) / platform::Path(info->moduleName));
    if (!module.isLoaded() && !module.load(info->moduleName)) {
        const int error = errno;
        WriteDiagnosticLog(
            u"::LoadLibrary() Failed. base: %s, line: %d, GetLastError: %08X, szModuleName: %s\n",
            platform::LibraryPath().text(), kNotifyPlace, error, CTulStringW(info->moduleName));
        return nullptr;
    }
    void* const handle = module.release();
    RememberLoadedModule(handle);
    return handle;
}

void* ModuleLoader::OnDelayLoadFailure(unsigned code, const DelayLoadInfo* info) {
    if (code != DelayLoadFailed || !info) return nullptr;
    const CTulStringW name(info->moduleName);
    WriteDiagnosticLog(u"::failureHook() Failed. base: %s, line: %d, GetLastError: %08X, szModuleName: %s\n",
                       platform::LibraryPath().text(), kFailurePlace, info->lastError, name);
    WriteDiagnosticLog(u"%%PATH%%: %s\n", Text(platform::GetEnvironment("PATH").value_or(std::string())));
    ShowLoaderError(
        u"could not find DLL(%s).\ncheck whether Common path was inserted in PATH environment variabale.",
        name);
    return nullptr;
}

void ModuleLoader::RememberLoadedModule(void* module) {
    if (module) loadedModules_.push_back(module);
}

void ModuleLoader::ReleaseLoadedModules() {
    while (!loadedModules_.empty()) {
        platform::Module(loadedModules_.back()).unload();
        loadedModules_.pop_back();
    }
}

} // namespace SDPackage
