#include "faults/failing_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace {

std::atomic<unsigned> kinds{0};
std::atomic<std::size_t> failing{0};
std::atomic<std::size_t> counted{0};
std::atomic<int> errorNumber{0};

bool IsRefused(test::Call call) noexcept {
    if ((kinds.load(std::memory_order_relaxed) & static_cast<unsigned>(call)) == 0) return false;
    if (counted.fetch_add(1) + 1 != failing.load()) return false;
    errno = errorNumber.load();
    return true;
}

/// The C library's function of that name.
template<typename Function>
Function Next(const char* name) noexcept {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

mode_t ModeOf(int flags, std::va_list arguments) noexcept {
    const bool isCreating = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return isCreating ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

} // namespace

namespace test {

FailingCall::FailingCall(Call calls, std::size_t number, int error) noexcept {
    failing = number;
    counted = 0;
    errorNumber = error;
    kinds = static_cast<unsigned>(calls);
}

FailingCall::~FailingCall() {
    kinds = 0;
}

bool FailingCall::hasFailed() const noexcept {
    return failing != 0 && counted >= failing;
}

std::size_t FailingCall::count() const noexcept {
    return counted;
}

} // namespace test

using test::Call;

#pragma GCC visibility push(default) // the library shall find these instead of the C library's
extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    static const auto next = Next<int (*)(const char*, int, ...)>("open");
    return IsRefused(Call::Open) ? -1 : next(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    static const auto next = Next<int (*)(int, const char*, int, ...)>("openat");
    return IsRefused(Call::Open) ? -1 : next(folder, path, flags, mode);
}

ssize_t read(int descriptor, void* buffer, std::size_t byteCount) {
    static const auto next = Next<ssize_t (*)(int, void*, std::size_t)>("read");
    return IsRefused(Call::Read) ? -1 : next(descriptor, buffer, byteCount);
}

ssize_t pread(int descriptor, void* buffer, std::size_t byteCount, off_t offset) {
    static const auto next = Next<ssize_t (*)(int, void*, std::size_t, off_t)>("pread");
    return IsRefused(Call::Read) ? -1 : next(descriptor, buffer, byteCount, offset);
}

ssize_t write(int descriptor, const void* buffer, std::size_t byteCount) {
    static const auto next = Next<ssize_t (*)(int, const void*, std::size_t)>("write");
    return IsRefused(Call::Write) ? -1 : next(descriptor, buffer, byteCount);
}

ssize_t pwrite(int descriptor, const void* buffer, std::size_t byteCount, off_t offset) {
    static const auto next = Next<ssize_t (*)(int, const void*, std::size_t, off_t)>("pwrite");
    return IsRefused(Call::Write) ? -1 : next(descriptor, buffer, byteCount, offset);
}

int fsync(int descriptor) {
    static const auto next = Next<int (*)(int)>("fsync");
    return IsRefused(Call::Sync) ? -1 : next(descriptor);
}

int fdatasync(int descriptor) {
    static const auto next = Next<int (*)(int)>("fdatasync");
    return IsRefused(Call::Sync) ? -1 : next(descriptor);
}

int rename(const char* from, const char* to) noexcept {
    static const auto next = Next<int (*)(const char*, const char*)>("rename");
    return IsRefused(Call::Rename) ? -1 : next(from, to);
}

int mkdir(const char* path, mode_t mode) noexcept {
    static const auto next = Next<int (*)(const char*, mode_t)>("mkdir");
    return IsRefused(Call::Folder) ? -1 : next(path, mode);
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    static const auto next = Next<int (*)(int, const char*, mode_t)>("mkdirat");
    return IsRefused(Call::Folder) ? -1 : next(folder, path, mode);
}

void* mmap(void* place, std::size_t byteCount, int protection, int flags, int descriptor,
           off_t offset) noexcept {
    static const auto next = Next<void* (*)(void*, std::size_t, int, int, int, off_t)>("mmap");
    return IsRefused(Call::Map) ? MAP_FAILED : next(place, byteCount, protection, flags, descriptor, offset);
}

} // extern "C"
#pragma GCC visibility pop
