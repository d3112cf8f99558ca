#pragma once

#include "serial/zip/byte_buffer.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace ODF::archive {

/// Deflates members. What is large is cut into pieces that are deflated each on its own, on several threads,
/// and joined into one stream. Holds its working memory, so one object serves many members.
class Deflater {
public:
    using Receiver = std::function<bool(std::span<const unsigned char>)>;

    /// Up to here more effort pays: level 9 takes several times as long for a percent or two.
    static constexpr int kUsualLevel = 6;

    /// Takes up to `threads` threads for what is large. `level` is the effort, from 1 to 12.
    explicit Deflater(unsigned threads = 1, int level = kUsualLevel);
    ~Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    /// The deflated bytes of a whole member, valid until the next call; empty when they would be no fewer
    /// than `plain`.
    std::span<const unsigned char> deflate(std::span<const unsigned char> plain);
    /// The same, but always a stream.
    std::span<const unsigned char> deflateAnyway(std::span<const unsigned char> plain);

    /// The bytes that `add` should get at once, but for the last time.
    std::size_t stepBytes() const noexcept;
    /// Deflates a member that comes step by step. False when the receiver has given up.
    bool add(std::span<const unsigned char> plain, bool isLast, const Receiver& receive);

private:
    struct Engine;
    /// Deflates `plain` into `pieces_`; the stream goes on unless `isLast`.
    std::size_t makePieces(std::span<const unsigned char> plain, bool isLast);
    bool isInPieces(std::span<const unsigned char> plain) const noexcept;
    /// Deflates `plain` by itself; empty when that takes more than `mostBytes`.
    std::span<const unsigned char> atOnce(std::span<const unsigned char> plain, std::size_t mostBytes);
    Engine& engine(std::size_t thread);

    const unsigned threads_;
    const int level_;
    std::vector<std::unique_ptr<Engine>> engines_; ///< of each thread
    std::vector<std::vector<unsigned char>> pieces_;
    ByteBuffer buffer_;
};

} // namespace ODF::archive
