#include <odfmodel/core/length.h>

#include "core/digits.h"

#include <array>
#include <charconv>
#include <cmath>

namespace ODF {
namespace {

struct UnitRow {
    std::string_view name;
    double points; ///< 0 for what depends on another length
};

/// In the order of `LengthUnit`.
constexpr std::array<UnitRow, 8> kUnits{{{"cm", 72 / 2.54},
                                         {"mm", 72 / 25.4},
                                         {"in", 72},
                                         {"pt", 1},
                                         {"pc", 12},
                                         {"px", 0.75},
                                         {"em", 0},
                                         {"%", 0}}};

const UnitRow& RowOf(LengthUnit unit) noexcept {
    return kUnits[static_cast<std::size_t>(unit)];
}

/// Takes a number without an exponent off the front.
std::optional<double> TakeNumber(std::string_view& text) noexcept {
    std::size_t at = text.starts_with('-') ? 1 : 0;
    bool hasDigit = false;
    for (bool hasPoint = false; at < text.size(); ++at) {
        if (IsDigit(text[at]))
            hasDigit = true;
        else if (text[at] == '.' && !hasPoint)
            hasPoint = true;
        else
            break;
    }
    double number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + at, number, std::chars_format::fixed);
    if (!hasDigit || error != std::errc() || !std::isfinite(number)) return std::nullopt;
    text.remove_prefix(at);
    return number;
}

} // namespace

Length::Length(double number, LengthUnit unit) noexcept
    : number_(std::isfinite(number) ? number : 0), unit_(unit) {}

std::optional<Length> Length::Parse(std::string_view text) {
    std::string_view rest = text;
    const std::optional<double> number = TakeNumber(rest);
    if (!number) return std::nullopt;
    for (std::size_t unit = 0; unit < kUnits.size(); ++unit) {
        if (rest != kUnits[unit].name) continue;
        Length length(*number, static_cast<LengthUnit>(unit));
        if (length.Print() != text) length.words_ = text;
        return length;
    }
    return std::nullopt;
}

std::string Length::Print() const {
    if (!words_.empty()) return words_;
    std::array<char, 1100> digits{}; // the smallest double has 1,077 of them
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), number_, std::chars_format::fixed);
    return std::string(digits.data(), end).append(RowOf(unit_).name);
}

std::optional<double> Length::In(LengthUnit unit) const noexcept {
    if (unit == unit_) return number_;
    const double from = RowOf(unit_).points;
    const double to = RowOf(unit).points;
    return from > 0 && to > 0 ? std::optional(number_ * from / to) : std::nullopt;
}

} // namespace ODF
