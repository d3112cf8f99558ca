#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace ODF::archive {

/// Working memory that is kept from one use to the next. Its contents are arbitrary: clearing a hundred
/// megabytes that are overwritten anyway would take as long as inflating into them.
class ByteBuffer {
public:
    /// At least so many bytes; what the buffer held is lost when it must grow.
    std::span<unsigned char> room(std::size_t byteCount) {
        if (capacity_ < byteCount) {
            bytes_.reset(); // not both at once
            capacity_ = 0;
            bytes_ = std::make_unique_for_overwrite<unsigned char[]>(byteCount);
            capacity_ = byteCount;
        }
        return {bytes_.get(), byteCount};
    }

private:
    std::unique_ptr<unsigned char[]> bytes_;
    std::size_t capacity_ = 0;
};

} // namespace ODF::archive
