#include <odfmodel/document/cell_value.h>

#include "core/codecs.h"

#include <odfmodel/core/iso_time.h>

#include <array>
#include <charconv>
#include <cmath>

namespace ODF {
namespace {

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
    return Date(DateTime{year, month, day}.Print());
}

CellValue CellValue::Time(unsigned hours, unsigned minutes, unsigned seconds) {
    return Time(Duration::Of(hours, minutes, seconds).Print());
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
        if (const auto time = Duration::Parse(text_)) return time->Clock();
        return text_;
    case CellKind::Date:
    case CellKind::Text:
        return text_;
    }
    return {};
}

bool CellValue::IsValid() const noexcept {
    if (kind_ == CellKind::Date) return DateTime::Parse(text_).has_value();
    if (kind_ == CellKind::Time) return Duration::IsDuration(text_);
    return std::isfinite(number_);
}

} // namespace ODF
