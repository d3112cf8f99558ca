#pragma once

#include <odfmodel/package/part.h>
#include <odfmodel/package/types.h>

#include <map>
#include <set>
#include <vector>

namespace SDPackage {

/// One relationship as its file has it.
struct KeptLink {
    CTulStringW id;
    CTulStringW type;
    CTulStringW target;          ///< with its escapes
    const IPart* part = nullptr; ///< that it led to; compared, never followed
};

/// A member that a relationship led to.
struct KeptMember {
    CTulStringW name;
    CTulStringW partName; ///< of its override in the content types; empty without one
};

/// What a package that keeps its file's own knows of it besides the parts: how `Fidelity::Everything` writes
/// the index again without changing what nobody touched.
struct KeptFile {
    bool isOpen = false;                                ///< there is a file to keep
    std::map<CTulStringW, std::vector<KeptLink>> links; ///< by the source's name, in the order of the file
    std::set<CTulStringW> sources;                      ///< sets of relationships whose source was a part
    std::vector<KeptMember> members;
    std::vector<CTulStringW> others; ///< members of no index that no relationship leads to
    FileMap written;                 ///< what the last save entered in the write list
};

} // namespace SDPackage
