#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ODF {

/// A colour as attributes have it, such as "#ff8000".
struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    /// Nothing for any other text, such as "transparent". Digits may be small or capital.
    ODFMODEL_API static std::optional<Color> Parse(std::string_view text) noexcept;
    static std::optional<Color> Parse(const std::same_as<CTulStringW> auto& text) {
        return Parse(std::string_view(text.utf8()));
    }
    /// With small digits.
    ODFMODEL_API std::string Print() const;
    operator CTulStringW() const { return CTulStringW(Print()); } // NOLINT(google-explicit-constructor)

    friend bool operator==(const Color&, const Color&) = default;
};

} // namespace ODF
