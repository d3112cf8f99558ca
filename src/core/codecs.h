#pragma once

#include "core/class_descriptor.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ODF {

// How attribute values look as text. Nothing here reports a bad text: "abc" reads as 0, "12px" as 12. Each
// parser takes UTF-8, as the reader holds it, or UTF-16, as the interface hands it over; only ASCII counts in
// either.

/// "1" or "true", in any case, is true.
bool ParseBool(std::string_view text) noexcept;
bool ParseBool(std::u16string_view text) noexcept;
/// Everything but an empty text, "0" and "false", in any case, is true.
bool ParseTruth(std::string_view text) noexcept;
bool ParseTruth(std::u16string_view text) noexcept;
/// Base 10; what follows the digits is ignored, "-1" wraps, a number too large gives the largest.
std::uint32_t ParseUnsigned(std::string_view text) noexcept;
std::uint32_t ParseUnsigned(std::u16string_view text) noexcept;
/// Base 10; a number out of range gives the nearest end of the range.
std::int32_t ParseSigned(std::string_view text) noexcept;
std::int32_t ParseSigned(std::u16string_view text) noexcept;
/// Decimal point `.` whatever the locale; a number too large gives infinity.
double ParseDouble(std::string_view text) noexcept;
double ParseDouble(std::u16string_view text) noexcept;

/// Room for any number's text: a double has at most 309 digits before the point.
struct NumberText {
    char text[352];
    std::size_t length = 0;
    std::string_view view() const noexcept { return {text, length}; }
};
/// Six decimals, then without trailing zeros and a bare point.
NumberText PrintDouble(double value) noexcept;
/// The shortest text that reads as the same number; without an exponent unless that would be long.
NumberText PrintExactly(double value) noexcept;
NumberText PrintExactly(float value) noexcept;
/// A quick test for a number whose shortest text is `text` itself; false tells nothing.
bool IsPlainNumber(std::string_view text, bool isFloat) noexcept;
NumberText PrintUnsigned(std::uint32_t value) noexcept;
NumberText PrintSigned(std::int32_t value) noexcept;

/// The text before the first comma, when that is after the first unit; else the whole text.
std::u16string_view FirstFont(std::u16string_view value) noexcept;
std::string_view FirstFont(std::string_view value) noexcept;

/// The text with `&`, `>`, `<` and `"` replaced by their entities, as `AddAttribute` takes it.
std::u16string EscapeXml(std::u16string_view text);

} // namespace ODF
