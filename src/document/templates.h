#pragma once

#include <span>
#include <string_view>

namespace ODF {

struct TemplateMember {
    std::string_view name;
    std::string_view mediaType;
    std::string_view xml;
};

/// The members of a new document of that type; empty for a type that has none.
inline std::span<const TemplateMember> Templates(std::string_view) noexcept {
    return {};
}

} // namespace ODF
