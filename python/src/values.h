#pragma once

#include "tree.h"

#include <odfmodel/document/cell_value.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace odfpython {

/// None, int, float, bool, str, datetime or timedelta. Dates and times that Python can't have are their text.
py::object ValueToPython(const ODF::CellValue& value);
/// A whole number is an int.
py::object NumberToPython(double number);
/// Throws TypeError for an object of another kind, ValueError for what no cell can hold.
ODF::CellValue FromPython(py::handle value);

/// Nanoseconds since 1970 of "2024-01-31T12:30:00", and those of "PT12H30M"; nothing for what doesn't fit.
std::optional<std::int64_t> ParseDate(std::string_view iso) noexcept;
std::optional<std::int64_t> ParseDuration(std::string_view iso) noexcept;
/// A datetime and a timedelta of them.
py::object DateToPython(std::int64_t nanoseconds);
py::object DurationToPython(std::int64_t nanoseconds);
/// Seconds since 1970, or of a duration, and what comes to them: 0 to 999,999,999 nanoseconds.
struct Seconds {
    std::int64_t whole = 0;
    std::int64_t nanoseconds = 0;
};
/// Back again. Throws ValueError for a date before the year 1 or after 9999.
ODF::CellValue DateValue(const Seconds& since1970);
ODF::CellValue TimeValue(const Seconds& duration);

} // namespace odfpython
