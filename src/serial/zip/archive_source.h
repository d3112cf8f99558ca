#pragma once

#include "platform/files.h"

#include <zip.h>

#include <cstdint>

namespace ODF::archive {

/// What libzip reads an archive from: an open file from `start` on, through a buffer of its own. Owned by
/// libzip once an archive was opened on it.
zip_source_t* MakeFileSource(platform::InputFile file, std::uint64_t start, zip_error_t* error);

/// Bytes that stay with the caller.
zip_source_t* MakeMemorySource(const void* data, std::uint64_t byteCount, zip_error_t* error);

} // namespace ODF::archive
