#pragma once

#include <cstddef>
#include <cstdint>

namespace ODF {

/// Memory for the objects of one parse. They come one after the other out of large blocks, which go back to
/// the system when the last object in them has gone: no search for a place when an object is made, none when
/// it goes, and no gaps between objects. The objects outlive the arena, each is deleted on its own, on any
/// thread.
///
/// Memory of a block is not used again before all of the block is free, so only what lives and dies together
/// belongs into it. A text that is here is copied when a caller takes it (see string_buffer.h).
///
/// What comes from an arena lies 8 bytes after a multiple of 16, where the heap puts nothing: that is how
/// `owns` tells the two apart without a word for it in each object.
class Arena {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena();

    /// Room for an object and what belongs to it: the next `object` and the `attach` calls after it, of
    /// `byteCount` bytes together, come from one block. False when all that has to come from the heap: the
    /// first few objects, something too large for a block, or when the system gives no more pages.
    bool reserve(std::size_t byteCount) noexcept;
    /// Place for one object, to be given back by `release`. Only after `reserve`.
    void* object(std::size_t byteCount) noexcept;
    /// Place for what goes with the object made last and is never given back itself. Only after `reserve`.
    void* attach(std::size_t byteCount) noexcept { return take(byteCount); }

    /// Bytes that a thing of that size takes.
    static constexpr std::size_t rounded(std::size_t byteCount) noexcept {
        return (byteCount + 15) & ~std::size_t{15};
    }
    /// Whether an object, or a thing attached to one, is in a block of an arena.
    static bool owns(const void* place) noexcept {
        return kIsUsed && (reinterpret_cast<std::uintptr_t>(place) & 8U) != 0;
    }
    /// Gives back what `object` gave out.
    static void release(void* object) noexcept;

private:
    struct Block;
    struct Region;

    // The heap has to keep to multiples of 16; and a tool that watches each object needs each on its own.
#if defined(__SANITIZE_ADDRESS__)
    static constexpr bool kIsWatched = true;
#elif defined(__has_feature)
    static constexpr bool kIsWatched = __has_feature(address_sanitizer);
#else
    static constexpr bool kIsWatched = false;
#endif
    static constexpr bool kIsUsed =
        !kIsWatched && sizeof(void*) == 8 && __STDCPP_DEFAULT_NEW_ALIGNMENT__ >= 16;

    void* take(std::size_t byteCount) noexcept {
        char* const place = at_;
        at_ += rounded(byteCount);
        return place;
    }
    bool openBlock() noexcept;
    void closeBlock() noexcept;
    void closeRegion() noexcept;

    char* at_ = nullptr;
    char* end_ = nullptr;
    Block* block_ = nullptr;
    std::size_t made_ = 0; ///< objects of the present block
    Region* region_ = nullptr;
    std::size_t opened_ = 0; ///< blocks of the present region
    std::size_t regionBytes_ = 0;
    unsigned few_ = 0; ///< objects that were left to the heap
};

} // namespace ODF
