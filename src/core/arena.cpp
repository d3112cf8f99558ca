#include "core/arena.h"

#include "system/pages.h"

#include <algorithm>
#include <atomic>
#include <new>

namespace ODF {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 16;
constexpr std::size_t kMaxRegion = std::size_t{1} << 22;
/// Most parts are small, and a heap serves those better.
constexpr unsigned kMaxFromHeap = 256;
/// More than this at once would leave too much of a block unused.
constexpr std::size_t kMaxAtOnce = kBlock / 8;

} // namespace

/// Begins each block. The counter holds, while the arena still makes objects here, one more than objects
/// could ever be.
struct Arena::Block {
    static constexpr std::size_t kOpen = SIZE_MAX / 2;

    std::atomic<std::size_t> objects;
    Region* region;

    void drop(std::size_t count) noexcept;
};

/// Begins each region, before its first block's own head. A region goes when all its blocks have gone.
struct Arena::Region {
    std::atomic<std::size_t> blocks;
    std::size_t byteCount;

    void drop(std::size_t count) noexcept {
        if (count == 0 || blocks.fetch_sub(count, std::memory_order_acq_rel) != count) return;
        system::UnmapPages(reinterpret_cast<char*>(this) - sizeof(Block), byteCount);
    }
};

void Arena::Block::drop(std::size_t count) noexcept {
    if (objects.fetch_sub(count, std::memory_order_acq_rel) == count) region->drop(1);
}

Arena::~Arena() {
    closeBlock();
    closeRegion();
}

bool Arena::reserve(std::size_t byteCount) noexcept {
    if (!kIsUsed || byteCount > kMaxAtOnce) return false;
    if (few_ < kMaxFromHeap) {
        ++few_;
        return false;
    }
    return static_cast<std::size_t>(end_ - at_) >= byteCount || openBlock();
}

void* Arena::object(std::size_t byteCount) noexcept {
    ++made_;
    return take(byteCount);
}

void Arena::release(void* object) noexcept {
    const auto place = reinterpret_cast<std::uintptr_t>(object);
    reinterpret_cast<Block*>(place & ~(kBlock - 1))->drop(1);
}

bool Arena::openBlock() noexcept {
    closeBlock();
    if (!region_ || opened_ * kBlock == regionBytes_) {
        closeRegion();
        // Each region is twice as large as the one before, up to a bound that keeps small what a lone
        // survivor holds on to.
        const std::size_t byteCount = std::clamp(regionBytes_ * 2, kBlock, kMaxRegion);
        auto* const pages = static_cast<char*>(system::MapPages(byteCount, kBlock));
        if (!pages) return false;
        region_ = new (pages + sizeof(Block)) Region{{byteCount / kBlock}, byteCount};
        regionBytes_ = byteCount;
        opened_ = 0;
    }
    char* const start = reinterpret_cast<char*>(region_) - sizeof(Block) + opened_ * kBlock;
    block_ = new (start) Block{{Block::kOpen}, region_};
    at_ = start + sizeof(Block) + (opened_ == 0 ? sizeof(Region) : 0) + 8;
    end_ = start + kBlock;
    ++opened_;
    return true;
}

void Arena::closeBlock() noexcept {
    if (!block_) return;
    block_->drop(Block::kOpen - made_);
    block_ = nullptr;
    made_ = 0;
    at_ = end_ = nullptr;
}

void Arena::closeRegion() noexcept {
    if (!region_) return;
    region_->drop(regionBytes_ / kBlock - opened_);
    region_ = nullptr;
}

} // namespace ODF
