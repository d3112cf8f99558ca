#pragma once

#include "platform/path.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/export.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace ODF::package {

/// Reads a regular file: `NotReadable`, with a note that tells why, `LimitExceeded` when it has more than
/// `mostBytes`, or `OutOfMemory`.
ODFMODEL_API Status ReadFileWhole(const platform::Path& path, std::uint64_t mostBytes,
                                  std::vector<unsigned char>& bytes, Diagnostics& notes) noexcept;

/// Writes a file that takes the place of `path` only when it is whole and on the medium; until then, and on
/// any fault, what was there stays. A device or pipe just gets the bytes. Notes tell why it failed, and what
/// of the old file is lost.
ODFMODEL_API Status WriteFileWhole(const platform::Path& path, std::span<const unsigned char> bytes,
                                   Diagnostics& notes) noexcept;

} // namespace ODF::package
