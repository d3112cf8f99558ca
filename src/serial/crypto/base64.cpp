#include "serial/crypto/base64.h"

#include <array>
#include <cstdint>

namespace ODF::crypto {

namespace {
constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int8_t kNone = -1;

constexpr std::array<std::int8_t, 256> Values() {
    std::array<std::int8_t, 256> values{};
    for (std::int8_t& value : values)
        value = kNone;
    for (std::size_t i = 0; i < kAlphabet.size(); ++i)
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::int8_t>(i);
    return values;
}
constexpr auto kValues = Values();
} // namespace

std::vector<unsigned char> FromBase64(std::string_view text) {
    std::vector<unsigned char> result;
    result.reserve(text.size() / 4 * 3 + 3);
    unsigned bits = 0;
    int count = 0;
    for (const char unit : text) {
        if (unit == ' ' || unit == '\t' || unit == '\r' || unit == '\n') continue;
        const std::int8_t value = kValues[static_cast<unsigned char>(unit)];
        if (value == kNone) break;
        bits = bits << 6U | static_cast<unsigned>(value);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        result.push_back(static_cast<unsigned char>(bits >> static_cast<unsigned>(count) & 0xFFU));
    }
    return result;
}

std::string ToBase64(std::span<const unsigned char> bytes) {
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t start = 0; start < bytes.size(); start += 3) {
        unsigned bits = 0;
        for (std::size_t place = 0; place < 3; ++place)
            bits = bits << 8U | (start + place < bytes.size() ? bytes[start + place] : 0U);
        for (unsigned place = 0; place < 4; ++place) {
            const bool isPadding = start + place > bytes.size();
            result += isPadding ? '=' : kAlphabet[bits >> (18U - 6U * place) & 63U];
        }
    }
    return result;
}

} // namespace ODF::crypto
