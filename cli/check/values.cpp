#include "check/values.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace command {
namespace {

/// The whole text as a number; nothing when it isn't one.
std::optional<double> NumberOf(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isWhole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<bool> TruthOf(std::string_view text) {
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return std::nullopt;
}

/// A date as its numbers: year, month, day, hour, minute, second, and the fraction of the second without
/// trailing zeros. Nothing for a text of another form, such as one with a zone.
struct DateParts {
    long numbers[6] = {};
    std::string fraction;

    friend bool operator==(const DateParts& a, const DateParts& b) {
        return std::equal(std::begin(a.numbers), std::end(a.numbers), std::begin(b.numbers)) &&
               a.fraction == b.fraction;
    }
};

std::optional<DateParts> DateOf(std::string_view text) {
    constexpr std::string_view kSeparators = "--T::";
    DateParts date;
    for (std::size_t i = 0; i < std::size(date.numbers); ++i) {
        const auto result = std::from_chars(text.data(), text.data() + text.size(), date.numbers[i]);
        if (result.ec != std::errc()) return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
        if (text.empty() && i >= 2) return date; // a date alone, or one without seconds
        if (i == kSeparators.size()) break;
        if (text.empty() || text.front() != kSeparators[i]) return std::nullopt;
        text.remove_prefix(1);
    }
    if (text.empty() || (text.front() != '.' && text.front() != ',')) return std::nullopt;
    text.remove_prefix(1);
    if (!std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    const std::size_t last = text.find_last_not_of('0');
    if (last != std::string_view::npos) date.fraction = text.substr(0, last + 1);
    return date;
}

template<typename Value>
FindingKind Compare(const std::optional<Value>& before, const std::optional<Value>& after, FindingKind same,
                    FindingKind other) {
    return before && after && *before == *after ? same : other;
}

} // namespace

FindingKind CompareValues(const ODF::AttributeInfo* info, const std::string& before,
                          const std::string& after) {
    if (!info) return FindingKind::TextValue;
    switch (info->type) {
    case ODF::AttributeType::Bool:
        return Compare(TruthOf(before), TruthOf(after), FindingKind::BooleanSpelling,
                       FindingKind::BooleanValue);
    case ODF::AttributeType::Unsigned:
    case ODF::AttributeType::Signed:
    case ODF::AttributeType::Number:
        return Compare(NumberOf(before), NumberOf(after), FindingKind::NumberSpelling,
                       FindingKind::NumberValue);
    case ODF::AttributeType::Enumeration:
        return FindingKind::EnumerationValue;
    case ODF::AttributeType::Text:
        break;
    }
    return FindingKind::TextValue;
}

FindingKind CompareDates(const std::string& before, const std::string& after) {
    return Compare(DateOf(before), DateOf(after), FindingKind::DateSpelling, FindingKind::DateValue);
}

} // namespace command
