#include "platform/files.h"
#include "platform/posix/system_call.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ODF::platform {

MappedFile::MappedFile(MappedFile&& other) noexcept
    : bytes_(std::exchange(other.bytes_, {})), isOpen_(std::exchange(other.isOpen_, false)) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    if (this != &other) {
        close();
        bytes_ = std::exchange(other.bytes_, {});
        isOpen_ = std::exchange(other.isOpen_, false);
    }
    return *this;
}

bool MappedFile::open(const Path& path) {
    close();
    const int descriptor = posix::Retry(
        [&] { return ::open(posix::Native(path), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    const std::int64_t size = posix::RegularSize(descriptor);
    if (size > 0) {
        void* const view =
            mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (view != MAP_FAILED)
            bytes_ = {static_cast<const unsigned char*>(view), static_cast<std::size_t>(size)};
    }
    isOpen_ = size == 0 || !bytes_.empty();
    if (descriptor >= 0) ::close(descriptor);
    return isOpen_;
}

void MappedFile::close() noexcept {
    if (!bytes_.empty())
        munmap(const_cast<unsigned char*>(bytes_.data()),
               bytes_.size()); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    bytes_ = {};
    isOpen_ = false;
}

} // namespace ODF::platform
