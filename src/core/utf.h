#pragma once

#include <cstdint>
#include <string_view>

namespace ODF {

inline constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

/// True for the code points that XML 1.0 allows in character data.
constexpr bool IsXmlCharacter(char32_t c) noexcept {
    if (c < 0x20) return c == 0x9 || c == 0xA || c == 0xD;
    return c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

/// The code point at `at`, which moves after it; U+FFFD for a lone surrogate. `at` must not be `end`.
inline char32_t NextCodePoint(const char16_t*& at, const char16_t* end) noexcept {
    const char16_t unit = *at++;
    if ((unit & 0xF800) != 0xD800) return unit;
    if (IsHighSurrogate(unit) && at != end && IsLowSurrogate(*at))
        return 0x10000U + ((static_cast<char32_t>(unit) - 0xD800U) << 10) +
               (static_cast<char32_t>(*at++) - 0xDC00U);
    return kReplacement;
}

/// Puts the UTF-8 form of `c` at `out` and returns the place after it; at most 4 bytes.
inline char* PutUtf8(char* out, char32_t c) noexcept {
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    return out;
}

/// Decodes UTF-8 into `out`, which has room for one unit a byte, and returns the number of units. Ill-formed
/// sequences become U+FFFD.
std::size_t DecodeUtf8(std::string_view utf8, char16_t* out) noexcept;

} // namespace ODF
