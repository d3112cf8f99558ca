#pragma once

#include <span>
#include <string_view>

namespace ODF {

struct TemplateMember {
    std::string_view name;
    std::string_view mediaType;
    std::string_view xml;
};

/// The members of a new document of that type, which keeps to version 1.2 of the format; empty for a type
/// that has none.
std::span<const TemplateMember> Templates(std::string_view packageMediaType) noexcept;

} // namespace ODF
