#pragma once

#include <cstddef>
#include <span>

namespace ODF::archive {

/// The bytes that `LeaveOpen` may add to a stream.
inline constexpr std::size_t kMaxJoint = 5;

/// Makes of the complete deflate stream in the first `byteCount` bytes of `bytes` one that another stream can
/// follow: its last block isn't the last any more, and an empty block brings it to a whole byte. Returns the
/// new number of bytes, for which there has to be room; 0 when memory runs out.
std::size_t LeaveOpen(std::span<unsigned char> bytes, std::size_t byteCount);

} // namespace ODF::archive
