#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ODF::archive {

/// CRC-32 as archives use it, going on from `start`.
std::uint32_t Crc32(std::uint32_t start, std::span<const unsigned char> data) noexcept;

/// The most that deflated data of that size can become: no bit stream does better than 1032 to 1.
constexpr std::uint64_t LargestInflated(std::uint64_t packedSize) noexcept {
    return packedSize > UINT64_MAX / 1040 ? UINT64_MAX : packedSize * 1040 + 1024;
}

/// Inflates whole members at once. Holds its working memory, so one object serves many members.
class WholeInflater {
public:
    WholeInflater();
    ~WholeInflater();
    WholeInflater(const WholeInflater&) = delete;
    WholeInflater& operator=(const WholeInflater&) = delete;

    /// False unless the data is sound and fills `plain` exactly.
    bool inflate(std::span<const unsigned char> deflated, std::span<unsigned char> plain) noexcept;

private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
};

/// Inflates piece by piece.
class Inflater {
public:
    Inflater();
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Takes bytes off the front of `deflated` and puts what they give into `plain`; the count of the latter.
    std::size_t inflate(std::span<const unsigned char>& deflated, std::span<unsigned char> plain) noexcept;
    /// The stream has come to its proper end.
    bool isEnded() const noexcept;
    /// The data is damaged; nothing more comes out of it.
    bool isDamaged() const noexcept;

private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
};

} // namespace ODF::archive
