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

/// A number for each object of a tree that tells it and all below it from what is different.
class TreeHashes {
public:
    explicit TreeHashes(const CSDObject& root);
    std::uint64_t of(const CSDObject& object) const { return hashes_.at(&object); }

private:
    std::unordered_map<const CSDObject*, std::uint64_t> hashes_;
};

} // namespace command
