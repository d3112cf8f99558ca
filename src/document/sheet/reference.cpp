#include <odfmodel/document/sheet.h>

#include <algorithm>

namespace ODF {
namespace {

constexpr std::uint64_t kLetters = 26;

void TakeDollar(std::string_view& text) noexcept {
    if (text.starts_with('$')) text.remove_prefix(1);
}

/// Takes digits, or letters as digits of base 26 without a zero, off the front; 0 for none or too many.
template<typename DigitOf>
std::uint64_t Take(std::string_view& text, std::uint64_t base, DigitOf digitOf) noexcept {
    std::uint64_t number = 0;
    while (!text.empty()) {
        const int digit = digitOf(text.front());
        if (digit < 0) break;
        number = number * base + static_cast<std::uint64_t>(digit);
        if (number > std::uint64_t{kMaxSheetIndex} + 1) return 0;
        text.remove_prefix(1);
    }
    return number;
}

std::optional<std::uint32_t> TakeColumn(std::string_view& text) noexcept {
    TakeDollar(text);
    const std::uint64_t number = Take(text, kLetters, [](char c) {
        if (c >= 'A' && c <= 'Z') return c - 'A' + 1;
        return c >= 'a' && c <= 'z' ? c - 'a' + 1 : -1;
    });
    return number > 0 ? std::optional(static_cast<std::uint32_t>(number - 1)) : std::nullopt;
}

} // namespace

std::optional<std::uint32_t> ParseColumn(std::string_view name) {
    const auto column = TakeColumn(name);
    return name.empty() ? column : std::nullopt;
}

std::optional<CellAddress> ParseCell(std::string_view name) {
    const auto column = TakeColumn(name);
    TakeDollar(name);
    const std::uint64_t row = Take(name, 10, [](char c) { return c >= '0' && c <= '9' ? c - '0' : -1; });
    if (!column || row == 0 || !name.empty()) return std::nullopt;
    return CellAddress{static_cast<std::uint32_t>(row - 1), *column};
}

std::optional<CellRange> ParseRange(std::string_view name) {
    const std::size_t colon = name.find(':');
    const auto first = ParseCell(name.substr(0, colon));
    const auto last = colon == std::string_view::npos ? first : ParseCell(name.substr(colon + 1));
    if (!first || !last) return std::nullopt;
    const auto [top, bottom] = std::minmax(first->row, last->row);
    const auto [left, right] = std::minmax(first->column, last->column);
    return CellRange{{top, left}, {bottom, right}};
}

std::string PrintColumn(std::uint32_t column) {
    std::string text;
    for (std::uint64_t number = std::uint64_t{column} + 1; number > 0; number = (number - 1) / kLetters)
        text += static_cast<char>('A' + static_cast<char>((number - 1) % kLetters));
    std::reverse(text.begin(), text.end());
    return text;
}

std::string PrintCell(const CellAddress& cell) {
    return PrintColumn(cell.column) + std::to_string(std::uint64_t{cell.row} + 1);
}

std::string PrintRange(const CellRange& range) {
    return range.first == range.last ? PrintCell(range.first)
                                     : PrintCell(range.first) + ":" + PrintCell(range.last);
}

} // namespace ODF
