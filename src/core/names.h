#pragma once

#include <algorithm>
#include <string_view>

namespace ODF {

/// A name that may be in a tag as it is. Names beyond ASCII are let through, blanks and markup are not.
inline bool IsXmlName(std::string_view name) noexcept {
    if (name.empty()) return false;
    const auto isNameCharacter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-' || c == '.' || c == ':' || (static_cast<unsigned char>(c) & 0x80) != 0;
    };
    const char first = name.front();
    return std::all_of(name.begin(), name.end(), isNameCharacter) && first != '-' && first != '.' &&
           first != ':' && !(first >= '0' && first <= '9');
}

} // namespace ODF
