#pragma once

#include "serial/zip/byte_buffer.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace ODF::archive {

/// Up to here data is deflated in one go, which is twice as fast as in pieces.
inline constexpr std::uint64_t kLargestWholeDeflate = std::uint64_t{128} << 20;

/// Deflates whole members at once. Holds its working memory, so one object serves many members.
class WholeDeflater {
public:
    WholeDeflater();
    ~WholeDeflater();
    WholeDeflater(const WholeDeflater&) = delete;
    WholeDeflater& operator=(const WholeDeflater&) = delete;

    /// The deflated bytes, valid until the next call; empty when they would be no fewer than `plain`.
    std::span<const unsigned char> deflate(std::span<const unsigned char> plain);

private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
    ByteBuffer buffer_;
};

/// Deflates piece by piece.
class Deflater {
public:
    using Receiver = std::function<bool(std::span<const unsigned char>)>;

    explicit Deflater(Receiver receive);
    ~Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    /// False when the receiver gave up.
    bool add(std::span<const unsigned char> plain);
    bool finish();

private:
    struct Engine;
    bool run(std::span<const unsigned char> plain, bool isLast);
    std::unique_ptr<Engine> engine_;
    Receiver receive_;
};

} // namespace ODF::archive
