#include "platform/settings_store.h"

#include "platform/environment.h"
#include "platform/files.h"

#include <algorithm>
#include <vector>

namespace ODF::platform {

namespace {

// Far above any honest settings file.
constexpr std::uint64_t kMaxFile = std::uint64_t{1} << 20;

std::string_view Trim(std::string_view text) noexcept {
    constexpr std::string_view blanks = " \t\r";
    const auto start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

char Folded(char unit) noexcept {
    if (unit >= 'A' && unit <= 'Z') return static_cast<char>(unit - 'A' + 'a');
    return unit == '/' ? '\\' : unit;
}

bool SameName(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Folded(x) == Folded(y); });
}

std::vector<Path> Files(SettingsRoot root) {
    const Path file = "odfmodel/settings.ini";
    std::vector<Path> files;
    // A relative folder in these variables is void, as everywhere on the desktop.
    const auto addFolder = [&](std::string_view folder) {
        if (!folder.empty() && folder.front() == '/') files.push_back(Path(folder) / file);
    };
    if (root == SettingsRoot::User) {
        addFolder(GetEnvironment("XDG_CONFIG_HOME").value_or(std::string()));
        const std::string home = GetEnvironment("HOME").value_or(std::string());
        if (files.empty() && !home.empty()) addFolder(home + "/.config");
        return files;
    }
    const std::string folders = GetEnvironment("XDG_CONFIG_DIRS").value_or(std::string());
    for (std::size_t start = 0; start < folders.size();) {
        const auto end = std::min(folders.find(':', start), folders.size());
        addFolder(std::string_view(folders).substr(start, end - start));
        start = end + 1;
    }
    if (files.empty()) addFolder("/etc");
    return files;
}

/// Hands every line of the section `key` to `visit`, the section's own line as an empty one.
template<typename Visit>
void VisitSection(const Path& file, std::string_view key, Visit visit) {
    const auto data = ReadFile(file, kMaxFile);
    if (!data) return;
    std::string_view rest(reinterpret_cast<const char*>(data->data()), data->size());
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    bool isInside = false;
    while (!rest.empty()) {
        const auto end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = Trim(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.empty() || line.front() == '#' || line.front() == ';') continue;
        if (line.front() == '[') {
            isInside = line.back() == ']' && SameName(Trim(line.substr(1, line.size() - 2)), key);
            if (isInside) visit(std::string_view());
        } else if (isInside) {
            visit(line);
        }
    }
}

} // namespace

std::optional<std::string> ReadSetting(SettingsRoot root, std::string_view key, std::string_view name) {
    for (const Path& file : Files(root)) {
        std::optional<std::string> value;
        VisitSection(file, key, [&](std::string_view line) {
            const auto equals = line.find('=');
            if (value || equals == std::string_view::npos || !SameName(Trim(line.substr(0, equals)), name))
                return;
            value = std::string(Trim(line.substr(equals + 1)));
        });
        if (value) return value;
    }
    return std::nullopt;
}

bool HasSettingsKey(SettingsRoot root, std::string_view key) {
    bool isFound = false;
    for (const Path& file : Files(root))
        VisitSection(file, key, [&](std::string_view) { isFound = true; });
    return isFound;
}

} // namespace ODF::platform
