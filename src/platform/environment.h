#pragma once

#include "platform/path.h"

#include <optional>
#include <string>

namespace ODF::platform {

/// The value of an environment variable; nothing when it isn't set.
std::optional<std::string> GetEnvironment(const std::string& name);
/// Sets a variable of this process. As the system's own call, it isn't safe beside threads that read
/// variables.
bool SetEnvironment(const std::string& name, const std::string& value);

/// The file of the running program; empty when the system doesn't tell.
Path ExecutablePath();
/// The folder of the running program.
Path ExecutableFolder();
/// The file of the library that this code is part of.
Path LibraryPath();

} // namespace ODF::platform
