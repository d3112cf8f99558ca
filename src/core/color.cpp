#include <odfmodel/core/color.h>

#include <charconv>

namespace ODF {

std::optional<Color> Color::Parse(std::string_view text) noexcept {
    constexpr std::size_t kLength = 7;
    if (text.size() != kLength || text[0] != '#' || text[1] == '-') return std::nullopt;
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + kLength, value, 16);
    if (error != std::errc() || end != text.data() + kLength) return std::nullopt;
    return Color{static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
                 static_cast<std::uint8_t>(value)};
}

std::string Color::Print() const {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "#";
    for (const unsigned part : {unsigned{red}, unsigned{green}, unsigned{blue}})
        text.append(1, kDigits[part >> 4]).append(1, kDigits[part & 15]);
    return text;
}

} // namespace ODF
