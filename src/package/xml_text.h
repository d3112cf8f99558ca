#pragma once

#include "package/paths.h"

namespace SDPackage {

/// `text` as it is between the quotes of an attribute. What would end or break the value becomes a
/// reference, what XML can't hold at all becomes U+FFFD; everything else keeps its spelling.
CTulStringW EscapeAttribute(Units text);
/// The same for one unit that was looked at already: appends it to `out`.
void AppendEscaped(std::u16string& out, char16_t unit);
/// Replaces lone surrogates and the characters that XML can't hold by U+FFFD.
std::u16string WithoutForbidden(Units text);

} // namespace SDPackage
