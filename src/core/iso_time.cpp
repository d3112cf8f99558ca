#include <odfmodel/core/iso_time.h>

#include "core/codecs.h"
#include "core/digits.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace ODF {
namespace {

constexpr unsigned kMaxFractionDigits = 9;

/// Takes a separator and the two digits after it off the front.
bool TakeTwo(std::string_view& text, std::string_view separator, unsigned& out) noexcept {
    const std::size_t at = separator.size();
    if (!text.starts_with(separator) || text.size() < at + 2 || !IsDigit(text[at]) || !IsDigit(text[at + 1]))
        return false;
    out = static_cast<unsigned>((text[at] - '0') * 10 + (text[at + 1] - '0'));
    text.remove_prefix(at + 2);
    return true;
}

/// The digits after a point; takes both off the front. Empty when there aren't any.
std::string_view TakeFraction(std::string_view& text) noexcept {
    if (text.size() < 2 || text[0] != '.' || !IsDigit(text[1])) return {};
    std::size_t end = 1;
    while (end < text.size() && IsDigit(text[end]))
        ++end;
    const std::string_view digits = text.substr(1, end - 1);
    text.remove_prefix(end);
    return digits;
}

bool TakeYear(std::string_view& text, int& year) noexcept {
    const bool isNegative = text.starts_with('-');
    std::size_t end = isNegative ? 1 : 0;
    const std::size_t begin = end;
    long long value = 0;
    for (; end < text.size() && IsDigit(text[end]); ++end)
        if ((value = value * 10 + (text[end] - '0')) > std::numeric_limits<int>::max()) return false;
    if (end - begin < 4) return false;
    year = static_cast<int>(isNegative ? -value : value);
    text.remove_prefix(end);
    return true;
}

bool TakeOffset(std::string_view& text, std::optional<int>& out) noexcept {
    if (text == "Z") {
        out = 0;
        text = {};
        return true;
    }
    if (!text.starts_with('+') && !text.starts_with('-')) return true;
    unsigned hours = 0;
    unsigned minutes = 0;
    const bool isWest = text[0] == '-';
    if (!TakeTwo(text, text.substr(0, 1), hours) || !TakeTwo(text, ":", minutes)) return false;
    const int offset = static_cast<int>(hours * 60 + minutes);
    out = isWest ? -offset : offset;
    return minutes < 60 && hours <= 14;
}

/// The numbers of a duration, in their words; empty where one is absent.
struct DurationParts {
    bool isNegative = false;
    std::string_view years, months, days, hours, minutes, seconds;
    bool hasDate() const noexcept { return !years.empty() || !months.empty() || !days.empty(); }
};

/// Takes the number before `unit`, and the unit, off the front; empty when it isn't there.
std::string_view TakePart(std::string_view& text, char unit, bool mayHaveFraction) noexcept {
    std::string_view rest = text;
    while (!rest.empty() && IsDigit(rest.front()))
        rest.remove_prefix(1);
    if (rest.size() == text.size()) return {};
    if (mayHaveFraction) TakeFraction(rest);
    if (!rest.starts_with(unit)) return {};
    const std::string_view number = text.substr(0, text.size() - rest.size());
    text = rest.substr(1);
    return number;
}

std::optional<DurationParts> ParseDuration(std::string_view text) noexcept {
    DurationParts parts;
    parts.isNegative = text.starts_with('-');
    if (parts.isNegative) text.remove_prefix(1);
    if (!text.starts_with('P')) return std::nullopt;
    text.remove_prefix(1);
    parts.years = TakePart(text, 'Y', false);
    parts.months = TakePart(text, 'M', false);
    parts.days = TakePart(text, 'D', false);
    bool isComplete = parts.hasDate();
    if (text.starts_with('T')) {
        text.remove_prefix(1);
        parts.hours = TakePart(text, 'H', false);
        parts.minutes = TakePart(text, 'M', false);
        parts.seconds = TakePart(text, 'S', true);
        isComplete = !parts.hours.empty() || !parts.minutes.empty() || !parts.seconds.empty();
    }
    return isComplete && text.empty() ? std::optional(parts) : std::nullopt;
}

double NumberOf(std::string_view digits) noexcept {
    return digits.empty() ? 0 : ParseDouble(digits);
}

/// With at least two digits before the point.
std::string Padded(std::string_view number) {
    const std::size_t whole = std::min(number.size(), number.find('.'));
    return std::string(whole < 2 ? 2 - whole : 0, '0').append(number);
}

} // namespace

std::optional<DateTime> DateTime::Parse(std::string_view text) noexcept {
    DateTime result;
    if (!TakeYear(text, result.year) || !TakeTwo(text, "-", result.month) || !TakeTwo(text, "-", result.day))
        return std::nullopt;
    if (text.starts_with('T')) {
        result.hasTime = true;
        if (!TakeTwo(text, "T", result.hour) || !TakeTwo(text, ":", result.minute) ||
            !TakeTwo(text, ":", result.second))
            return std::nullopt;
        for (const char digit : TakeFraction(text).substr(0, kMaxFractionDigits)) {
            result.nanosecond = result.nanosecond * 10 + static_cast<std::uint32_t>(digit - '0');
            ++result.fractionDigits;
        }
        for (unsigned i = result.fractionDigits; i < kMaxFractionDigits; ++i)
            result.nanosecond *= 10;
        if (!TakeOffset(text, result.offsetMinutes)) return std::nullopt;
    }
    return text.empty() && result.IsValid() ? std::optional(result) : std::nullopt;
}

DateTime DateTime::From(const SYSTEMTIME& time) noexcept {
    DateTime result{time.wYear, time.wMonth, time.wDay, true, time.wHour, time.wMinute, time.wSecond};
    result.nanosecond = time.wMilliseconds * 1000000U;
    result.fractionDigits = time.wMilliseconds != 0 ? 3 : 0;
    return result;
}

bool DateTime::IsValid() const noexcept {
    // The calendar repeats every 400 years, and its own years have 16 bits.
    const std::chrono::year_month_day date{std::chrono::year(year % 400), std::chrono::month(month),
                                           std::chrono::day(day)};
    const bool isEndOfDay = hour == 24 && minute == 0 && second == 0 && nanosecond == 0;
    return month <= 12 && day <= 31 && date.ok() && (hour <= 23 || isEndOfDay) && minute <= 59 &&
           second <= 59 && nanosecond < 1000000000U && fractionDigits <= kMaxFractionDigits;
}

std::string DateTime::Print() const {
    std::array<char, 96> text{};
    int length = std::snprintf(text.data(), text.size(), year < 0 ? "-%04lld-%02u-%02u" : "%04lld-%02u-%02u",
                               std::llabs(year), month, day);
    std::string result(text.data(), static_cast<std::size_t>(length));
    if (!hasTime) return result;
    length = std::snprintf(text.data(), text.size(), "T%02u:%02u:%02u", hour, minute, second);
    result.append(text.data(), static_cast<std::size_t>(length));
    if (const unsigned digits = std::min(fractionDigits, kMaxFractionDigits); digits > 0) {
        std::snprintf(text.data(), text.size(), ".%09u", nanosecond);
        result.append(text.data(), digits + 1);
    }
    if (!offsetMinutes) return result;
    if (*offsetMinutes == 0) return result.append("Z");
    const unsigned offset = static_cast<unsigned>(std::abs(*offsetMinutes));
    length = std::snprintf(text.data(), text.size(), "%c%02u:%02u", *offsetMinutes < 0 ? '-' : '+',
                           offset / 60, offset % 60);
    return result.append(text.data(), static_cast<std::size_t>(length));
}

SYSTEMTIME DateTime::ToSystemTime() const noexcept {
    SYSTEMTIME time;
    if (year < 0 || year > 0xFFFF || !IsValid()) return time;
    time.wYear = static_cast<unsigned short>(year);
    time.wMonth = static_cast<unsigned short>(month);
    time.wDay = static_cast<unsigned short>(day);
    time.wHour = static_cast<unsigned short>(hour);
    time.wMinute = static_cast<unsigned short>(minute);
    time.wSecond = static_cast<unsigned short>(second);
    time.wMilliseconds = static_cast<unsigned short>(nanosecond / 1000000);
    return time;
}

Duration Duration::Of(unsigned hours, unsigned minutes, double seconds) {
    if (!std::isfinite(seconds) || seconds < 0) seconds = 0;
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "PT%02uH%02uM", hours, minutes);
    Duration result;
    result.words_.assign(text.data(), static_cast<std::size_t>(length));
    result.words_.append(Padded(PrintDouble(seconds).view())).append("S");
    return result;
}

Duration Duration::Seconds(double seconds) {
    constexpr double kMax = 1e12;
    if (!std::isfinite(seconds)) seconds = 0;
    // In millionths, so that 0.1 + 0.2 has no more digits than people expect.
    const auto millionths = static_cast<std::uint64_t>(std::round(std::min(std::abs(seconds), kMax) * 1e6));
    const std::uint64_t minutes = millionths / 60000000;
    Duration result = Of(static_cast<unsigned>(minutes / 60), static_cast<unsigned>(minutes % 60),
                         static_cast<double>(millionths % 60000000) / 1e6);
    if (seconds < 0 && millionths > 0) result.words_.insert(0, 1, '-');
    return result;
}

std::optional<Duration> Duration::Parse(std::string_view text) {
    if (!IsDuration(text)) return std::nullopt;
    Duration result;
    result.words_ = text;
    return result;
}

bool Duration::IsDuration(std::string_view text) noexcept {
    return ParseDuration(text).has_value();
}

std::optional<double> Duration::TotalSeconds() const noexcept {
    const auto parts = ParseDuration(words_);
    if (!parts || NumberOf(parts->years) != 0 || NumberOf(parts->months) != 0) return std::nullopt;
    const double sum =
        ((NumberOf(parts->days) * 24 + NumberOf(parts->hours)) * 60 + NumberOf(parts->minutes)) * 60 +
        NumberOf(parts->seconds);
    return parts->isNegative ? -sum : sum;
}

std::string Duration::Clock() const {
    const auto parts = ParseDuration(words_);
    if (!parts || parts->hasDate()) return words_;
    std::string text(parts->isNegative ? "-" : "");
    text.append(Padded(parts->hours)).append(1, ':').append(Padded(parts->minutes));
    return text.append(1, ':').append(Padded(parts->seconds));
}

} // namespace ODF
