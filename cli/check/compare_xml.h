#pragma once

#include "check/classes.h"
#include "check/finding.h"
#include "check/xml_events.h"

namespace command {

/// The name of faults in what a round trip wrote.
inline constexpr std::string_view kWrittenFile = "(written)";

/// Compares an XML member with what a round trip made of it, element by element, and adds what differs.
/// `root` is the class of the root element, null when none reads it. `names` serves both files.
void CompareXml(XmlEvents& before, XmlEvents& after, const ClassView* root, Classes& classes,
                Findings& findings);

} // namespace command
