#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <bit>
#include <emmintrin.h>
#endif

namespace ODF::xml {

/// Whether two names are the same. Most have 8 to 16 bytes, for which two comparisons of words suffice.
inline bool SameName(std::string_view a, std::string_view b) noexcept {
    if (a.size() != b.size()) return false;
    if (a.size() < 8 || a.size() > 16) return std::memcmp(a.data(), b.data(), a.size()) == 0;
    const auto word = [](std::string_view name, std::size_t at) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, name.data() + at, sizeof bytes);
        return bytes;
    };
    return word(a, 0) == word(b, 0) && word(a, a.size() - 8) == word(b, b.size() - 8);
}

/// Searches of the tokeniser: each returns the first byte of [at, end) that it has to look at, or `end`. With
/// SSE2 they take 16 bytes a step; nothing outside the range is read.
namespace byte_scan {

/// What a byte can be in ASCII markup.
enum ByteClass : std::uint8_t {
    kNameStart = 1, ///< may begin a name
    kNameByte = 2,  ///< may be in a name
    kBlank = 4
};

inline constexpr std::array<std::uint8_t, 256> kClasses = [] {
    std::array<std::uint8_t, 256> classes{};
    for (unsigned c = 0; c < 128; ++c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
        if (isLetter) classes[c] = kNameStart | kNameByte;
        if ((c >= '0' && c <= '9') || c == '-' || c == '.') classes[c] = kNameByte;
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') classes[c] = kBlank;
    }
    return classes;
}();

inline bool Is(char c, ByteClass kind) noexcept {
    return (kClasses[static_cast<unsigned char>(c)] & kind) != 0;
}

/// Steps over plain bytes one by one: `isPlain` tells them.
template<typename IsPlain>
const char* SkipSlowly(const char* at, const char* end, IsPlain isPlain) noexcept {
    while (at != end && isPlain(*at))
        ++at;
    return at;
}

/// Steps over plain bytes by 16: `odd` makes of 16 bytes a mask of those that aren't plain.
template<typename Odd, typename IsPlain>
const char* Skip(const char* at, const char* end, [[maybe_unused]] Odd odd, IsPlain isPlain) noexcept {
#if defined(__SSE2__)
    for (; end - at >= 16; at += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(odd(bytes)));
        if (mask != 0) return at + std::countr_zero(mask);
    }
#endif
    return SkipSlowly(at, end, isPlain);
}

#if defined(__SSE2__)
inline __m128i Equal(__m128i bytes, char c) noexcept {
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c));
}
/// Control characters, and all that isn't ASCII: the comparison is one of signed bytes.
inline __m128i BelowBlank(__m128i bytes) noexcept {
    return _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
}
inline __m128i Within(__m128i bytes, char first, char last) noexcept {
    return _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(first - 1))),
                         _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(last + 1))));
}
#define ODFMODEL_ODD(expression) [=](__m128i bytes) noexcept { return expression; }
#else
#define ODFMODEL_ODD(expression) 0
#endif

/// The end of what may be part of an ASCII name.
inline const char* NameEnd(const char* at, const char* end) noexcept {
    const auto odd = ODFMODEL_ODD(
        _mm_xor_si128(_mm_or_si128(_mm_or_si128(Within(_mm_or_si128(bytes, _mm_set1_epi8(0x20)), 'a', 'z'),
                                                Within(bytes, '0', ':')),
                                   _mm_or_si128(Within(bytes, '-', '.'), Equal(bytes, '_'))),
                      _mm_set1_epi8(-1)));
    return Skip(at, end, odd, [](char c) { return Is(c, kNameByte); });
}

/// The next byte of an attribute value that isn't ASCII without further meaning: the quote, a reference, '<',
/// a control character or blank other than ' ', a byte of a longer character.
inline const char* ValueStop(const char* at, const char* end, char quote) noexcept {
    const auto odd = ODFMODEL_ODD(_mm_or_si128(_mm_or_si128(BelowBlank(bytes), Equal(bytes, quote)),
                                               _mm_or_si128(Equal(bytes, '<'), Equal(bytes, '&'))));
    return Skip(at, end, odd, [quote](char c) {
        return static_cast<signed char>(c) >= ' ' && c != quote && c != '<' && c != '&';
    });
}

/// The next byte of character data that isn't ASCII without further meaning: '<', a reference, ']', a control
/// character, blank other than ' ', a byte of a longer character.
inline const char* TextStop(const char* at, const char* end) noexcept {
    const auto odd = ODFMODEL_ODD(_mm_or_si128(_mm_or_si128(BelowBlank(bytes), Equal(bytes, ']')),
                                               _mm_or_si128(Equal(bytes, '<'), Equal(bytes, '&'))));
    return Skip(at, end, odd, [](char c) {
        return static_cast<signed char>(c) >= ' ' && c != ']' && c != '<' && c != '&';
    });
}

/// The next `mark`, control character, blank other than ' ', or byte of a longer character.
inline const char* MarkStop(const char* at, const char* end, char mark) noexcept {
    const auto odd = ODFMODEL_ODD(_mm_or_si128(BelowBlank(bytes), Equal(bytes, mark)));
    return Skip(at, end, odd, [mark](char c) { return static_cast<signed char>(c) >= ' ' && c != mark; });
}

#undef ODFMODEL_ODD

/// The bytes of the character that begins at `at` with a byte above 0x7F; 0 when they aren't one that XML
/// allows in UTF-8, or when `end` comes first.
inline std::size_t LongCharacter(const char* at, const char* end) noexcept {
    const auto byte = [at](std::size_t i) { return static_cast<unsigned char>(at[i]); };
    const auto isNext = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const std::ptrdiff_t left = end - at;
    const unsigned first = byte(0);
    if (first < 0xC2) return 0;
    if (first < 0xE0) return left >= 2 && isNext(1) ? 2 : 0;
    if (first < 0xF0) {
        if (left < 3 || !isNext(1) || !isNext(2)) return 0;
        const unsigned c = ((first & 0x0F) << 12) | ((byte(1) & 0x3FU) << 6) | (byte(2) & 0x3FU);
        return c >= 0x800 && !(c >= 0xD800 && c <= 0xDFFF) && c < 0xFFFE ? 3 : 0;
    }
    if (first > 0xF4 || left < 4 || !isNext(1) || !isNext(2) || !isNext(3)) return 0;
    const unsigned top = ((first & 0x07) << 6) | (byte(1) & 0x3FU); // the code point without its last 12 bits
    return top >= 0x10 && top < 0x110 ? 4 : 0;
}

/// The end of the characters above ASCII that begin at `at`; `at` itself when the first isn't one.
inline const char* LongCharacters(const char* at, const char* end) noexcept {
    while (at != end && static_cast<signed char>(*at) < 0) {
        const std::size_t count = LongCharacter(at, end);
        if (count == 0) break;
        at += count;
    }
    return at;
}

} // namespace byte_scan

} // namespace ODF::xml
