#pragma once

#include "exit_code.h"

#include <string>
#include <string_view>

namespace command {

class Passwords;

/// `info` on an OpenDocument file.
ExitCode ReportOdf(const std::string& path, const Passwords& passwords);
/// `info` on an Open Packaging file.
ExitCode ReportOpenPackaging(const std::string& path);

/// "  <label>: <value>" with the values in one column; nothing for an empty value.
void PrintField(std::string_view label, std::string_view value);
void PrintHeading(std::string_view text);

} // namespace command
