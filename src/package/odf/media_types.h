#pragma once

#include <span>
#include <string_view>

namespace ODF::package {

/// The media type of a member, told by its name and, where that tells nothing, by how its bytes begin. Empty
/// for a kind that isn't known.
std::string_view MediaTypeFor(std::string_view name, std::span<const unsigned char> bytes) noexcept;

/// Whether data of that media type is compressed already, so that deflating it would only take time.
bool IsCompressed(std::string_view mediaType) noexcept;

} // namespace ODF::package
