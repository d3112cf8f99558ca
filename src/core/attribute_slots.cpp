#include "core/attribute_slots.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace ODF {
namespace {

unsigned Count(const std::uint64_t* block, unsigned words) noexcept {
    unsigned count = 0;
    for (unsigned word = 0; word < words; ++word)
        count += static_cast<unsigned>(std::popcount(block[word]));
    return count;
}

} // namespace

// The blocks come from malloc, because growing one in place by a slot is what realloc is good at. Those that
// a parse has made are after their objects.

std::uint64_t* AttributeSlots::require(std::uint64_t*& block, unsigned words, unsigned row) {
    if (std::uint64_t* const slot = find(block, words, row)) return slot;
    const unsigned count = block ? Count(block, words) : 0;
    const unsigned at = block ? rank(block, row) : 0;
    const bool isAttached = block && Arena::owns(block);
    auto* const grown = static_cast<std::uint64_t*>(
        std::realloc(isAttached ? nullptr : block, (words + count + 1U) * sizeof(std::uint64_t)));
    if (!grown) throw std::bad_alloc();
    if (isAttached)
        std::copy_n(block, words + count, grown);
    else if (!block)
        std::fill_n(grown, words, 0);
    block = grown;
    std::uint64_t* const slot = block + words + at;
    std::memmove(slot + 1, slot, (count - at) * sizeof(std::uint64_t));
    *slot = 0;
    block[row / 64] |= std::uint64_t{1} << (row % 64);
    return slot;
}

void AttributeSlots::erase(std::uint64_t* block, unsigned words, unsigned row) noexcept {
    std::uint64_t* const slot = block + words + rank(block, row);
    std::copy(slot + 1, block + words + Count(block, words), slot);
    block[row / 64] &= ~(std::uint64_t{1} << (row % 64));
}

std::uint64_t* AttributeSlots::make(unsigned words, const std::uint16_t* rows, unsigned count, Arena* arena) {
    const std::size_t byteCount = (words + count) * sizeof(std::uint64_t);
    auto* const block =
        static_cast<std::uint64_t*>(arena ? arena->attach(byteCount) : std::malloc(byteCount));
    if (!block) throw std::bad_alloc();
    std::memset(block, 0, byteCount);
    for (unsigned i = 0; i < count; ++i)
        block[rows[i] / 64] |= std::uint64_t{1} << (rows[i] % 64);
    return block;
}

void AttributeSlots::release(std::uint64_t* block) noexcept {
    if (!Arena::owns(block)) std::free(block);
}

} // namespace ODF
