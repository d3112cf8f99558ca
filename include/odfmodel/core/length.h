#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <compare>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace ODF {

enum class LengthUnit { Centimeter, Millimeter, Inch, Point, Pica, Pixel, Em, Percent };

/// A length as attributes have it: a number with its unit, such as "2.5cm", "12pt" or "115%". Reading and
/// printing gives the same words. The attributes stay texts, which a length turns into by itself:
///
///     frame.SetSvgWidth(ODF::Length::Centimeters(4.5));
class ODFMODEL_API Length {
public:
    /// 0cm.
    Length() = default;
    /// A number that isn't finite counts as 0.
    Length(double number, LengthUnit unit) noexcept;
    static Length Centimeters(double number) noexcept { return {number, LengthUnit::Centimeter}; }
    static Length Millimeters(double number) noexcept { return {number, LengthUnit::Millimeter}; }
    static Length Inches(double number) noexcept { return {number, LengthUnit::Inch}; }
    static Length Points(double number) noexcept { return {number, LengthUnit::Point}; }
    static Length Percent(double number) noexcept { return {number, LengthUnit::Percent}; }

    /// Nothing for any other text: without a unit, with blanks, with an exponent.
    static std::optional<Length> Parse(std::string_view text);
    static std::optional<Length> Parse(const std::same_as<CTulStringW> auto& text) {
        return Parse(std::string_view(text.utf8()));
    }
    /// The words that were read, else the shortest that read as the same number.
    std::string Print() const;
    operator CTulStringW() const { return CTulStringW(Print()); } // NOLINT(google-explicit-constructor)

    double Number() const noexcept { return number_; }
    LengthUnit Unit() const noexcept { return unit_; }
    /// False for percentages and em, which depend on another length.
    bool IsAbsolute() const noexcept { return unit_ != LengthUnit::Em && unit_ != LengthUnit::Percent; }
    /// The number in another unit, with 96 pixels an inch; nothing between an absolute unit and one that
    /// isn't, or between em and percent.
    std::optional<double> In(LengthUnit unit) const noexcept;

    /// Whether number and unit agree; the words don't count, and 1in isn't 2.54cm.
    friend bool operator==(const Length& a, const Length& b) noexcept {
        return a.number_ == b.number_ && a.unit_ == b.unit_;
    }
    /// By size; unordered where `In` has nothing.
    friend std::partial_ordering operator<=>(const Length& a, const Length& b) noexcept {
        if (a == b) return std::partial_ordering::equivalent;
        const std::optional<double> other = b.In(a.unit_);
        return other ? a.number_ <=> *other : std::partial_ordering::unordered;
    }

private:
    double number_ = 0;
    LengthUnit unit_ = LengthUnit::Centimeter;
    std::string words_; ///< as they were read, where they aren't those that would be printed
};

} // namespace ODF
