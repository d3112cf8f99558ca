#include <odfmodel/document/cell_value.h>

#include "core/codecs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>

namespace ODF {
namespace {

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// Whether `text` has the form of `pattern`, in which 0 stands for any digit; takes it off the front.
bool Take(std::string_view& text, std::string_view pattern) noexcept {
    if (text.size() < pattern.size()) return false;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] == '0' ? !IsDigit(text[i]) : text[i] != pattern[i]) return false;
    text.remove_prefix(pattern.size());
    return true;
}

void TakeFraction(std::string_view& text) noexcept {
    if (text.size() < 2 || text[0] != '.' || !IsDigit(text[1])) return;
    text.remove_prefix(1);
    while (!text.empty() && IsDigit(text.front()))
        text.remove_prefix(1);
}

unsigned TwoDigits(std::string_view text) noexcept {
    return static_cast<unsigned>((text[0] - '0') * 10 + (text[1] - '0'));
}

bool IsDate(std::string_view text) noexcept {
    if (text.starts_with('-')) text.remove_prefix(1);
    while (text.size() > 4 && IsDigit(text[0]) && IsDigit(text[4]))
        text.remove_prefix(1); // a year of more than four digits
    const std::string_view date = text;
    if (!Take(text, "0000-00-00")) return false;
    int year = 0;
    std::from_chars(date.data(), date.data() + 4, year);
    const std::chrono::year_month_day day{std::chrono::year(year),
                                          std::chrono::month(TwoDigits(date.substr(5))),
                                          std::chrono::day(TwoDigits(date.substr(8)))};
    if (!day.ok()) return false;
    if (text.empty()) return true;
    const std::string_view time = text;
    if (!Take(text, "T00:00:00") || TwoDigits(time.substr(1)) > 24 || TwoDigits(time.substr(4)) > 59 ||
        TwoDigits(time.substr(7)) > 59)
        return false;
    TakeFraction(text);
    return text.empty() || text == "Z";
}

/// A duration in hours, minutes and seconds; the seconds keep their words.
struct Duration {
    bool isNegative = false;
    std::string_view date; ///< years, months and days
    std::string_view hours;
    std::string_view minutes;
    std::string_view seconds;
};

std::optional<Duration> ParseDuration(std::string_view text) noexcept {
    Duration result;
    result.isNegative = text.starts_with('-');
    if (result.isNegative) text.remove_prefix(1);
    if (!text.starts_with('P')) return std::nullopt;
    text.remove_prefix(1);
    bool hasPart = false;
    const auto take = [&](char unit, bool mayHaveFraction) {
        std::string_view rest = text;
        while (!rest.empty() && IsDigit(rest.front()))
            rest.remove_prefix(1);
        if (rest.size() == text.size()) return std::string_view();
        if (mayHaveFraction) TakeFraction(rest);
        if (!rest.starts_with(unit)) return std::string_view();
        const std::string_view number = text.substr(0, text.size() - rest.size());
        text = rest.substr(1);
        hasPart = true;
        return number;
    };
    const std::string_view date = text;
    for (const char unit : {'Y', 'M', 'D'})
        take(unit, false);
    result.date = date.substr(0, date.size() - text.size());
    if (text.starts_with('T')) {
        text.remove_prefix(1);
        hasPart = false;
        result.hours = take('H', false);
        result.minutes = take('M', false);
        result.seconds = take('S', true);
    }
    return hasPart && text.empty() ? std::optional(result) : std::nullopt;
}

/// "12:30:05" where the duration is a plain time, else its own words.
std::string ShownTime(const std::string& iso) {
    const auto duration = ParseDuration(iso);
    if (!duration || !duration->date.empty()) return iso;
    const auto padded = [](std::string_view number) {
        const std::size_t whole = std::min(number.size(), number.find('.'));
        return std::string(whole < 2 ? 2 - whole : 0, '0').append(number);
    };
    std::string text(duration->isNegative ? "-" : "");
    text.append(padded(duration->hours)).append(1, ':').append(padded(duration->minutes));
    return text.append(1, ':').append(padded(duration->seconds));
}

/// With the digits that a hundredfold number has: 0.07 is 7, not 7.000000000000001.
std::string ShownPercentage(double number) {
    constexpr int kDigits = 14;
    std::array<char, 64> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number * 100,
                                            std::chars_format::general, kDigits);
    return std::string(text.data(), error == std::errc() ? end : text.data()) + "%";
}

} // namespace

CellValue CellValue::Date(int year, unsigned month, unsigned day) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", year, month, day);
    return Date(std::string_view(text.data()));
}

CellValue CellValue::Time(unsigned hours, unsigned minutes, unsigned seconds) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "PT%02uH%02uM%02uS", hours, minutes, seconds);
    return Time(std::string_view(text.data()));
}

std::string CellValue::Shown() const {
    switch (kind_) {
    case CellKind::Empty:
        break;
    case CellKind::Number:
        return std::string(PrintExactly(number_).view());
    case CellKind::Percentage:
        return ShownPercentage(number_);
    case CellKind::Currency:
        return std::string(PrintExactly(number_).view()) + (text_.empty() ? "" : " " + text_);
    case CellKind::Bool:
        return number_ != 0 ? "TRUE" : "FALSE";
    case CellKind::Time:
        return ShownTime(text_);
    case CellKind::Date:
    case CellKind::Text:
        return text_;
    }
    return {};
}

bool CellValue::IsValid() const noexcept {
    if (kind_ == CellKind::Date) return IsDate(text_);
    if (kind_ == CellKind::Time) return ParseDuration(text_).has_value();
    return std::isfinite(number_);
}

} // namespace ODF
