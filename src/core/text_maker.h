#pragma once

#include "core/arena.h"

#include <odfmodel/core/string.h>

#include <memory>
#include <string_view>

namespace ODF {

/// Makes the texts of one parse from UTF-8 that holds no 0 byte, each in a buffer of an arena that just fits.
class TextMaker {
public:
    /// The units of a text, valid until the next one.
    std::u16string_view decode(std::string_view utf8);
    /// Bytes that the arena has to have reserved for a text of that many units.
    static std::size_t bytesFor(std::size_t length) noexcept;
    static CTulStringW make(std::u16string_view units, Arena& arena) noexcept;

private:
    std::unique_ptr<char16_t[]> units_;
    std::size_t capacity_ = 0;
};

} // namespace ODF
