#include <odfmodel/platform/memory_mapping.h>

#include "platform/posix/system_call.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace ODF {

namespace {

// A handle is the number of a memory file, one up, so that null is no handle and a wrong handle is an error
// of the system's and not a stray pointer.
void* ToHandle(int descriptor) noexcept {
    return descriptor < 0 ? nullptr : reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor) + 1);
}

int ToDescriptor(void* handle) noexcept {
    const auto number = reinterpret_cast<std::intptr_t>(handle);
    return number <= 0 || number > INT32_MAX ? -1 : static_cast<int>(number - 1);
}

void* MapBytes(void* handle, std::size_t byteCount, bool isWritable) noexcept {
    if (byteCount == 0) return nullptr;
    void* const view = mmap(nullptr, byteCount, isWritable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED,
                            ToDescriptor(handle), 0);
    return view == MAP_FAILED ? nullptr : view;
}

} // namespace

MemoryMapping& MemoryMapping::operator=(MemoryMapping&& other) noexcept {
    if (this != &other) {
        close();
        handle_ = std::exchange(other.handle_, nullptr);
        view_ = std::exchange(other.view_, nullptr);
        viewSize_ = std::exchange(other.viewSize_, 0);
    }
    return *this;
}

MemoryMapping MemoryMapping::create(std::size_t byteCount) noexcept {
    MemoryMapping result;
    result.handle_ = ToHandle(memfd_create("odfmodel", MFD_CLOEXEC));
    if (result.isOpen() && !result.resize(byteCount)) result.close();
    return result;
}

MemoryMapping MemoryMapping::adopt(void* handle) noexcept {
    MemoryMapping result;
    result.handle_ = handle;
    return result;
}

void* MemoryMapping::release() noexcept {
    unmap();
    return std::exchange(handle_, nullptr);
}

std::size_t MemoryMapping::sizeOf(void* handle) noexcept {
    struct stat status {};
    return handle && fstat(ToDescriptor(handle), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

bool MemoryMapping::resize(std::size_t byteCount) noexcept {
    unmap();
    if (!handle_ || byteCount > static_cast<std::size_t>(INT64_MAX)) return false;
    return platform::posix::Retry(
               [&] { return ftruncate(ToDescriptor(handle_), static_cast<off_t>(byteCount)); }) == 0;
}

void* MemoryMapping::map() noexcept {
    if (!view_) {
        viewSize_ = size();
        view_ = MapBytes(handle_, viewSize_, true);
    }
    return view_;
}

void MemoryMapping::unmap() noexcept {
    if (view_) munmap(std::exchange(view_, nullptr), std::exchange(viewSize_, 0));
}

void MemoryMapping::close() noexcept {
    unmap();
    if (handle_) ::close(ToDescriptor(std::exchange(handle_, nullptr)));
}

MemoryView::MemoryView(void* handle, std::size_t byteCount, bool isWritable) noexcept
    : size_(std::min(byteCount, MemoryMapping::sizeOf(handle))) {
    data_ = static_cast<unsigned char*>(MapBytes(handle, size_, isWritable));
    if (!data_) size_ = 0;
}

MemoryView& MemoryView::operator=(MemoryView&& other) noexcept {
    if (this != &other) {
        unmap();
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

void MemoryView::unmap() noexcept {
    if (data_) munmap(std::exchange(data_, nullptr), std::exchange(size_, 0));
}

void MemoryView::unmapReleased(void* data, std::size_t byteCount) noexcept {
    if (data) munmap(data, byteCount);
}

} // namespace ODF
