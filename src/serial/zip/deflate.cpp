#include "serial/zip/deflate.h"

#include <libdeflate.h>
#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>

namespace ODF::archive {

namespace {

// Where more effort stops paying: level 9 takes several times as long for a percent or two.
constexpr int kLevel = 6;

} // namespace

struct WholeDeflater::Engine {
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(kLevel);
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { libdeflate_free_compressor(compressor); }
};

WholeDeflater::WholeDeflater() : engine_(std::make_unique<Engine>()) {}
WholeDeflater::~WholeDeflater() = default;

std::span<const unsigned char> WholeDeflater::deflate(std::span<const unsigned char> plain) {
    if (!engine_->compressor || plain.empty()) return {};
    // A target of less than the plain size makes the compressor stop where storing is as good.
    const std::span<unsigned char> target = buffer_.room(plain.size() - 1);
    return target.first(libdeflate_deflate_compress(engine_->compressor, plain.data(), plain.size(),
                                                    target.data(), target.size()));
}

struct Deflater::Engine {
    z_stream stream{};
    bool isReady = false;

    Engine() {
        isReady = deflateInit2(&stream, kLevel, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { deflateEnd(&stream); }
};

Deflater::Deflater(Receiver receive) : engine_(std::make_unique<Engine>()), receive_(std::move(receive)) {}
Deflater::~Deflater() = default;

bool Deflater::add(std::span<const unsigned char> plain) {
    return plain.empty() || run(plain, false);
}

bool Deflater::finish() {
    return run({}, true);
}

bool Deflater::run(std::span<const unsigned char> plain, bool isLast) {
    if (!engine_->isReady) return false;
    z_stream& stream = engine_->stream;
    std::array<unsigned char, std::size_t{1} << 16> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    do {
        const std::span<const unsigned char> piece =
            plain.first(std::min<std::size_t>(plain.size(), INT_MAX));
        plain = plain.subspan(piece.size());
        stream.next_in = piece.data();
        stream.avail_in = static_cast<uInt>(piece.size());
        do {
            stream.next_out = buffer.data();
            stream.avail_out = static_cast<uInt>(buffer.size());
            if (::deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_ERROR) return false;
            const std::size_t count = buffer.size() - stream.avail_out;
            if (count > 0 && !receive_({buffer.data(), count})) return false;
        } while (stream.avail_out == 0);
    } while (!plain.empty());
    return true;
}

} // namespace ODF::archive
