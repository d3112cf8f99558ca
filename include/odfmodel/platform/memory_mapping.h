#pragma once

#include <odfmodel/export.h>

#include <cstddef>
#include <utility>

namespace ODF {

/// Memory that is named by a handle, so that it can be passed around and viewed more than once: the target
/// and source of the archive operations with `LargeMemory` in their name. An object owns its handle and its
/// view.
class ODFMODEL_API MemoryMapping {
public:
    MemoryMapping() noexcept = default;
    MemoryMapping(MemoryMapping&& other) noexcept
        : handle_(std::exchange(other.handle_, nullptr)), view_(std::exchange(other.view_, nullptr)),
          viewSize_(std::exchange(other.viewSize_, 0)) {}
    MemoryMapping& operator=(MemoryMapping&& other) noexcept;
    /// Unmaps the view and closes the handle.
    ~MemoryMapping() { close(); }

    /// Makes a mapping of `byteCount` zero bytes; one that isn't open when there is no memory.
    static MemoryMapping create(std::size_t byteCount) noexcept;
    /// Takes over a handle, as `release` gave it.
    static MemoryMapping adopt(void* handle) noexcept;

    bool isOpen() const noexcept { return handle_ != nullptr; }
    void* handle() const noexcept { return handle_; }
    /// Hands the handle to the caller, who gives it to `adopt` in the end. The view is unmapped.
    void* release() noexcept;

    /// The mapping's size in bytes; 0 for a handle that is none.
    std::size_t size() const noexcept { return sizeOf(handle_); }
    static std::size_t sizeOf(void* handle) noexcept;
    /// Changes the size; new bytes are 0. The view is unmapped first.
    bool resize(std::size_t byteCount) noexcept;

    /// The bytes of the whole mapping, for reading and writing; null on failure. Stays mapped until `unmap`.
    void* map() noexcept;
    void unmap() noexcept;
    void* view() const noexcept { return view_; }

    void close() noexcept;

private:
    void* handle_ = nullptr;
    void* view_ = nullptr;
    std::size_t viewSize_ = 0;
};

/// A view of a mapping that someone else owns, by its handle.
class ODFMODEL_API MemoryView {
public:
    MemoryView() noexcept = default;
    /// Maps the first `byteCount` bytes, or all when the mapping holds fewer; `data` is null on failure.
    MemoryView(void* handle, std::size_t byteCount, bool isWritable) noexcept;
    MemoryView(MemoryView&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    MemoryView& operator=(MemoryView&& other) noexcept;
    ~MemoryView() { unmap(); }

    unsigned char* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    void unmap() noexcept;
    /// Leaves the bytes mapped; they are unmapped by `unmapReleased` with the same size.
    unsigned char* release() noexcept { return std::exchange(data_, nullptr); }
    static void unmapReleased(void* data, std::size_t byteCount) noexcept;

private:
    unsigned char* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace ODF
