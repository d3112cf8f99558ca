#include <odfmodel/package/module_loader.h>

#include "package/paths.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "system/clock.h"

#include <odfmodel/core/date_time.h>

#include <optional>
#include <string>

namespace SDPackage {

namespace {

namespace platform = ODF::platform;

/// The folder of the log, made when it is missing; nothing when that fails.
std::optional<platform::Path> LogFolder() {
    const auto value = [](const char* name) {
        return platform::GetEnvironment(name).value_or(std::string());
    };
    if (const std::string data = value("APPDATA"); !data.empty()) {
        // One level only: an installation has made the rest.
        const platform::Path folder = data + (data.ends_with('/') ? "TUL/User" : "/TUL/User");
        if (!platform::CreateFolder(folder)) return std::nullopt;
        return folder;
    }
    std::string state = value("XDG_STATE_HOME");
    if (!state.starts_with('/')) {
        const std::string home = value("HOME");
        if (home.empty()) return std::nullopt;
        state = home + "/.local/state";
    }
    const platform::Path folder = platform::Path(state) / platform::Path("Tul");
    if (!platform::CreateFolders(folder, true)) return std::nullopt;
    return folder;
}

/// The text in 16-bit units, low byte first.
std::string ToBytes(Units text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

} // namespace

void ModuleLoader::WriteLogRecord(const CTulStringW& text) const {
    const auto folder = LogFolder();
    if (!folder) return;
    const SYSTEMTIME now = ODF::system::LocalNow();
    CTulStringW name;
    name.Format(u"%04d%02d%02d.log", now.wYear, now.wMonth, now.wDay);
    CTulStringW record;
    record.Format(u"[%02d:%02d:%02d]%s", now.wHour, now.wMinute, now.wSecond, text);
    const platform::Path file = *folder / platform::Path(name);
    const bool isNew = platform::FileSize(file).value_or(0) == 0;
    platform::AppendFile(file, ToBytes(std::u16string(isNew ? u"\xFEFF" : u"").append(record.view())));
}

} // namespace SDPackage
