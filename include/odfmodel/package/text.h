#pragma once

#include <odfmodel/core/string.h>

#include <concepts>
#include <string_view>

namespace SDPackage {

/// Text that isn't in the interface's 16-bit units yet: UTF-8 or UTF-16 literals, strings and views, and
/// `std::filesystem::path`.
/// Operations with an overload for it convert and go on as with the units.
template<typename T>
concept PlainText = !std::convertible_to<const T&, const unsigned short*> &&
                    (std::convertible_to<const T&, std::string_view> ||
                     std::convertible_to<const T&, std::u16string_view> || ODF::FilePath<T>);

/// Order of package paths: binary, but a to z count as A to Z. It depends on no locale, so that a map keeps
/// its order whatever the host does with its own.
struct ODFMODEL_API IgnoreCaseLess {
    bool operator()(const CTulStringW& a, const CTulStringW& b) const noexcept;
};

} // namespace SDPackage
