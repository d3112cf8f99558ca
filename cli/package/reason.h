#pragma once

#include <odfmodel/core/diagnostics.h>

#include <string>

namespace command {

/// Why an open or a save failed, on one line: the status, then what the first note of an error says more.
std::string Reason(const ODF::Diagnostics& diagnostics);
/// A note on one line: member, place and text.
std::string NoteText(const ODF::Note& note);
/// False when a note tells that something couldn't be read.
bool IsWhole(const ODF::Diagnostics& diagnostics);
/// Tells the notes of warnings and errors on the standard error stream.
void ComplainNotes(const std::string& file, const ODF::Diagnostics& diagnostics);

} // namespace command
