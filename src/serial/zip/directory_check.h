#pragma once

#include "serial/zip/archive.h"

#include <cstdint>
#include <functional>
#include <span>

namespace ODF::archive {

/// Fills the span with the bytes from an offset on; false when they aren't there.
using ReadBytes = std::function<bool(std::uint64_t offset, std::span<unsigned char> target)>;

/// Finds the last archive of a file and gives the place where it begins: other than 0 where something was put
/// before it, from which its own offsets don't count. Notes that, and where members overlap or their own
/// headers tell something else than the directory does: other programs may see another content in such a
/// file.
std::uint64_t CheckDirectory(const ReadBytes& read, std::uint64_t byteCount, const NoteSink& notes);

} // namespace ODF::archive
