#include "package/open/own_names.h"

#include <string>

namespace SDPackage {

namespace {

int DigitOf(char unit) noexcept {
    if (unit >= '0' && unit <= '9') return unit - '0';
    if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
    return unit >= 'A' && unit <= 'F' ? unit - 'A' + 10 : -1;
}

} // namespace

CTulStringW Decoded(Units name) {
    const std::string text = ODF::ToUtf8(name);
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? DigitOf(text[i + 1]) : -1;
        const int low = high >= 0 ? DigitOf(text[i + 2]) : -1;
        const int byte = low >= 0 ? high * 16 + low : 0;
        result += byte > 0 ? static_cast<char>(byte) : text[i];
        if (byte > 0) i += 2;
    }
    return CTulStringW(std::string_view(result));
}

} // namespace SDPackage
