#pragma once

#include <odfmodel/export.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// @file
/// The versions of the OpenDocument Format.

namespace ODF {

/// The version of the format that an element, an attribute or a key came with, oldest first.
enum class FormatVersion : std::uint8_t {
    Base, ///< OpenDocument 1.1, and what of 1.2 the classes have always listed
    V1_2,
    V1_3,
    V1_4,
    Extended, ///< no version has it: an extension of office suites
};

/// Such as "1.3"; "1.1" for `Base` and "extended" for `Extended`.
ODFMODEL_API std::string_view VersionName(FormatVersion version) noexcept;
/// The version of that name; nothing for any other string.
ODFMODEL_API std::optional<FormatVersion> ParseVersion(std::string_view name) noexcept;

} // namespace ODF
