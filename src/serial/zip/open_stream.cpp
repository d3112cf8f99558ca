#include "serial/zip/open_stream.h"

#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace ODF::archive {
namespace {

struct Ends {
    std::size_t lastBlock = 0; ///< the bit where the last block begins
    std::size_t stream = 0;    ///< the bit after it; 0 when it wasn't found
};

/// Only a decoder knows where a block ends: zlib stops at each when it is asked to.
Ends FindEnds(std::span<const unsigned char> deflated) {
    constexpr int kUnusedBits = 63;
    constexpr int kIsLast = 64;
    constexpr int kIsBetween = 128;
    z_stream decoder{};
    if (inflateInit2(&decoder, -MAX_WBITS) != Z_OK) return {};
    decoder.next_in = deflated.data();
    decoder.avail_in = static_cast<uInt>(deflated.size());
    std::array<unsigned char, std::size_t{1} << 16> plain; // NOLINT(cppcoreguidelines-pro-type-member-init)
    Ends ends;
    for (int result = Z_OK; result == Z_OK && ends.stream == 0;) {
        decoder.next_out = plain.data();
        decoder.avail_out = static_cast<uInt>(plain.size());
        result = inflate(&decoder, Z_BLOCK);
        if ((decoder.data_type & kIsBetween) == 0) continue;
        const std::size_t at = decoder.total_in * 8 - static_cast<unsigned>(decoder.data_type & kUnusedBits);
        if (decoder.data_type & kIsLast)
            ends.stream = at;
        else
            ends.lastBlock = at;
    }
    inflateEnd(&decoder);
    return ends;
}

} // namespace

std::size_t LeaveOpen(std::span<unsigned char> bytes, std::size_t byteCount) {
    const Ends ends = FindEnds(bytes.first(byteCount));
    if (ends.stream == 0) return 0;
    bytes[ends.lastBlock / 8] &= static_cast<unsigned char>(~(1U << (ends.lastBlock % 8)));
    // An empty stored block: three bits of 0, the rest of the byte, a length of 0 and its complement.
    byteCount = (ends.stream + 3 + 7) / 8;
    if (byteCount > (ends.stream + 7) / 8) bytes[byteCount - 1] = 0;
    constexpr unsigned char kLengths[] = {0x00, 0x00, 0xFF, 0xFF};
    std::copy(std::begin(kLengths), std::end(kLengths),
              bytes.begin() + static_cast<std::ptrdiff_t>(byteCount));
    return byteCount + sizeof kLengths;
}

} // namespace ODF::archive
