#include "platform/files.h"

#include "platform/posix/system_call.h"

#include <fcntl.h>
#include <stdlib.h> // NOLINT(modernize-deprecated-headers): realpath is POSIX
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>

namespace ODF::platform {

namespace {

using posix::Native;

FileKind ToKind(mode_t mode) noexcept {
    if (S_ISREG(mode)) return FileKind::File;
    if (S_ISDIR(mode)) return FileKind::Folder;
    if (S_ISLNK(mode)) return FileKind::Link;
    return FileKind::Other;
}

std::span<const unsigned char> Bytes(std::string_view text) noexcept {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

bool CopyContents(const Path& from, OutputFile& to) {
    const InputFile source(from);
    if (!source.isOpen()) return false;
    std::vector<unsigned char> buffer(std::size_t{1} << 18);
    for (std::uint64_t offset = 0;;) {
        const std::ptrdiff_t count = source.readAt(offset, buffer.data(), buffer.size());
        if (count < 0) return false;
        if (count == 0) return true;
        if (!to.write(buffer.data(), static_cast<std::size_t>(count))) return false;
        offset += static_cast<std::uint64_t>(count);
    }
}

} // namespace

FileKind KindOf(const Path& path) {
    struct stat status {};
    return stat(Native(path), &status) == 0 ? ToKind(status.st_mode) : FileKind::None;
}

bool Exists(const Path& path) {
    return KindOf(path) != FileKind::None;
}

bool IsTaken(const Path& path) {
    struct stat status {};
    return lstat(Native(path), &status) == 0;
}

bool IsFile(const Path& path) {
    return KindOf(path) == FileKind::File;
}

bool IsFolder(const Path& path) {
    return KindOf(path) == FileKind::Folder;
}

bool IsReadable(const Path& path) {
    return faccessat(AT_FDCWD, Native(path), R_OK, AT_EACCESS) == 0;
}

std::string LastFault() {
    return std::generic_category().message(errno);
}

std::uint64_t NameCount(const Path& path) {
    struct stat status {};
    return stat(Native(path), &status) == 0 ? status.st_nlink : 0;
}

std::optional<std::uint64_t> FileSize(const Path& path) {
    struct stat status {};
    if (stat(Native(path), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::vector<unsigned char>> ReadFile(const Path& path, std::uint64_t maximum) {
    const InputFile file(path);
    if (!file.isOpen() || file.size() > maximum) return std::nullopt;
    std::vector<unsigned char> data(static_cast<std::size_t>(file.size()));
    const std::ptrdiff_t count = file.readAt(0, data.data(), data.size());
    if (count < 0) return std::nullopt;
    data.resize(static_cast<std::size_t>(count));
    return data;
}

bool WriteFile(const Path& path, std::span<const unsigned char> data) {
    OutputFile file;
    return file.create(path) && file.write(data.data(), data.size()) && file.close();
}

bool WriteFile(const Path& path, std::string_view data) {
    return WriteFile(path, Bytes(data));
}

bool AppendFile(const Path& path, std::string_view data) {
    const int descriptor =
        posix::Retry([&] { return ::open(Native(path), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666); });
    if (descriptor < 0) return false;
    const bool isWritten = posix::WriteAll(descriptor, data.data(), data.size());
    return ::close(descriptor) == 0 && isWritten;
}

bool CreateFolder(const Path& path) {
    return mkdir(Native(path), 0777) == 0 || (errno == EEXIST && IsFolder(path));
}

bool CreateFolders(const Path& path, bool isPrivate) {
    const std::string& whole = path.utf8();
    if (whole.empty() || whole.find('\0') != std::string::npos) return false;
    if (IsFolder(path)) return true;
    const mode_t mode = isPrivate ? 0700 : 0777;
    for (std::size_t end = whole.find('/', 1);; end = whole.find('/', end + 1)) {
        const std::string step = whole.substr(0, end);
        if (mkdir(step.c_str(), mode) != 0 && errno != EEXIST && !IsFolder(step)) return false;
        if (end == std::string::npos) return IsFolder(path);
    }
}

bool RenameReplacing(const Path& from, const Path& to) {
    return rename(Native(from), Native(to)) == 0;
}

void FlushFolder(const Path& folder) noexcept {
    const int descriptor =
        posix::Retry([&] { return ::open(Native(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor < 0) return; // one may write in a folder that one may not read
    posix::Retry([&] { return fsync(descriptor); });
    ::close(descriptor);
}

bool MoveReplacing(const Path& from, const Path& to) {
    if (RenameReplacing(from, to)) return true;
    if (errno != EXDEV) return false;
    // Not by way of a copy onto the target itself, which a full medium would leave cut off.
    const Path beside = to.parent() / Path(to.name().substr(0, 200) + ".moving");
    OutputFile copy;
    if (!copy.createNew(beside)) return false;
    copy.takeModeOf(IsFile(to) ? to : from);
    const bool isMoved =
        CopyContents(from, copy) && copy.flushToDisk() && copy.close() && RenameReplacing(beside, to);
    RemoveFile(isMoved ? from : beside);
    return isMoved;
}

bool RemoveFile(const Path& path) {
    return unlink(Native(path)) == 0;
}

InputFile& InputFile::operator=(InputFile&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

bool InputFile::open(const Path& path) {
    close();
    // Without O_NONBLOCK a pipe at that name would hold the caller until someone writes to it.
    descriptor_ =
        posix::Retry([&] { return ::open(Native(path), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    if (descriptor_ >= 0 && posix::RegularSize(descriptor_) < 0) close();
    return isOpen();
}

void InputFile::close() noexcept {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

std::uint64_t InputFile::size() const noexcept {
    const std::int64_t bytes = posix::RegularSize(descriptor_);
    return bytes < 0 ? 0 : static_cast<std::uint64_t>(bytes);
}

std::ptrdiff_t InputFile::readAt(std::uint64_t offset, void* buffer, std::size_t byteCount) const noexcept {
    return posix::ReadAllAt(descriptor_, offset, buffer, byteCount);
}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = std::exchange(other.descriptor_, -1);
        isPipe_ = other.isPipe_;
    }
    return *this;
}

bool OutputFile::create(const Path& path) {
    close();
    struct stat status {};
    isPipe_ = stat(Native(path), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
    if (isPipe_ && S_ISFIFO(status.st_mode)) {
        // Opened for reading too, a pipe that nobody reads would take a piece and lose it.
        descriptor_ = posix::Retry([&] { return ::open(Native(path), O_WRONLY | O_CLOEXEC | O_NONBLOCK); });
        if (isOpen() && fcntl(descriptor_, F_SETFL, 0) != 0) close(); // but wait for a slow reader
        return isOpen();
    }
    descriptor_ = posix::Retry(
        [&] { return ::open(Native(path), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666); });
    if (descriptor_ < 0 && errno == EACCES) // a file or device that may be written but not read
        descriptor_ = posix::Retry(
            [&] { return ::open(Native(path), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666); });
    return isOpen();
}

bool OutputFile::createNew(const Path& path, unsigned mode) {
    close();
    isPipe_ = false;
    descriptor_ = posix::Retry(
        [&] { return ::open(Native(path), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode); });
    return isOpen();
}

bool OutputFile::openPresent(const Path& path) {
    close();
    isPipe_ = false;
    descriptor_ = posix::Retry([&] { return ::open(Native(path), O_RDWR | O_NOFOLLOW | O_CLOEXEC); });
    return isOpen();
}

bool OutputFile::write(const void* data, std::size_t byteCount) noexcept {
    std::optional<posix::NoPipeSignal> quiet;
    if (isPipe_) quiet.emplace();
    return posix::WriteAll(descriptor_, data, byteCount);
}

bool OutputFile::writeAt(std::uint64_t offset, const void* data, std::size_t byteCount) noexcept {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (byteCount > 0) {
        const ssize_t count =
            posix::Retry([&] { return pwrite(descriptor_, bytes, byteCount, static_cast<off_t>(offset)); });
        if (count <= 0) return false;
        bytes += count;
        offset += static_cast<std::uint64_t>(count);
        byteCount -= static_cast<std::size_t>(count);
    }
    return true;
}

std::ptrdiff_t OutputFile::readAt(std::uint64_t offset, void* buffer, std::size_t byteCount) const noexcept {
    return posix::ReadAllAt(descriptor_, offset, buffer, byteCount);
}

void OutputFile::takeModeOf(const Path& path) noexcept {
    struct stat wanted {};
    struct stat present {};
    if (stat(Native(path), &wanted) != 0 || fstat(descriptor_, &present) != 0) return;
    if (wanted.st_uid != present.st_uid || wanted.st_gid != present.st_gid) {
        const int changed = fchown(descriptor_, wanted.st_uid, wanted.st_gid);
        // Only the group's own rights would go to the wrong people when the owner can't be kept.
        if (changed != 0 && fchown(descriptor_, static_cast<uid_t>(-1), wanted.st_gid) != 0)
            wanted.st_mode &= ~static_cast<mode_t>(S_IRWXG);
    }
    const int ignored = fchmod(descriptor_, wanted.st_mode & 0777);
    static_cast<void>(ignored); // the file then keeps the rights of a new one
}

bool OutputFile::createNameless(const Path& folder, unsigned mode) {
    close();
    isPipe_ = false;
    descriptor_ = posix::Retry([&] { return ::open(Native(folder), O_TMPFILE | O_RDWR | O_CLOEXEC, mode); });
    return isOpen();
}

bool OutputFile::giveName(const Path& name) noexcept {
    std::array<char, 32> own{};
    std::snprintf(own.data(), own.size(), "/proc/self/fd/%d", descriptor_);
    return linkat(AT_FDCWD, own.data(), AT_FDCWD, Native(name), AT_SYMLINK_FOLLOW) == 0;
}

bool OutputFile::takeAttributesOf(const Path& path) {
    const ssize_t size = listxattr(Native(path), nullptr, 0);
    if (size <= 0) return size == 0 || errno == ENOTSUP || errno == ENOENT;
    std::vector<char> names(static_cast<std::size_t>(size));
    const ssize_t listed = listxattr(Native(path), names.data(), names.size());
    if (listed < 0) return false;
    bool isWhole = true;
    for (std::size_t at = 0; at < static_cast<std::size_t>(listed);) {
        const char* const name = names.data() + at;
        at += std::strlen(name) + 1;
        const ssize_t length = getxattr(Native(path), name, nullptr, 0);
        std::vector<char> value(length > 0 ? static_cast<std::size_t>(length) : 0);
        const ssize_t got = length < 0 ? length : getxattr(Native(path), name, value.data(), value.size());
        // What the system labels files with by itself the new file has already.
        const bool isSet =
            got >= 0 && fsetxattr(descriptor_, name, value.data(), static_cast<std::size_t>(got), 0) == 0;
        if (!isSet && std::string_view(name).starts_with("user.")) isWhole = false;
    }
    return isWhole;
}

bool OutputFile::claim() noexcept {
    return posix::Retry([&] { return flock(descriptor_, LOCK_EX | LOCK_NB); }) == 0;
}

bool OutputFile::flushToDisk() noexcept {
    return posix::Retry([&] { return fsync(descriptor_); }) == 0;
}

bool OutputFile::close() noexcept {
    return descriptor_ < 0 || ::close(std::exchange(descriptor_, -1)) == 0;
}

Path ResolveLinks(const Path& target) {
    Path current = target;
    // The file after the last link needn't exist, so the links are followed one by one.
    for (int steps = 0; steps < 40; ++steps) {
        std::array<char, PATH_MAX> text{};
        const ssize_t length = readlink(Native(current), text.data(), text.size());
        if (length <= 0 || static_cast<std::size_t>(length) >= text.size()) return current;
        const std::string to(text.data(), static_cast<std::size_t>(length));
        current = to.front() == '/' ? Path(to) : Path(current.parent().utf8() + '/' + to);
    }
    return {};
}

} // namespace ODF::platform
