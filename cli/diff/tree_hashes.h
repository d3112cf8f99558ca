#pragma once

#include "package/attributes.h"

#include <odfmodel/core/object.h>

#include <cstdint>
#include <string>
#include <unordered_map>

namespace command {

/// The name of an object in a path, such as "text:p" or "text()".
std::string StepName(const CSDObject& object);
/// The text that the object itself has.
std::string OwnText(const CSDObject& object);

/// Numbers that tell an object and all below it from what is different.
struct TreeHash {
    std::uint64_t all = 0;  ///< of everything
    std::uint64_t text = 0; ///< of its class and the text alone; 0 without a text
};

class TreeHashes {
public:
    explicit TreeHashes(const CSDObject& root);
    const TreeHash& of(const CSDObject& object) const { return hashes_.at(&object); }

private:
    std::unordered_map<const CSDObject*, TreeHash> hashes_;
};

} // namespace command
