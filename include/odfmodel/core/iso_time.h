#pragma once

#include <odfmodel/core/date_time.h>
#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// @file
/// Dates and durations as attributes and elements have them.

namespace ODF {

/// A date, or a date with a time: "2024-01-31", "2024-01-31T12:30:00.5Z". Reading and printing gives the same
/// words, up to nine digits of a second; further ones are dropped.
struct DateTime {
    int year = 1;
    unsigned month = 1; ///< 1 to 12
    unsigned day = 1;
    bool hasTime = false;
    unsigned hour = 0; ///< 24 for the end of the day, as files may have it
    unsigned minute = 0;
    unsigned second = 0;
    std::uint32_t nanosecond = 0;
    unsigned fractionDigits = 0;        ///< digits of a second that are printed, at most 9
    std::optional<int> offsetMinutes{}; ///< to UTC; 0 is printed as "Z", nothing is a local time

    /// Nothing for any other text, or a date that no calendar has.
    ODFMODEL_API static std::optional<DateTime> Parse(std::string_view text) noexcept;
    static std::optional<DateTime> Parse(const std::same_as<CTulStringW> auto& text) {
        return Parse(std::string_view(text.utf8()));
    }
    /// The fields of an element with a date, such as `CDcDate`.
    ODFMODEL_API static DateTime From(const SYSTEMTIME& time) noexcept;
    /// Whether all fields are in their ranges and the month has the day.
    ODFMODEL_API bool IsValid() const noexcept;
    ODFMODEL_API std::string Print() const;
    operator CTulStringW() const { return CTulStringW(Print()); } // NOLINT(google-explicit-constructor)
    /// For elements with a date. The offset goes; a year before 0 or after 65535 gives all zeros.
    ODFMODEL_API SYSTEMTIME ToSystemTime() const noexcept;

    friend bool operator==(const DateTime&, const DateTime&) = default;
};

/// A time of day or a duration: "PT12H30M05.5S", "P1DT2H", "-PT5M". Reading and printing gives the same
/// words.
class ODFMODEL_API Duration {
public:
    /// Of no time.
    Duration() = default;
    /// `seconds` may have a fraction, down to a millionth; less than 0 or not finite counts as 0.
    static Duration Of(unsigned hours, unsigned minutes, double seconds = 0);
    /// In hours, minutes and seconds, down to a millionth of one; a number that isn't finite counts as 0, and
    /// one beyond 1e12 as that.
    static Duration Seconds(double seconds);

    /// Nothing for any other text.
    static std::optional<Duration> Parse(std::string_view text);
    static std::optional<Duration> Parse(const std::same_as<CTulStringW> auto& text) {
        return Parse(std::string_view(text.utf8()));
    }
    /// Whether `Parse` would read the text.
    static bool IsDuration(std::string_view text) noexcept;
    const std::string& Print() const noexcept { return words_; }
    operator CTulStringW() const { return CTulStringW(words_); } // NOLINT(google-explicit-constructor)

    /// The whole in seconds; nothing when it has years or months, whose length varies.
    std::optional<double> TotalSeconds() const noexcept;
    /// Such as "12:30:05.5"; the words themselves where there are years, months or days.
    std::string Clock() const;

    friend bool operator==(const Duration&, const Duration&) = default;

private:
    std::string words_ = "PT00H00M00S";
};

} // namespace ODF
