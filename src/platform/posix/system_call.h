#pragma once

#include "platform/path.h"

#include <cerrno>
#include <csignal>
#include <string>

namespace ODF::platform::posix {

/// The name as a C string; a name with a 0 byte inside can't reach the system and becomes the empty name,
/// which nothing bears.
inline const char* Native(const std::string& name) noexcept {
    return name.find('\0') == std::string::npos ? name.c_str() : "";
}
inline const char* Native(const Path& path) noexcept {
    return Native(path.utf8());
}

/// Repeats a call that a signal interrupted.
template<typename Call>
auto Retry(Call call) noexcept(noexcept(call())) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Writes everything, in as many calls as it takes.
bool WriteAll(int descriptor, const void* data, std::size_t byteCount) noexcept;
/// Reads until `byteCount` bytes are there or the file ends; -1 on a fault.
std::ptrdiff_t ReadAllAt(int descriptor, std::uint64_t offset, void* buffer, std::size_t byteCount) noexcept;
/// Bytes of the regular file behind the descriptor; -1 when it is none.
std::int64_t RegularSize(int descriptor) noexcept;

/// While it lives, writing to a pipe that nobody reads fails on this thread instead of ending the process.
class NoPipeSignal {
public:
    NoPipeSignal() noexcept;
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;
    ~NoPipeSignal();

private:
    sigset_t before_{};
    bool isActive_ = false;
};

} // namespace ODF::platform::posix
