#pragma once

#include <cstddef>

namespace test {

/// The system calls that can be made to fail.
enum class Call : unsigned {
    Open = 1,  ///< open, openat
    Read = 2,  ///< read, pread
    Write = 4, ///< write, pwrite
    Sync = 8,  ///< fsync, fdatasync
    Rename = 16,
    Folder = 32, ///< mkdir, mkdirat
    Map = 64,    ///< mmap
    All = 127
};

/// From its making to its end counts the process's calls of some kinds and lets one of them fail.
class FailingCall {
public:
    /// `number` counts from 1; 0 lets none fail. `error` is what `errno` becomes.
    FailingCall(Call calls, std::size_t number, int error) noexcept;
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;
    ~FailingCall();

    bool hasFailed() const noexcept;
    std::size_t count() const noexcept;
};

} // namespace test
