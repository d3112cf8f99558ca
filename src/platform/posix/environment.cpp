#include "platform/environment.h"

#include <dlfcn.h>
#include <limits.h> // NOLINT(modernize-deprecated-headers): PATH_MAX is POSIX
#include <stdlib.h> // NOLINT(modernize-deprecated-headers): setenv is POSIX
#include <unistd.h>

#include <array>

namespace ODF::platform {

std::optional<std::string> GetEnvironment(const std::string& name) {
    const char* const value = getenv(name.c_str()); // NOLINT(concurrency-mt-unsafe)
    return value ? std::optional<std::string>(value) : std::nullopt;
}

bool SetEnvironment(const std::string& name, const std::string& value) {
    return setenv(name.c_str(), value.c_str(), 1) == 0; // NOLINT(concurrency-mt-unsafe)
}

Path ExecutablePath() {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlink("/proc/self/exe", text.data(), text.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= text.size()) return {};
    return std::string(text.data(), static_cast<std::size_t>(length));
}

Path ExecutableFolder() {
    const Path program = ExecutablePath();
    return program.empty() ? Path() : program.parent();
}

Path LibraryPath() {
    Dl_info info{};
    // Any address of this library serves.
    if (dladdr(reinterpret_cast<const void*>(&LibraryPath), &info) == 0 || !info.dli_fname) return {};
    return Absolute(info.dli_fname);
}

} // namespace ODF::platform
