#include "core/utf.h"

#include <odfmodel/core/string.h>

#include <utf8/unchecked.h>

#include <bit>
#include <cstring>
#include <iterator>
#include <utf8.h>

namespace ODF {

namespace {

constexpr std::size_t kStep = 8;

std::uint64_t Block(const char* at) noexcept {
    std::uint64_t block = 0;
    std::memcpy(&block, at, kStep);
    return block;
}

/// One instruction or two, once the compiler has seen that neither side lies in the other.
void WidenBlock(const char* at, char16_t* out) noexcept {
    unsigned char bytes[kStep];
    char16_t units[kStep];
    std::memcpy(bytes, at, sizeof bytes);
    for (std::size_t i = 0; i < kStep; ++i)
        units[i] = bytes[i];
    std::memcpy(out, units, sizeof units);
}

/// Bytes in front of the first that is above 0x7F.
std::size_t LeadingAscii(std::uint64_t highBits) noexcept {
    return static_cast<std::size_t>(std::endian::native == std::endian::little ? std::countr_zero(highBits)
                                                                               : std::countl_zero(highBits)) /
           8;
}

constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;

} // namespace

std::size_t DecodeUtf8(std::string_view utf8, char16_t* out) noexcept {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    char16_t* const begin = out;
    while (at != end) {
        // Most text is ASCII, so eight bytes at a time are tested and widened, and of the last block what
        // comes before the first other byte; the units behind it are written over.
        while (static_cast<std::size_t>(end - at) >= kStep) {
            const std::uint64_t high = Block(at) & kHighBits;
            const std::size_t count = high == 0 ? kStep : LeadingAscii(high);
            WidenBlock(at, out);
            at += count;
            out += count;
            if (high != 0) break;
        }
        if (at == end) break;
        if (static_cast<unsigned char>(*at) < 0x80) {
            *out++ = static_cast<unsigned char>(*at++);
            continue;
        }
        const char* const before = at;
        std::uint32_t c = 0;
        if (utf8::internal::validate_next(at, end, c) != utf8::internal::UTF8_OK) {
            c = kReplacement;
            // One replacement for the bytes of one broken sequence.
            at = before + 1;
            while (at != end && (static_cast<unsigned char>(*at) & 0xC0) == 0x80)
                ++at;
        }
        if (c > 0xFFFF) {
            *out++ = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            *out++ = static_cast<char16_t>(c);
        }
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
