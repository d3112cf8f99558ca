#include "core/codecs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace ODF {
namespace {

template<typename Char>
constexpr bool IsBlank(Char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// A whole number at the head of a text: blanks, a sign, digits.
struct Whole {
    bool negative = false;
    std::uint64_t magnitude = 0; ///< stops growing beyond 32 bits
};

template<typename Char>
Whole ScanWhole(std::basic_string_view<Char> text) noexcept {
    Whole whole;
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at]))
        ++at;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) whole.negative = text[at++] == '-';
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
        if (whole.magnitude <= std::numeric_limits<std::uint32_t>::max())
            whole.magnitude = whole.magnitude * 10 + static_cast<std::uint64_t>(text[at] - '0');
    return whole;
}

template<typename Char>
std::uint32_t ToUnsigned(std::basic_string_view<Char> text) noexcept {
    const Whole whole = ScanWhole(text);
    if (whole.magnitude > std::numeric_limits<std::uint32_t>::max())
        return std::numeric_limits<std::uint32_t>::max();
    const auto value = static_cast<std::uint32_t>(whole.magnitude);
    return whole.negative ? 0U - value : value;
}

template<typename Char>
std::int32_t ToSigned(std::basic_string_view<Char> text) noexcept {
    const Whole whole = ScanWhole(text);
    constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
    const auto magnitude = static_cast<std::int64_t>(whole.magnitude);
    if (whole.negative) return static_cast<std::int32_t>(std::max<std::int64_t>(-magnitude, -kMax - 1));
    return static_cast<std::int32_t>(std::min<std::int64_t>(magnitude, kMax));
}

/// Equality with a word in lower-case ASCII, whatever the case of the text.
template<typename Char>
bool IsWord(std::basic_string_view<Char> text, std::string_view word) noexcept {
    if (text.size() != word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i)
        if (text[i] != static_cast<Char>(word[i]) && text[i] != static_cast<Char>(word[i] - 'a' + 'A'))
            return false;
    return true;
}

template<typename Char>
bool ToBool(std::basic_string_view<Char> text) noexcept {
    return text.size() == 1 ? text[0] == '1' : IsWord(text, "true");
}

template<typename Char>
bool ToTruth(std::basic_string_view<Char> text) noexcept {
    return !(text.empty() || (text.size() == 1 && text[0] == '0') || IsWord(text, "false"));
}

template<typename Char>
std::basic_string_view<Char> ToFirstFont(std::basic_string_view<Char> value) noexcept {
    const std::size_t comma = value.find(static_cast<Char>(','));
    return comma == std::basic_string_view<Char>::npos || comma == 0 ? value : value.substr(0, comma);
}

template<typename T>
NumberText PrintWhole(T value) noexcept {
    NumberText result;
    result.length = static_cast<std::size_t>(
        std::to_chars(result.text, result.text + sizeof result.text, value).ptr - result.text);
    return result;
}

} // namespace

bool ParseBool(std::string_view text) noexcept {
    return ToBool(text);
}
bool ParseBool(std::u16string_view text) noexcept {
    return ToBool(text);
}
bool ParseTruth(std::string_view text) noexcept {
    return ToTruth(text);
}
bool ParseTruth(std::u16string_view text) noexcept {
    return ToTruth(text);
}
std::uint32_t ParseUnsigned(std::string_view text) noexcept {
    return ToUnsigned(text);
}
std::uint32_t ParseUnsigned(std::u16string_view text) noexcept {
    return ToUnsigned(text);
}
std::int32_t ParseSigned(std::string_view text) noexcept {
    return ToSigned(text);
}
std::int32_t ParseSigned(std::u16string_view text) noexcept {
    return ToSigned(text);
}

double ParseDouble(std::string_view text) noexcept {
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at]))
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) negative = text[at++] == '-';
    // A second sign is none of a number.
    if (at < text.size() && text[at] == '-') return 0;
    double value = 0;
    const auto result = std::from_chars(text.data() + at, text.data() + text.size(), value);
    if (result.ec == std::errc::invalid_argument) return 0; // not the negative zero of a lone sign
    if (result.ec == std::errc::result_out_of_range) {
        // Too large gives infinity, too small 0; the exponent's sign tells which.
        const std::string_view number(text.data() + at,
                                      static_cast<std::size_t>(result.ptr - text.data()) - at);
        const std::size_t exponent = number.find_first_of("eE");
        const bool tiny = exponent != std::string_view::npos
                              ? number.find('-', exponent) != std::string_view::npos
                              : number.starts_with("0.") || number.starts_with('.');
        value = tiny ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -value : value;
}

double ParseDouble(std::u16string_view text) noexcept {
    // A number is ASCII, so the head of the text up to the first other unit is all that counts.
    std::array<char, 512> ascii;
    std::size_t length = 0;
    while (length < text.size() && length < ascii.size() && text[length] < 0x80) {
        ascii[length] = static_cast<char>(text[length]);
        ++length;
    }
    return ParseDouble(std::string_view(ascii.data(), length));
}

NumberText PrintDouble(double value) noexcept {
    NumberText result;
    if (!std::isfinite(value)) {
        const std::string_view name = std::isnan(value) ? "NaN" : value > 0 ? "INF" : "-INF";
        result.length = name.copy(result.text, name.size());
        return result;
    }
    const auto end =
        std::to_chars(result.text, result.text + sizeof result.text, value, std::chars_format::fixed, 6).ptr;
    std::string_view text(result.text, static_cast<std::size_t>(end - result.text));
    text.remove_suffix(text.size() - text.find_last_not_of('0') - 1);
    if (text.ends_with('.')) text.remove_suffix(1);
    result.length = text.size();
    return result;
}

namespace {

template<typename T>
NumberText PrintShortest(T value) noexcept {
    if (!std::isfinite(value)) return PrintDouble(static_cast<double>(value));
    const double size = std::abs(static_cast<double>(value));
    const bool isLong = size != 0 && (size < 1e-6 || size >= 1e21);
    NumberText result;
    char* const end = result.text + sizeof result.text;
    result.length = static_cast<std::size_t>(
        (isLong ? std::to_chars(result.text, end, value, std::chars_format::scientific)
                : std::to_chars(result.text, end, value, std::chars_format::fixed))
            .ptr -
        result.text);
    return result;
}

} // namespace

NumberText PrintExactly(double value) noexcept {
    return PrintShortest(value);
}
NumberText PrintExactly(float value) noexcept {
    return PrintShortest(value);
}

bool IsPlainNumber(std::string_view text, bool isFloat) noexcept {
    // Decimals of so few digits all differ as binary numbers too, so none has a shorter text than itself.
    const std::size_t mostDigits = isFloat ? 6 : 15;
    std::size_t at = 0;
    if (at < text.size() && text[at] == '-') ++at;
    const std::size_t first = at;
    std::size_t point = std::string_view::npos;
    for (; at < text.size(); ++at) {
        if (text[at] == '.' && point == std::string_view::npos)
            point = at;
        else if (text[at] < '0' || text[at] > '9')
            return false;
    }
    const std::size_t whole = std::min(point, text.size()) - first;
    const std::size_t digits = text.size() - first - (point == std::string_view::npos ? 0 : 1);
    if (whole == 0 || digits > mostDigits || (text[first] == '0' && whole > 1)) return false;
    if (point == std::string_view::npos) return first == 0 || text[first] != '0';
    // Trailing zeros, a bare point and numbers so small that they get an exponent aren't plain.
    return text.size() > point + 1 && text.back() != '0' && (text[first] != '0' || digits <= 6);
}

NumberText PrintUnsigned(std::uint32_t value) noexcept {
    return PrintWhole(value);
}
NumberText PrintSigned(std::int32_t value) noexcept {
    return PrintWhole(value);
}

std::u16string_view FirstFont(std::u16string_view value) noexcept {
    return ToFirstFont(value);
}
std::string_view FirstFont(std::string_view value) noexcept {
    return ToFirstFont(value);
}

std::u16string EscapeXml(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (const char16_t c : text) {
        switch (c) {
        case u'&':
            result += u"&amp;";
            break;
        case u'>':
            result += u"&gt;";
            break;
        case u'<':
            result += u"&lt;";
            break;
        case u'"':
            result += u"&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace ODF
