#include "document/pictures/image_size.h"

#include <algorithm>
#include <string_view>

namespace ODF {
namespace {

constexpr double kCentimetersAnInch = 2.54;
constexpr double kDotsAnInch = 96;

/// Big-endian numbers at places that needn't be there.
class Reader {
public:
    explicit Reader(std::span<const unsigned char> bytes) noexcept : bytes_(bytes) {}
    unsigned byte(std::size_t at) const noexcept { return at < bytes_.size() ? bytes_[at] : 0U; }
    unsigned two(std::size_t at) const noexcept { return byte(at) << 8 | byte(at + 1); }
    unsigned four(std::size_t at) const noexcept { return two(at) << 16 | two(at + 2); }
    bool has(std::size_t at, std::string_view text) const noexcept {
        return at <= bytes_.size() && text.size() <= bytes_.size() - at &&
               std::equal(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at),
                          [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
    }
    std::size_t size() const noexcept { return bytes_.size(); }

private:
    std::span<const unsigned char> bytes_;
};

/// `dotsX` and `dotsY` are pixels a centimetre; 0 where the file doesn't tell.
std::optional<ImageSize> Made(unsigned width, unsigned height, double dotsX, double dotsY) noexcept {
    if (width == 0 || height == 0) return std::nullopt;
    constexpr double kUsual = kDotsAnInch / kCentimetersAnInch;
    return ImageSize{width / (dotsX > 0 ? dotsX : kUsual), height / (dotsY > 0 ? dotsY : kUsual)};
}

std::optional<ImageSize> OfPng(const Reader& reader) noexcept {
    constexpr std::size_t kFirstChunk = 8;
    constexpr std::size_t kAround = 12; // a chunk's length, name and checksum
    if (!reader.has(kFirstChunk + 4, "IHDR")) return std::nullopt;
    double x = 0;
    double y = 0;
    for (std::size_t at = kFirstChunk; at + kAround <= reader.size() && !reader.has(at + 4, "IDAT");
         at += kAround + reader.four(at))
        if (reader.has(at + 4, "pHYs") && reader.byte(at + 16) == 1) { // dots a metre
            x = reader.four(at + 8) / 100.0;
            y = reader.four(at + 12) / 100.0;
        }
    return Made(reader.four(16), reader.four(20), x, y);
}

std::optional<ImageSize> OfJpeg(const Reader& reader) noexcept {
    double x = 0;
    double y = 0;
    for (std::size_t at = 2; at + 4 <= reader.size() && reader.byte(at) == 0xFF;) {
        const unsigned marker = reader.byte(at + 1);
        if (marker == 0xFF) { // filling
            ++at;
            continue;
        }
        const unsigned unit = reader.byte(at + 11);
        if (marker == 0xE0 && reader.has(at + 4, "JFIF") && (unit == 1 || unit == 2)) {
            const double scale = unit == 1 ? kCentimetersAnInch : 1;
            x = reader.two(at + 12) / scale;
            y = reader.two(at + 14) / scale;
        }
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) return Made(reader.two(at + 7), reader.two(at + 5), x, y);
        at += 2 + std::max(reader.two(at + 2), 2U);
    }
    return std::nullopt;
}

} // namespace

std::optional<ImageSize> SizeOfImage(std::span<const unsigned char> bytes) noexcept {
    const Reader reader(bytes);
    if (reader.has(0, "\x89PNG\r\n\x1A\n")) return OfPng(reader);
    if (reader.has(0, "\xFF\xD8\xFF")) return OfJpeg(reader);
    if (reader.has(0, "GIF8"))
        return Made(reader.byte(6) | reader.byte(7) << 8, reader.byte(8) | reader.byte(9) << 8, 0, 0);
    return std::nullopt;
}

} // namespace ODF
