#pragma once

#include "core/arena.h"
#include "core/class_descriptor.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace ODF {

/// The values of an object's attributes: one block with a bit for each attribute that the class may have and
/// one 8-byte slot for each that is present, in table order. An object without values has no block, and an
/// absent attribute costs nothing. A text's slot holds the `CTulStringW` itself, which is one pointer.
///
/// The bit after the last attribute stands for the extras, a pointer to what hardly any object has.
class AttributeSlots {
public:
    static_assert(sizeof(CTulStringW) == sizeof(std::uint64_t), "a text must fit into a slot");

    /// The slot of `row`, or null while it is absent.
    static std::uint64_t* find(std::uint64_t* block, unsigned words, unsigned row) noexcept {
        if (!block || !(block[row / 64] >> (row % 64) & 1U)) return nullptr;
        return block + words + rank(block, row);
    }
    static const std::uint64_t* find(const std::uint64_t* block, unsigned words, unsigned row) noexcept {
        return find(const_cast<std::uint64_t*>(block), words, row);
    }

    /// The slot of `row`, made with the value 0 when it is absent; the block may move. Throws std::bad_alloc.
    static std::uint64_t* require(std::uint64_t*& block, unsigned words, unsigned row);
    /// Closes the slot of `row`, which is present and whose text is gone already; later slots move.
    static void erase(std::uint64_t* block, unsigned words, unsigned row) noexcept;
    /// A block for exactly the rows in `rows`, which ascend; all slots are 0. Throws std::bad_alloc, but not
    /// with an arena, which has room for it reserved.
    static std::uint64_t* make(unsigned words, const std::uint16_t* rows, unsigned count, Arena* arena);
    static void release(std::uint64_t* block) noexcept;

    /// Calls `visit(row, slot)` for each present attribute in table order, the extras last.
    template<typename Visit>
    static void forEach(std::uint64_t* block, unsigned words, Visit visit) {
        if (!block) return;
        std::uint64_t* slot = block + words;
        for (unsigned word = 0; word < words; ++word)
            for (std::uint64_t bits = block[word]; bits != 0; bits &= bits - 1)
                visit(word * 64 + static_cast<unsigned>(std::countr_zero(bits)), slot++);
    }

    static CTulStringW& text(std::uint64_t* slot) noexcept { return *reinterpret_cast<CTulStringW*>(slot); }
    static const CTulStringW& text(const std::uint64_t* slot) noexcept {
        return *reinterpret_cast<const CTulStringW*>(slot);
    }
    static double number(const std::uint64_t* slot) noexcept { return std::bit_cast<double>(*slot); }

private:
    static unsigned rank(const std::uint64_t* block, unsigned row) noexcept {
        unsigned count = 0;
        for (unsigned word = 0; word < row / 64; ++word)
            count += static_cast<unsigned>(std::popcount(block[word]));
        const std::uint64_t below = (std::uint64_t{1} << (row % 64)) - 1;
        return count + static_cast<unsigned>(std::popcount(block[row / 64] & below));
    }
};

} // namespace ODF
