#pragma once

#include "check/finding.h"
#include "package/members.h"

#include <map>
#include <string>

namespace command {

/// The class ids of the root elements of those members that are read into trees.
using TreeRoots = std::map<std::string, unsigned, std::less<>>;
using FindingsByMember = std::map<std::string, Findings>;

/// Compares two packages: XML members with a tree by what they say, all others byte by byte. `isOdf` false:
/// there is no manifest.
void ComparePackages(const MemberSource& before, const MemberSource& after, const TreeRoots& roots,
                     bool isOdf, FindingsByMember& findings);
/// Compares two flat documents, whose root has the class id `root`.
void CompareFlat(const MemberBytes& before, const MemberBytes& after, unsigned root, Findings& findings);

} // namespace command
