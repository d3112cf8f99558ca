#pragma once

#include "core/arena.h"

#include <odfmodel/core/string.h>

#include <cstdlib>
#include <string_view>

// The buffers behind `CTulStringW`: a head and the units, from the heap or, for the texts of a parse, from
// the arena of their objects.
namespace ODF::string_buffer {

inline constexpr std::size_t kMaxLength = 0x3FFFFFFF;

/// The shared empty buffer.
unsigned short* Nil() noexcept;

inline StringHeader* HeaderOf(unsigned short* units) noexcept {
    return reinterpret_cast<StringHeader*>(units) - 1;
}
inline void SetLength(unsigned short* units, std::size_t length) noexcept {
    HeaderOf(units)->length = static_cast<std::uint32_t>(length);
    units[length] = 0;
}

/// What a buffer for `length` units holds: with the head, a multiple of eight units.
constexpr std::size_t CapacityFor(std::size_t length) noexcept {
    return ((length + 9) & ~std::size_t{7}) - 1;
}
/// Bytes of a buffer for `length` units.
constexpr std::size_t BytesFor(std::size_t length) noexcept {
    return sizeof(StringHeader) + (CapacityFor(length) + 1) * sizeof(unsigned short);
}
/// Makes a buffer, with one reference and no unit in use, out of `place`, which has `BytesFor(length)`.
unsigned short* Begin(void* place, std::size_t length) noexcept;
/// A buffer from the heap; null without memory, the shared empty one for no units.
unsigned short* Allocate(std::size_t length) noexcept;
/// The buffer, which is from the heap and has one owner, without room that its length doesn't ask for.
unsigned short* Fitted(unsigned short* units) noexcept;
/// A buffer from the heap with the pieces one after the other, for `room` units at least; null without
/// memory.
unsigned short* Join(std::u16string_view a, std::u16string_view b, std::size_t room = 0) noexcept;

/// One more reference. A buffer of an arena is copied instead, lest a text that a caller keeps hold on to a
/// block that everything else has left.
[[nodiscard]] unsigned short* Share(unsigned short* units) noexcept;
void Release(unsigned short* units) noexcept;
/// True when others have the buffer too.
bool IsShared(unsigned short* units) noexcept;

} // namespace ODF::string_buffer
