#pragma once

#include "exit_code.h"
#include "package/archive.h"

namespace command {

/// Writes an Open Packaging file again with every member as it is, in the same order. `members` are those
/// written.
ExitCode RepackUnchanged(const std::string& from, const std::string& to, std::vector<Member>& members,
                         ODF::Diagnostics& diagnostics);

} // namespace command
