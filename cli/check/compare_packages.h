#pragma once

#include "check/finding.h"
#include "package/archive.h"

#include <map>
#include <string>

namespace command {

/// The class ids of the root elements of those members that are read into trees.
using TreeRoots = std::map<std::string, unsigned, std::less<>>;

/// Compares two packages: XML members with a tree by what they say, all others byte by byte. `isOdf` false:
/// there is no manifest.
void ComparePackages(Archive& before, Archive& after, const TreeRoots& roots, bool isOdf,
                     std::map<std::string, Findings>& findings);

} // namespace command
