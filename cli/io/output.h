#pragma once

#include "exit_code.h"

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>

namespace command {

/// Writes a document to a file, or to the standard output for "-", and tells what was met.
ExitCode SaveDocument(ODF::Document& document, const std::string& target,
                      const ODF::SaveOptions& options = {});

/// Tells that a document which can't be read whole isn't written.
ExitCode RefuseIncomplete(const std::string& target);

/// Writes bytes to a file, which is replaced when they are complete, or to the standard output for "-".
ExitCode WriteBytes(std::string_view bytes, const std::string& target);

/// Whether documents may go to the standard output: not to a terminal. Complains if not.
bool CheckStandardOutput();

} // namespace command
