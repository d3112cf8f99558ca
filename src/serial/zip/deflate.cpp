#include "serial/zip/deflate.h"

#include "platform/threads.h"
#include "serial/zip/open_stream.h"

#include <libdeflate.h>

#include <algorithm>
#include <atomic>
#include <new>

namespace ODF::archive {

namespace {

/// What a piece can't refer to, the 32 KiB before it, costs less than 0.1 % at this size.
constexpr std::size_t kPieceBytes = std::size_t{4} << 20;

} // namespace

struct Deflater::Engine {
    libdeflate_compressor* compressor;
    explicit Engine(int level) : compressor(libdeflate_alloc_compressor(level)) {
        if (!compressor) throw std::bad_alloc();
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { libdeflate_free_compressor(compressor); }

    std::size_t run(std::span<const unsigned char> plain, std::span<unsigned char> target) {
        return libdeflate_deflate_compress(compressor, plain.data(), plain.size(), target.data(),
                                           target.size());
    }
    std::size_t bound(std::size_t byteCount) {
        return libdeflate_deflate_compress_bound(compressor, byteCount);
    }
};

Deflater::Deflater(unsigned threads, int level)
    : threads_(std::max(threads, 1U)), level_(std::clamp(level, 1, 12)) {}
Deflater::~Deflater() = default;

std::size_t Deflater::stepBytes() const noexcept {
    return threads_ * kPieceBytes;
}

bool Deflater::isInPieces(std::span<const unsigned char> plain) const noexcept {
    return threads_ > 1 && plain.size() >= 2 * kPieceBytes;
}

Deflater::Engine& Deflater::engine(std::size_t thread) {
    if (engines_.size() <= thread) engines_.resize(thread + 1);
    if (!engines_[thread]) engines_[thread] = std::make_unique<Engine>(level_);
    return *engines_[thread];
}

std::size_t Deflater::makePieces(std::span<const unsigned char> plain, bool isLast) {
    const std::size_t count = std::max<std::size_t>((plain.size() + kPieceBytes - 1) / kPieceBytes, 1);
    if (pieces_.size() < count) pieces_.resize(count);
    const std::size_t threads = std::min<std::size_t>(threads_, count);
    for (std::size_t i = 0; i < threads; ++i)
        engine(i);
    std::atomic<std::size_t> next = 0;
    std::atomic<std::size_t> nextEngine = 0;
    std::atomic<bool> isOutOfMemory = false;
    platform::OnThreads(threads, [&](bool) {
        Engine& own = *engines_[nextEngine++];
        try {
            for (std::size_t i = next++; i < count && !isOutOfMemory; i = next++) {
                const std::size_t begin = i * kPieceBytes;
                const auto piece = plain.subspan(begin, std::min(kPieceBytes, plain.size() - begin));
                pieces_[i].resize(own.bound(piece.size()) + kMaxJoint);
                std::size_t byteCount = own.run(piece, pieces_[i]);
                if (!isLast || i + 1 < count) byteCount = LeaveOpen(pieces_[i], byteCount);
                if (byteCount == 0) isOutOfMemory = true;
                pieces_[i].resize(byteCount);
            }
        } catch (const std::bad_alloc&) {
            isOutOfMemory = true;
        }
    });
    if (isOutOfMemory) throw std::bad_alloc();
    return count;
}

std::span<const unsigned char> Deflater::atOnce(std::span<const unsigned char> plain, std::size_t mostBytes) {
    const std::span<unsigned char> target = buffer_.room(mostBytes);
    return target.first(engine(0).run(plain, target));
}

std::span<const unsigned char> Deflater::deflate(std::span<const unsigned char> plain) {
    if (plain.empty()) return {};
    // A target of less than the plain size makes the compressor stop where storing is as good.
    if (!isInPieces(plain)) return atOnce(plain, plain.size() - 1);
    const std::span<const unsigned char> joined = deflateAnyway(plain);
    return joined.size() < plain.size() ? joined : std::span<const unsigned char>();
}

std::span<const unsigned char> Deflater::deflateAnyway(std::span<const unsigned char> plain) {
    if (!isInPieces(plain)) return atOnce(plain, engine(0).bound(plain.size()));
    const std::size_t count = makePieces(plain, true);
    std::size_t total = 0;
    for (std::size_t i = 0; i < count; ++i)
        total += pieces_[i].size();
    const std::span<unsigned char> target = buffer_.room(total);
    auto at = target.begin();
    for (std::size_t i = 0; i < count; ++i) {
        at = std::copy(pieces_[i].begin(), pieces_[i].end(), at);
        pieces_[i] = {};
    }
    return target;
}

bool Deflater::add(std::span<const unsigned char> plain, bool isLast, const Receiver& receive) {
    const std::size_t count = makePieces(plain, isLast);
    for (std::size_t i = 0; i < count; ++i)
        if (!receive(pieces_[i])) return false;
    return true;
}

} // namespace ODF::archive
