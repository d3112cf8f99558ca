#pragma once

#include "check/finding.h"

#include <odfmodel/core/reflection.h>

#include <optional>
#include <string>

namespace command {

/// What happened to an attribute value that reads differently after the round trip. `info` is null for an
/// attribute of no known class.
FindingKind CompareValues(const ODF::AttributeInfo* info, const std::string& before,
                          const std::string& after);
/// The same for the text of an element that holds a date.
FindingKind CompareDates(const std::string& before, const std::string& after);

} // namespace command
