#include "core/utf.h"

#include <odfmodel/core/string.h>

#include <utf8/unchecked.h>

#include <cstring>
#include <iterator>
#include <utf8.h>

namespace ODF {

std::size_t DecodeUtf8(std::string_view utf8, char16_t* out) noexcept {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    char16_t* const begin = out;
    while (at != end) {
        // Nearly all text is ASCII, so eight bytes at a time are tested and widened.
        while (end - at >= 8) {
            std::uint64_t block = 0;
            std::memcpy(&block, at, sizeof block);
            if (block & 0x8080808080808080ULL) break;
            for (int i = 0; i < 8; ++i)
                out[i] = static_cast<unsigned char>(at[i]);
            at += 8;
            out += 8;
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
