#pragma once

#include <odfmodel/core/object.h>

namespace ODF::flat {

/// Gives `to` the namespace declarations that `from` has, since values may begin with a prefix that they
/// explain. False when `to` declares one of the prefixes for another namespace; that one stays as it is.
bool AddDeclarations(const CSDObject& from, CSDObject& to);

} // namespace ODF::flat
