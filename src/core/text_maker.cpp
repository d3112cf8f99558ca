#include "core/text_maker.h"

#include "core/string_buffer.h"
#include "core/utf.h"

#include <algorithm>
#include <cstring>

namespace ODF {

std::u16string_view TextMaker::decode(std::string_view utf8) {
    if (capacity_ < utf8.size()) {
        const std::size_t capacity = std::max<std::size_t>(utf8.size() + utf8.size() / 2, 1024);
        units_.reset(new char16_t[capacity]);
        capacity_ = capacity;
    }
    return {units_.get(), DecodeUtf8(utf8, units_.get())};
}

std::size_t TextMaker::bytesFor(std::size_t length) noexcept {
    return string_buffer::BytesFor(length);
}

CTulStringW TextMaker::make(std::u16string_view units, Arena& arena) noexcept {
    CTulStringW text;
    if (units.empty()) return text;
    unsigned short* const buffer = string_buffer::Begin(arena.object(bytesFor(units.size())), units.size());
    std::memcpy(buffer, units.data(), units.size() * sizeof(unsigned short));
    string_buffer::SetLength(buffer, units.size());
    text.units_ = buffer;
    return text;
}

} // namespace ODF
