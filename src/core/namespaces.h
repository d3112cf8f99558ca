#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ODF {

/// One namespace that the element classes know: its URI and the prefix under which its names stand in the
/// tables and in what is written.
struct NamespaceRow {
    std::string_view prefix;
    std::string_view uri;
    const char16_t* uri16;
};

/// Position in the table of namespaces. 0 stands for names without a namespace.
using NamespaceIndex = std::uint8_t;
inline constexpr NamespaceIndex kNoNamespace = 0;
inline constexpr NamespaceIndex kUnknownNamespace = 0xFF;
inline constexpr std::size_t kNamespaceCount = 40;
/// MathML, whose elements' unprefixed attributes are found under its own URI.
inline constexpr NamespaceIndex kMathNamespace = 19;

const NamespaceRow& Namespace(NamespaceIndex index) noexcept;
NamespaceIndex FindNamespaceByUri(std::string_view uri) noexcept;
NamespaceIndex FindNamespaceByUri(std::u16string_view uri) noexcept;
NamespaceIndex FindNamespaceByPrefix(std::string_view prefix) noexcept;

} // namespace ODF
