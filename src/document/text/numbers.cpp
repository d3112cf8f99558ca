#include "document/text/numbers.h"

#include <algorithm>

namespace ODF::reading {
namespace {

constexpr unsigned kLetters = 26;
constexpr unsigned kMaxRoman = 4999;

std::string Letters(unsigned number, char first, bool isSync) {
    std::string text;
    if (isSync) {
        // Bounded, as a start value may be any number.
        const unsigned times = std::min((number - 1) / kLetters + 1, 100U);
        return std::string(times, static_cast<char>(first + static_cast<char>((number - 1) % kLetters)));
    }
    for (; number > 0; number = (number - 1) / kLetters)
        text.insert(text.begin(), static_cast<char>(first + static_cast<char>((number - 1) % kLetters)));
    return text;
}

std::string Roman(unsigned number, bool isUpper) {
    struct Numeral {
        unsigned value;
        std::string_view text;
    };
    constexpr Numeral kRows[] = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"},
                                 {90, "xc"},  {50, "l"},   {40, "xl"}, {10, "x"},   {9, "ix"},
                                 {5, "v"},    {4, "iv"},   {1, "i"}};
    std::string text;
    for (const Numeral& row : kRows)
        for (; number >= row.value; number -= row.value)
            text += row.text;
    if (isUpper)
        for (char& c : text)
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

} // namespace

std::string FormatNumber(unsigned number, std::string_view format, bool isLetterSync) {
    if (number == 0 || format.size() != 1) return std::to_string(number);
    switch (format.front()) {
    case 'a':
    case 'A':
        return Letters(number, format.front(), isLetterSync);
    case 'i':
    case 'I':
        return number <= kMaxRoman ? Roman(number, format.front() == 'I') : std::to_string(number);
    default:
        return std::to_string(number);
    }
}

} // namespace ODF::reading
