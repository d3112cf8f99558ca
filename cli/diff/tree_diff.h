#pragma once

#include <odfmodel/core/object.h>

#include <string>
#include <vector>

namespace command {

/// What differs between two trees at one place.
struct Difference {
    enum class Kind { Removed, Added, Attribute, Text };
    Kind kind;
    /// The elements on the way, such as "/office:document-content/office:body/office:text/text:p[3]", in the
    /// first tree, or in the second for what is added; "@name" follows for an attribute.
    std::string path;
    std::string before; ///< for what is removed, its text
    std::string after;  ///< for what is added, its text
};

/// Compares two trees. Children that are alike are found wherever they have moved among their siblings; of
/// the others those of one class are taken to be the same, changed. Takes time in proportion to the trees,
/// and needs no stack for their depth.
std::vector<Difference> CompareTrees(const CSDObject& before, const CSDObject& after);

} // namespace command
