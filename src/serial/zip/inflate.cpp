#include "serial/zip/inflate.h"

#include <libdeflate.h>
#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <climits>
#include <new>

namespace ODF::archive {

std::uint32_t Crc32(std::uint32_t start, std::span<const unsigned char> data) noexcept {
    return data.empty() ? start : libdeflate_crc32(start, data.data(), data.size());
}

struct WholeInflater::Engine {
    libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { libdeflate_free_decompressor(decompressor); }
};

WholeInflater::WholeInflater() : engine_(std::make_unique<Engine>()) {}
WholeInflater::~WholeInflater() = default;

bool WholeInflater::inflate(std::span<const unsigned char> deflated,
                            std::span<unsigned char> plain) noexcept {
    if (!engine_->decompressor) return false;
    // A null target isn't allowed, not even for nothing.
    unsigned char nothing = 0;
    return libdeflate_deflate_decompress(engine_->decompressor, deflated.data(), deflated.size(),
                                         plain.empty() ? &nothing : plain.data(), plain.size(),
                                         nullptr) == LIBDEFLATE_SUCCESS;
}

struct Inflater::Engine {
    z_stream stream{};
    bool isEnded = false;
    bool isDamaged = false;

    Engine() { isDamaged = inflateInit2(&stream, -MAX_WBITS) != Z_OK; }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { inflateEnd(&stream); }
};

Inflater::Inflater() : engine_(std::make_unique<Engine>()) {}
Inflater::~Inflater() = default;

std::size_t Inflater::inflate(std::span<const unsigned char>& deflated,
                              std::span<unsigned char> plain) noexcept {
    if (engine_->isEnded || engine_->isDamaged || plain.empty()) return 0;
    z_stream& stream = engine_->stream;
    stream.next_in = deflated.data();
    stream.avail_in = static_cast<uInt>(std::min<std::size_t>(deflated.size(), UINT_MAX));
    stream.next_out = plain.data();
    stream.avail_out = static_cast<uInt>(std::min<std::size_t>(plain.size(), UINT_MAX));
    const uInt offered = stream.avail_in;
    const uInt room = stream.avail_out;
    const int result = ::inflate(&stream, Z_NO_FLUSH);
    if (result == Z_STREAM_END)
        engine_->isEnded = true;
    else if (result != Z_OK && result != Z_BUF_ERROR)
        engine_->isDamaged = true;
    deflated = deflated.subspan(offered - stream.avail_in);
    return room - stream.avail_out;
}

bool Inflater::isEnded() const noexcept {
    return engine_->isEnded;
}

bool Inflater::isDamaged() const noexcept {
    return engine_->isDamaged;
}

} // namespace ODF::archive
