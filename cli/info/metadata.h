#pragma once

#include "package/archive.h"

namespace command {

/// Prints what `meta.xml` of the package tells: titles, people, dates, keywords, the author's own fields and
/// the statistics. Nothing when there is no such member; false when it ends at a fault.
bool PrintMetadata(Archive& archive);

} // namespace command
