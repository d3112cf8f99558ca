#include "io/input.h"

#include "console.h"

#include <odfmodel/core/limits.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace command {
namespace {

constexpr const char* kPath = "/dev/stdin";

bool WriteAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(file, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

/// Copies the standard input into `file`, one byte beyond the bound at most, so that what is too large is
/// told by whoever opens it.
bool CopyInput(int file) {
    const std::uint64_t most = ODF::Limits().totalBytes + 1;
    std::array<char, 1U << 16> piece{};
    for (std::uint64_t copied = 0; copied < most;) {
        const ssize_t count = read(STDIN_FILENO, piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) return true;
        if (count < 0 || !WriteAll(file, piece.data(), static_cast<std::size_t>(count))) return false;
        copied += static_cast<std::uint64_t>(count);
    }
    return true;
}

} // namespace

std::string InputPath(const std::string& argument) {
    if (argument.empty()) Complain({}, "an empty name names no file");
    if (argument != kStandardStream) return argument;
    struct stat kind {};
    if (fstat(STDIN_FILENO, &kind) == 0 && S_ISREG(kind.st_mode)) return kPath;
    // A file in memory takes the place of the pipe; opened by its path it begins at its start each time.
    const int file = memfd_create("input", MFD_CLOEXEC);
    const bool isCopied = file >= 0 && CopyInput(file) && dup2(file, STDIN_FILENO) >= 0;
    const int cause = errno;
    if (file >= 0) close(file);
    if (isCopied) return kPath;
    Complain(kStandardStream, std::string("the standard input can't be read: ") + std::strerror(cause));
    return {};
}

void HoldStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0) // the lowest free number is this one
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

} // namespace command
