#include "console.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <poll.h>
#include <unistd.h>

namespace command {
namespace {

struct Character {
    char32_t value = 0;
    std::size_t length = 1;
    bool isValid = false;
};

/// The character at the head of `text`, which isn't empty.
Character Decode(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return {first, 1, true};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return {first};
    char32_t value = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return {first};
        value = value << 6 | (byte(i) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < kLeast[length] || value > 0x10FFFF || isSurrogate) return {first};
    return {value, length, true};
}

bool IsControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

/// Characters that would break a line or turn the order of what is around them.
bool IsLayoutControl(char32_t c) {
    return (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E || c == 0x200F ||
           c == 0x061C;
}

void AppendEscape(std::string& out, const Character& c) {
    std::array<char, 16> escape{};
    switch (c.isValid ? c.value : 0) {
    case U'\n':
        out += "\\n";
        return;
    case U'\r':
        out += "\\r";
        return;
    case U'\t':
        out += "\\t";
        return;
    case U'\\':
        out += "\\\\";
        return;
    default:
        break;
    }
    const char* const format = c.isValid && c.value > 0xFF ? "\\u{%x}" : "\\x%02x";
    std::snprintf(escape.data(), escape.size(), format, static_cast<unsigned>(c.value));
    out += escape.data();
}

template<typename NeedsEscape>
std::string Escaped(std::string_view text, NeedsEscape needsEscape) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const Character c = Decode(text);
        if (!c.isValid || needsEscape(c.value))
            AppendEscape(out, c);
        else
            out += text.substr(0, c.length);
        text.remove_prefix(c.length);
    }
    return out;
}

} // namespace

std::string Quoted(std::string_view text) {
    return Escaped(text, [](char32_t c) { return IsControl(c) || IsLayoutControl(c) || c == U'\\'; });
}

std::string Printable(std::string_view text) {
    return Escaped(text, [](char32_t c) { return IsControl(c) && c != U'\n' && c != U'\t'; });
}

bool IsWritable(std::string_view text) {
    while (!text.empty()) {
        const Character c = Decode(text);
        const bool isControl = c.value < 0x20 && c.value != '\t' && c.value != '\n' && c.value != '\r';
        if (!c.isValid || isControl || c.value == 0xFFFE || c.value == 0xFFFF) return false;
        text.remove_prefix(c.length);
    }
    return true;
}

bool IsReaderGone() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

void Complain(std::string_view about, std::string_view reason) {
    std::cout.flush(); // so that both streams come in order where they meet
    std::cerr << "odfmodel: " << (about.empty() ? "" : Quoted(about) + ": ") << Quoted(reason) << '\n';
}

} // namespace command
