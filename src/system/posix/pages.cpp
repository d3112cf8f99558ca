#include "system/pages.h"

#include <cstdint>
#include <sys/mman.h>

namespace ODF::system {
namespace {

constexpr std::size_t kLargePage = std::size_t{1} << 21;

} // namespace

void* MapPages(std::size_t byteCount, std::size_t alignment) noexcept {
    if (byteCount >= kLargePage && alignment < kLargePage) alignment = kLargePage;
    // The system aligns to its own pages only, so more is asked for and what is around is given back.
    void* const mapped =
        mmap(nullptr, byteCount + alignment, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    const auto first = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = (first + alignment - 1) & ~(alignment - 1);
    const std::size_t before = aligned - first;
    if (before > 0) munmap(mapped, before);
    if (before < alignment) munmap(reinterpret_cast<void*>(aligned + byteCount), alignment - before);
#ifdef MADV_HUGEPAGE
    if (byteCount >= kLargePage) madvise(reinterpret_cast<void*>(aligned), byteCount, MADV_HUGEPAGE);
#endif
    return reinterpret_cast<void*>(aligned);
}

void UnmapPages(void* pages, std::size_t byteCount) noexcept {
    munmap(pages, byteCount);
}

} // namespace ODF::system
