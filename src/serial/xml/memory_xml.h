#pragma once

#include <odfmodel/core/format_version.h>
#include <odfmodel/core/object.h>

#include <string>

namespace ODF::xml {

/// The tree as XML with full fidelity, and the version of the format that it needs. Empty when it can't be
/// written.
std::string ToXml(CSDObject& root, FormatVersion& newest);

} // namespace ODF::xml
