#include "platform/posix/system_call.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>

namespace ODF::platform::posix {

namespace {
// Linux moves at most this much in one call.
constexpr std::size_t kMaxPiece = std::size_t{1} << 30;
} // namespace

NoPipeSignal::NoPipeSignal() noexcept {
    sigset_t pending;
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    // One that waits already is somebody else's.
    if (sigpending(&pending) != 0 || sigismember(&pending, SIGPIPE) == 1) return;
    isActive_ = pthread_sigmask(SIG_BLOCK, &pipe, &before_) == 0;
}

NoPipeSignal::~NoPipeSignal() {
    if (!isActive_) return;
    const int error = errno;
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    constexpr timespec now{};
    while (sigtimedwait(&pipe, nullptr, &now) == -1 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
}

bool WriteAll(int descriptor, const void* data, std::size_t byteCount) noexcept {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (byteCount > 0) {
        const ssize_t count =
            Retry([&] { return ::write(descriptor, bytes, std::min(byteCount, kMaxPiece)); });
        if (count <= 0) return false;
        bytes += count;
        byteCount -= static_cast<std::size_t>(count);
    }
    return true;
}

std::ptrdiff_t ReadAllAt(int descriptor, std::uint64_t offset, void* buffer, std::size_t byteCount) noexcept {
    auto* bytes = static_cast<unsigned char*>(buffer);
    std::size_t done = 0;
    while (done < byteCount) {
        const ssize_t count = Retry([&] {
            return ::pread(descriptor, bytes + done, std::min(byteCount - done, kMaxPiece),
                           static_cast<off_t>(offset + done));
        });
        if (count < 0) return -1;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<std::ptrdiff_t>(done);
}

std::int64_t RegularSize(int descriptor) noexcept {
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return -1;
    return status.st_size;
}

} // namespace ODF::platform::posix
