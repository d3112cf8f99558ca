#pragma once

#include <string>
#include <string_view>

namespace ODF::reading {

/// A number as a list or heading shows it: `format` is "1", "a", "A", "i", "I"; any other gives Arabic
/// figures. With `isLetterSync` letters beyond z go on as aa, bb, without it as aa, ab.
std::string FormatNumber(unsigned number, std::string_view format, bool isLetterSync);

} // namespace ODF::reading
