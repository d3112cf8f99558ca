#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Configuration values by key and name, read from text files.
///
/// The file is `odfmodel/settings.ini` below `$XDG_CONFIG_HOME` (else `~/.config`) for the user, and below
/// each folder of `$XDG_CONFIG_DIRS` (else `/etc`) for the machine, where the first file that has the value
/// counts. A section is a key, its lines are values; `#` or `;` starts a comment line. Keys and names are
/// compared without regard to the case of ASCII letters, blanks around names and values don't count.
///
///     [Software\TUL\Shared\Serializer]
///     module = /usr/lib/userdata.so
namespace ODF::platform {

enum class SettingsRoot { User, Machine };

/// The value `name` of `key`, with `\` or `/` between the steps of the key; nothing when there is none. The
/// files are read again at each call.
std::optional<std::string> ReadSetting(SettingsRoot root, std::string_view key, std::string_view name);
/// Whether the key is in a file of that root.
bool HasSettingsKey(SettingsRoot root, std::string_view key);

} // namespace ODF::platform
