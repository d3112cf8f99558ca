#pragma once

#include "package/open/member_reader.h"

#include <unordered_set>
#include <vector>

namespace SDPackage {

/// Reads the content types and all relationships of the open archive into the registry, the parts and their
/// sets. 0 at the first index member that can't be read or used; what was read so far stays.
int ReadOpenPackagingIndex(PackageState& state, IndexReader& reader);

/// The parts that the links of these sets lead to, and the links of those, and so on. Sets may be null.
std::unordered_set<const IPart*> ReachedParts(std::vector<IRelationships*> open);

/// The package path that `target` means, seen from the folder `base`, both with `/`. It never leaves the
/// package.
CTulStringW ResolveTarget(Units base, Units target);

} // namespace SDPackage
