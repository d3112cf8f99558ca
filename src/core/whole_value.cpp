#include <odfmodel/core/whole_value.h>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace ODF {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// Takes the first word off `rest`; empty at its end.
std::string_view TakeWord(std::string_view& rest) noexcept {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    const std::string_view word = rest.substr(0, rest.find_first_of(kBlanks));
    rest.remove_prefix(word.size());
    return word;
}

} // namespace

std::optional<double> WholeValue::number() const noexcept {
    std::string_view rest = text_;
    const std::string_view word = TakeWord(rest);
    double value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size() || !TakeWord(rest).empty()) return {};
    return value;
}

std::vector<std::string_view> WholeValue::words() const {
    std::vector<std::string_view> result;
    std::string_view rest = text_;
    for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest))
        result.push_back(word);
    return result;
}

bool WholeValue::has(std::string_view word) const noexcept {
    std::string_view rest = text_;
    for (std::string_view each = TakeWord(rest); !each.empty(); each = TakeWord(rest))
        if (each == word) return true;
    return false;
}

} // namespace ODF
