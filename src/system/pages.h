#pragma once

#include <cstddef>

namespace ODF::system {

/// `byteCount` bytes of zeroed memory straight from the system, at a multiple of `alignment`; both are powers
/// of two. Large regions ask for large pages, which cost the system far less to hand out. Null without
/// memory.
void* MapPages(std::size_t byteCount, std::size_t alignment) noexcept;
void UnmapPages(void* pages, std::size_t byteCount) noexcept;

} // namespace ODF::system
