#pragma once

#include <odfmodel/core/diagnostics.h>

#include <string>
#include <vector>

namespace command {

using Notes = std::vector<ODF::Note>;

/// Why something failed, on one line: the status, then what the first note of an error says more.
std::string Reason(ODF::Status status, const Notes& notes);
std::string Reason(const ODF::Diagnostics& diagnostics);
/// The same for a file that can't be opened or written, with what the file system says about its path.
std::string OpenReason(const std::string& path, ODF::Status status, const Notes& notes);
std::string WriteReason(const std::string& path, ODF::Status status, const Notes& notes);
/// A note on one line: member, place and text.
std::string NoteText(const ODF::Note& note);
/// False when a note tells that something couldn't be read.
bool IsWhole(const ODF::Diagnostics& diagnostics);
/// Tells the notes of warnings and errors on the standard error stream.
void ComplainNotes(const std::string& file, const Notes& notes);
void ComplainNotes(const std::string& file, const ODF::Diagnostics& diagnostics);

} // namespace command
