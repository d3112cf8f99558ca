#pragma once

#include <cstddef>

namespace command {

/// What repeated cells, blanks and gaps may add to what is written: a few bytes of a file can ask for
/// billions of them.
inline constexpr std::size_t kMaxCopied = std::size_t{64} << 20;

} // namespace command
