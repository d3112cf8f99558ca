#pragma once

#include <span>
#include <string>
#include <string_view>

namespace test {

inline std::string Repeated(std::string_view text, std::size_t count) {
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

/// `text` with `to` wherever `from` is.
inline std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

inline std::span<const unsigned char> BytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

} // namespace test
