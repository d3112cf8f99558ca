#pragma once

#include "platform/path.h"
#include "serial/zip/archive.h"

namespace ODF::archive {

/// Extracts all members below `folder`, which is created, for its owner alone, when it isn't there. Members
/// that can't be stored or read are noted and passed over. False when the folder can't be made or written, or
/// at a limit.
bool ExtractAll(const CSDZipHandle& handle, const platform::Path& folder, const Limits& limits,
                const NoteSink& notes);

/// Extracts one member to the file at `path`, whose folder must be there. False, with no file left, when it
/// can't be read at all; a damaged member leaves what could be decoded.
bool ExtractOne(const CSDZipHandle& handle, std::int64_t index, const platform::Path& path,
                const Limits& limits, const NoteSink& notes);

/// Notes how reading a member ended; nothing for `Ok`.
enum class ReadResult;
void NoteResult(ReadResult result, const Member& member, const NoteSink& notes);

} // namespace ODF::archive
