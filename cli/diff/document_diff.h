#pragma once

#include "diff/tree_diff.h"
#include "package/members.h"

#include <odfmodel/document/open_document.h>

#include <string>
#include <vector>

namespace command {

/// What differs in one member of two documents.
struct MemberDifference {
    enum class Kind { OnlyBefore, OnlyAfter, Bytes, Tree };
    std::string member; ///< `kFlatMember` for one of two XML files
    Kind kind;
    std::vector<Difference> differences; ///< of trees
};

/// A member that can't be read to its end, so that what follows in it isn't compared.
struct UnreadMember {
    bool isOfBefore;
    std::string member;
    ODF::Result why;
};

struct Comparison {
    std::vector<MemberDifference> found;
    std::vector<UnreadMember> unread; ///< but for what the opening of the documents told
};

/// Compares two documents member by member: those that have a tree by their trees, the others by their bytes.
/// Two flat documents are compared as one tree. The manifest and the type of the package don't count. With a
/// name of `only` that member alone.
Comparison CompareDocuments(ODF::Document& before, ODF::Document& after, const std::string& only);

} // namespace command
