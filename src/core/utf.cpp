#include "core/utf.h"

#include <odfmodel/core/string.h>

#include <utf8/unchecked.h>

#include <iterator>
#include <utf8.h>

#if defined(__SSE2__)
#include <bit>
#include <emmintrin.h>
#endif

namespace ODF {

namespace {

unsigned Byte(const char* at) noexcept {
    return static_cast<unsigned char>(*at);
}
bool IsContinuation(const char* at) noexcept {
    return (Byte(at) & 0xC0) == 0x80;
}

#if defined(__SSE2__)
constexpr std::ptrdiff_t kStep = 16;

/// Widens a block of bytes, and returns how many of them come before the first above 0x7F.
std::ptrdiff_t WidenAscii(const char* at, char16_t* out) noexcept {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(bytes, zero));
    const auto high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
    return high == 0 ? kStep : std::countr_zero(high);
}
#else
constexpr std::ptrdiff_t kStep = 8;

std::ptrdiff_t WidenAscii(const char* at, char16_t* out) noexcept {
    std::ptrdiff_t count = 0;
    for (; count < kStep && Byte(at + count) < 0x80; ++count)
        out[count] = static_cast<char16_t>(at[count]);
    return count;
}
#endif

/// The code point that begins at `at` with a byte above 0x7F, which moves after it; a broken sequence is one
/// replacement.
char32_t DecodeAny(const char*& at, const char* end) noexcept {
    const char* const before = at;
    std::uint32_t c = 0;
    if (utf8::internal::validate_next(at, end, c) == utf8::internal::UTF8_OK) return c;
    at = before + 1;
    while (at != end && IsContinuation(at))
        ++at;
    return kReplacement;
}

/// The characters above ASCII from `at` on. Nearly all have two or three bytes.
const char* DecodeLong(const char* at, const char* end, char16_t*& out) noexcept {
    while (at != end && Byte(at) >= 0x80) {
        const unsigned first = Byte(at);
        if (first >= 0xC2 && first < 0xE0 && end - at >= 2 && IsContinuation(at + 1)) {
            *out++ = static_cast<char16_t>(((first & 0x1F) << 6) | (Byte(at + 1) & 0x3F));
            at += 2;
            continue;
        }
        if (first > 0xE0 && first < 0xED && end - at >= 3 && IsContinuation(at + 1) &&
            IsContinuation(at + 2)) {
            *out++ = static_cast<char16_t>(((first & 0x0F) << 12) | ((Byte(at + 1) & 0x3F) << 6) |
                                           (Byte(at + 2) & 0x3F));
            at += 3;
            continue;
        }
        const char32_t c = DecodeAny(at, end);
        if (c > 0xFFFF) {
            *out++ = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            *out++ = static_cast<char16_t>(c);
        }
    }
    return at;
}

} // namespace

std::size_t DecodeUtf8(std::string_view utf8, char16_t* out) noexcept {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    char16_t* const begin = out;
    while (at != end) {
        // Most text is ASCII, so blocks are tested and widened, and of the last block what comes before the
        // first other byte; the units after it are written over.
        while (end - at >= kStep) {
            const std::ptrdiff_t count = WidenAscii(at, out);
            at += count;
            out += count;
            if (count < kStep) break;
        }
        while (at != end && Byte(at) < 0x80 && end - at < kStep)
            *out++ = static_cast<char16_t>(*at++);
        at = DecodeLong(at, end, out);
    }
    return static_cast<std::size_t>(out - begin);
}

std::u16string ToUtf16(std::string_view utf8) {
    std::u16string result(utf8.size(), u'\0');
    result.resize(DecodeUtf8(utf8, result.data()));
    return result;
}

std::string ToUtf8(std::u16string_view utf16) {
    std::string result(utf16.size() * 3, '\0');
    char* out = result.data();
    for (const char16_t *at = utf16.data(), *const end = at + utf16.size(); at != end;)
        out = PutUtf8(out, NextCodePoint(at, end));
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

} // namespace ODF
