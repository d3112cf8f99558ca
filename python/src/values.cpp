#include "values.h"

#include "attributes.h"

#include <datetime.h>
#pragma GCC diagnostic ignored "-Wold-style-cast" // in Python's macros for dates

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace odfpython {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kMostDays = 999'999'999; // of a timedelta

/// A date and time of day as the file has it, without regard to time zones.
struct Moment {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    std::int64_t nanoseconds = 0;
};

/// Reads what is at the begin of a text and takes it away.
class Reader {
public:
    explicit Reader(std::string_view text) noexcept : text_(text) {}
    bool take(char c) noexcept {
        if (text_.empty() || text_.front() != c) return false;
        text_.remove_prefix(1);
        return true;
    }
    template<typename T>
    bool number(T& out) noexcept {
        if (text_.empty() || text_.front() < '0' || text_.front() > '9') return false;
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), out);
        if (error != std::errc()) return false;
        text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
        return true;
    }
    /// The digits after a decimal point, as nanoseconds.
    bool fraction(std::int64_t& out) noexcept {
        out = 0;
        if (!take('.') && !take(',')) return true;
        std::int64_t unit = kSecond;
        bool hasDigit = false;
        for (; !text_.empty() && text_.front() >= '0' && text_.front() <= '9'; text_.remove_prefix(1)) {
            unit /= 10;
            out += unit * (text_.front() - '0');
            hasDigit = true;
        }
        return hasDigit;
    }
    bool isAtEnd() const noexcept { return text_.empty(); }

private:
    std::string_view text_;
};

std::optional<Moment> ParseMoment(std::string_view iso) noexcept {
    Reader in(iso);
    Moment at;
    if (!in.number(at.year) || !in.take('-') || !in.number(at.month) || !in.take('-') || !in.number(at.day))
        return std::nullopt;
    if (in.take('T') && !(in.number(at.hour) && in.take(':') && in.number(at.minute) &&
                          (!in.take(':') || (in.number(at.second) && in.fraction(at.nanoseconds)))))
        return std::nullopt;
    in.take('Z');
    const std::chrono::year_month_day date(std::chrono::year(at.year),
                                           std::chrono::month(static_cast<unsigned>(at.month)),
                                           std::chrono::day(static_cast<unsigned>(at.day)));
    if (!in.isAtEnd() || at.year < 1 || at.year > 9999 || !date.ok() || at.hour > 23 || at.minute > 59 ||
        at.second > 59)
        return std::nullopt;
    return at;
}

std::string Print(const char* format, auto... values) {
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, values...);
    return {text, static_cast<std::size_t>(length)};
}

/// The digits of a second's fraction with its point; empty for none.
std::string PrintFraction(std::int64_t nanoseconds) {
    if (nanoseconds == 0) return {};
    std::string text = Print(".%09lld", static_cast<long long>(nanoseconds));
    text.erase(text.find_last_not_of('0') + 1);
    return text;
}

std::string PrintMoment(const Moment& at) {
    return Print("%04d-%02d-%02dT%02d:%02d:%02d", at.year, at.month, at.day, at.hour, at.minute, at.second) +
           PrintFraction(at.nanoseconds);
}

std::string PrintSeconds(bool isNegative, std::int64_t seconds, std::int64_t nanoseconds) {
    return Print("%sPT%02lldH%02lldM%02lld", isNegative ? "-" : "", static_cast<long long>(seconds / 3600),
                 static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60)) +
           PrintFraction(nanoseconds) + "S";
}

/// As 64 bits of nanoseconds, if they fit.
std::optional<std::int64_t> InNanoseconds(const Seconds& time) noexcept {
    constexpr std::int64_t most = INT64_MAX / kSecond - 1;
    if (time.whole > most || time.whole < -most) return std::nullopt;
    return time.whole * kSecond + time.nanoseconds;
}

Seconds FromNanoseconds(std::int64_t nanoseconds) noexcept {
    const std::int64_t rest = (nanoseconds % kSecond + kSecond) % kSecond;
    return {nanoseconds / kSecond - (nanoseconds % kSecond < 0 ? 1 : 0), rest};
}

/// Each part at most once, in their order; years and months have no length.
std::optional<Seconds> ParseSpan(std::string_view iso) noexcept {
    constexpr std::pair<char, std::int64_t> parts[] = {{'D', 86400}, {'H', 3600}, {'M', 60}, {'S', 1}};
    constexpr std::int64_t most = 1'000'000'000'000; // so that no sum overflows
    Reader in(iso);
    const bool isNegative = in.take('-');
    if (!in.take('P')) return std::nullopt;
    Seconds span;
    bool hasTime = false;
    std::size_t next = 0;
    while (!in.isAtEnd()) {
        if (!hasTime && in.take('T')) {
            hasTime = true;
            next = std::max<std::size_t>(next, 1);
            continue;
        }
        std::int64_t number = 0;
        std::int64_t nanoseconds = 0;
        if (!in.number(number) || number > most || !in.fraction(nanoseconds)) return std::nullopt;
        while (next < std::size(parts) && !in.take(parts[next].first))
            ++next;
        const bool isDay = next == 0;
        const bool isSecond = next + 1 == std::size(parts);
        if (next == std::size(parts) || isDay == hasTime || (nanoseconds != 0 && !isSecond))
            return std::nullopt;
        span.whole += number * parts[next++].second;
        span.nanoseconds = nanoseconds;
    }
    if (next == 0 || iso.ends_with('T')) return std::nullopt;
    if (!isNegative) return span;
    return span.nanoseconds == 0 ? Seconds{-span.whole, 0}
                                 : Seconds{-span.whole - 1, kSecond - span.nanoseconds};
}

/// Python's API for dates; it must be there in each file that uses it.
void ImportDates() {
    if (!PyDateTimeAPI) PyDateTime_IMPORT;
    if (!PyDateTimeAPI) throw py::error_already_set();
}

py::object Checked(PyObject* made) {
    if (!made) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(made);
}

py::object MomentToPython(const Moment& at) {
    ImportDates();
    return Checked(PyDateTime_FromDateAndTime(at.year, at.month, at.day, at.hour, at.minute, at.second,
                                              static_cast<int>(at.nanoseconds / 1000)));
}

Moment MomentOf(const Seconds& since1970) noexcept {
    const std::chrono::sys_seconds time{std::chrono::seconds(since1970.whole)};
    const auto days = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(days);
    const auto seconds = static_cast<int>((time - days).count());
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            seconds / 3600,
            seconds / 60 % 60,
            seconds % 60,
            since1970.nanoseconds};
}

py::object SpanToPython(const Seconds& span) {
    ImportDates();
    const std::int64_t days = (span.whole - (span.whole < 0 ? 86399 : 0)) / 86400;
    return Checked(PyDelta_FromDSU(static_cast<int>(days), static_cast<int>(span.whole - days * 86400),
                                   static_cast<int>(span.nanoseconds / 1000)));
}

/// Days, seconds and microseconds are all that Python's own classes have; those of pandas know nanoseconds.
std::int64_t Nanoseconds(PyObject* value, std::int64_t microseconds, const char* rest) {
    const py::object more = py::getattr(value, rest, py::none());
    return microseconds * 1000 + (PyLong_Check(more.ptr()) ? more.cast<std::int64_t>() : 0);
}

[[noreturn]] void RefuseValue(py::handle value, const char* why = "") {
    throw py::value_error("a cell can't hold " + py::repr(value).cast<std::string>() + why);
}

std::optional<ODF::CellValue> DateFromPython(PyObject* value) {
    constexpr const char* hasZone = ": take the time zone off first";
    ImportDates();
    if (PyDateTime_Check(value)) {
        const auto differs = py::reinterpret_steal<py::object>(PyObject_RichCompare(value, value, Py_NE));
        if (!differs) throw py::error_already_set();
        if (differs.ptr() == Py_True) RefuseValue(value); // pandas.NaT
        if (PyDateTime_DATE_GET_TZINFO(value) != Py_None) RefuseValue(value, hasZone);
        return ODF::CellValue::Date(
            PrintMoment({PyDateTime_GET_YEAR(value), PyDateTime_GET_MONTH(value), PyDateTime_GET_DAY(value),
                         PyDateTime_DATE_GET_HOUR(value), PyDateTime_DATE_GET_MINUTE(value),
                         PyDateTime_DATE_GET_SECOND(value),
                         Nanoseconds(value, PyDateTime_DATE_GET_MICROSECOND(value), "nanosecond")}));
    }
    if (PyDate_Check(value))
        return ODF::CellValue::Date(PyDateTime_GET_YEAR(value),
                                    static_cast<unsigned>(PyDateTime_GET_MONTH(value)),
                                    static_cast<unsigned>(PyDateTime_GET_DAY(value)));
    if (PyTime_Check(value)) {
        if (PyDateTime_TIME_GET_TZINFO(value) != Py_None) RefuseValue(value, hasZone);
        return TimeValue({PyDateTime_TIME_GET_HOUR(value) * 3600 + PyDateTime_TIME_GET_MINUTE(value) * 60 +
                              PyDateTime_TIME_GET_SECOND(value),
                          PyDateTime_TIME_GET_MICROSECOND(value) * INT64_C(1000)});
    }
    if (PyDelta_Check(value))
        return TimeValue(
            {PyDateTime_DELTA_GET_DAYS(value) * INT64_C(86400) + PyDateTime_DELTA_GET_SECONDS(value),
             Nanoseconds(value, PyDateTime_DELTA_GET_MICROSECONDS(value), "nanoseconds")});
    return std::nullopt;
}

/// A time of numpy, of whatever unit.
ODF::CellValue TimeFromNumpy(const py::object& value, const std::string& kind) {
    const auto count = [](const py::object& time) { return time.attr("astype")("i8").cast<std::int64_t>(); };
    if (!value.attr("__eq__")(value).cast<bool>()) RefuseValue(value); // NaT
    const py::object seconds = value.attr("astype")(kind + "8[s]");
    const Seconds time{count(seconds), count((value - seconds).attr("astype")("m8[ns]"))};
    return kind == "M" ? DateValue(time) : TimeValue(time);
}

/// A scalar of numpy, or an array with one.
ODF::CellValue FromNumpy(const py::object& value) {
    const auto kind = value.attr("dtype").attr("kind").cast<std::string>();
    if ((kind == "M" || kind == "m") && py::hasattr(value, "reshape"))
        return TimeFromNumpy(value.attr("reshape")(py::tuple())[py::tuple()], kind);
    const py::object plain = value.attr("item")();
    if (py::hasattr(plain, "dtype")) { // one that Python has no class for
        if (kind != "f") throw py::type_error("a cell can't hold a " + py::repr(value).cast<std::string>());
        return py::float_(plain).cast<double>();
    }
    return FromPython(plain);
}

} // namespace

std::optional<std::int64_t> ParseDate(std::string_view iso) noexcept {
    const auto at = ParseMoment(iso);
    if (!at) return std::nullopt;
    const std::chrono::sys_days date(std::chrono::year_month_day(
        std::chrono::year(at->year), std::chrono::month(static_cast<unsigned>(at->month)),
        std::chrono::day(static_cast<unsigned>(at->day))));
    const std::int64_t seconds =
        date.time_since_epoch().count() * INT64_C(86400) + at->hour * 3600 + at->minute * 60 + at->second;
    return InNanoseconds({seconds, at->nanoseconds});
}

std::optional<std::int64_t> ParseDuration(std::string_view iso) noexcept {
    const auto span = ParseSpan(iso);
    return span ? InNanoseconds(*span) : std::nullopt;
}

py::object DateToPython(std::int64_t nanoseconds) {
    return MomentToPython(MomentOf(FromNanoseconds(nanoseconds)));
}

py::object DurationToPython(std::int64_t nanoseconds) {
    return SpanToPython(FromNanoseconds(nanoseconds));
}

ODF::CellValue DateValue(const Seconds& since1970) {
    if (since1970.whole < -62'135'596'800 || since1970.whole >= 253'402'300'800)
        throw py::value_error("a cell can't hold a date of that year");
    return ODF::CellValue::Date(PrintMoment(MomentOf(since1970)));
}

ODF::CellValue TimeValue(const Seconds& duration) {
    const bool isNegative = duration.whole < 0;
    if (isNegative && duration.nanoseconds != 0)
        return ODF::CellValue::Time(
            PrintSeconds(true, -(duration.whole + 1), kSecond - duration.nanoseconds));
    return ODF::CellValue::Time(PrintSeconds(isNegative, std::abs(duration.whole), duration.nanoseconds));
}

py::object NumberToPython(double number) {
    constexpr double largestWhole = 9007199254740992;
    if (std::abs(number) <= largestWhole && number == std::floor(number) &&
        !(number == 0 && std::signbit(number)))
        return py::int_(static_cast<long long>(number));
    return py::float_(number);
}

py::object ValueToPython(const ODF::CellValue& value) {
    switch (value.Kind()) {
    case ODF::CellKind::Number:
    case ODF::CellKind::Percentage:
    case ODF::CellKind::Currency:
        return NumberToPython(value.Number());
    case ODF::CellKind::Bool:
        return py::bool_(value.Bool());
    case ODF::CellKind::Date:
        if (const auto moment = ParseMoment(value.Text())) return MomentToPython(*moment);
        return ToPython(std::string_view(value.Text()));
    case ODF::CellKind::Time:
        if (const auto span = ParseSpan(value.Text()); span && std::abs(span->whole) < kMostDays * 86400)
            return SpanToPython(*span);
        return ToPython(std::string_view(value.Text()));
    case ODF::CellKind::Text:
        return ToPython(std::string_view(value.Text()));
    case ODF::CellKind::Empty:
        break;
    }
    return py::none();
}

ODF::CellValue FromPython(py::handle value) {
    PyObject* const object = value.ptr();
    ODF::CellValue result;
    if (value.is_none()) return result;
    if (PyBool_Check(object)) {
        result = value.cast<bool>();
    } else if (PyUnicode_Check(object)) {
        result = TextFrom(value);
    } else if (PyLong_Check(object) || PyFloat_Check(object)) {
        const double number = PyFloat_AsDouble(object);
        if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
        result = number;
    } else if (py::isinstance<ODF::CellValue>(value)) {
        result = value.cast<ODF::CellValue>();
    } else if (auto date = DateFromPython(object)) {
        result = *std::move(date);
    } else if (py::hasattr(value, "item") && py::hasattr(value, "dtype")) {
        result = FromNumpy(py::reinterpret_borrow<py::object>(value));
    } else if (py::hasattr(value, "__float__")) {
        result = py::float_(py::reinterpret_borrow<py::object>(value)).cast<double>();
    } else {
        throw py::type_error(std::string("a cell can't hold a ") + Py_TYPE(object)->tp_name);
    }
    if (!result.IsValid()) RefuseValue(value);
    return result;
}

} // namespace odfpython
