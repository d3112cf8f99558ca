#pragma once

#include "check/package_check.h"

namespace command {

/// Prints what was found, a line a finding. Without `isVerbose` findings that tell of no loss are only
/// counted.
void PrintReport(const CheckResult& result, bool isVerbose);
/// Prints all results as one JSON document.
void PrintJson(const std::vector<CheckResult>& results);

} // namespace command
