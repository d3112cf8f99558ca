#pragma once

#include <odfmodel/core/length.h>

#include <optional>
#include <span>

namespace ODF {

struct ImageSize {
    double width; ///< in centimetres
    double height;
};

/// What a PNG, JPEG or GIF says of its size, with 96 pixels an inch where it doesn't tell; nothing for any
/// other picture.
std::optional<ImageSize> SizeOfImage(std::span<const unsigned char> bytes) noexcept;

} // namespace ODF
