#pragma once

#include "check/package_check.h"
#include "json.h"

namespace command {

/// Prints what was found, a line a finding. Without `isVerbose` findings that tell of no loss are only
/// counted.
void PrintReport(const CheckResult& result, bool isVerbose);
nlohmann::json ToJson(const CheckResult& result);

} // namespace command
