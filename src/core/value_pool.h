#pragma once

#include <odfmodel/core/string.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

/// Hands out one shared string for each value that it has seen in a document: style names, value types and
/// colours repeat without end. Long values are rarely equal and aren't kept, and the pool stops growing at a
/// bound, so that it can't be filled up.
class ValuePool {
public:
    /// How well the values of one attribute repeat.
    struct Usage {
        std::uint32_t asked = 0;
        std::uint32_t found = 0;
    };

    ValuePool();
    /// The string for a UTF-8 text. Where the values of an attribute have proved to differ, a new string.
    CTulStringW get(std::string_view utf8, Usage& usage);

private:
    struct Entry {
        std::uint32_t hash = 0;
        std::uint32_t byteCount = 0; ///< 0 in a free place
        std::size_t firstByte = 0;   ///< in `bytes_`
        CTulStringW value;
    };
    static constexpr std::size_t kMaxBytes = 48;
    static constexpr std::size_t kMaxEntries = 1U << 15;

    void grow();

    const std::uint64_t seed_;
    std::vector<Entry> entries_; ///< open addressing, a power of two
    std::size_t used_ = 0;
    std::string bytes_; ///< the values as they are in the file, which is how they are compared
};

/// A start value for the hashes of one table, which who makes a file can't foresee: names or values that are
/// chosen to collide would make each lookup as long as the table.
std::uint64_t HashSeed() noexcept;
/// A quick hash of bytes for tables that live as long as one parse.
std::uint64_t HashBytes(std::string_view bytes, std::uint64_t seed) noexcept;

} // namespace ODF
