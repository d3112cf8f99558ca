#pragma once

#include <odfmodel/export.h>

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

/// @file
/// Enumerated attribute values to and from their keys, the words that files have for them.

namespace ODF {

namespace detail {
ODFMODEL_API std::string KeyOf(std::u16string_view enumeration, int value);
ODFMODEL_API std::optional<int> ValueOf(std::u16string_view enumeration, std::string_view key) noexcept;
} // namespace detail

/// One of the enumerations of odfmodel/elements/enumerations.h.
template<typename E>
concept AttributeEnumeration = std::is_enum_v<E> && requires(E value) {
    { EnumerationName(value) } -> std::same_as<std::u16string_view>;
};

/// Such as "bold" for `ST_FoFontWeight::Bold`; empty for a value that the enumeration doesn't have.
template<AttributeEnumeration E>
std::string KeyOf(E value) {
    return detail::KeyOf(EnumerationName(value), static_cast<int>(value));
}

/// Such as `ParseKey<ST_FoFontWeight>("bold")`; nothing for any text that is no key. Case counts.
template<AttributeEnumeration E>
std::optional<E> ParseKey(std::string_view key) {
    const std::optional<int> value = detail::ValueOf(EnumerationName(E{}), key);
    return value ? std::optional(static_cast<E>(*value)) : std::nullopt;
}

} // namespace ODF
