#pragma once

#include "diff/tree_hashes.h"

#include <utility>
#include <vector>

namespace command {

/// Which of two lists of children stand for each other. A pair has null on one side for what is in one list
/// only. Children that are alike aren't mentioned.
using Pairs = std::vector<std::pair<const CSDObject*, const CSDObject*>>;
Pairs Align(const CSDObject& before, const TreeHashes& hashesBefore, const CSDObject& after,
            const TreeHashes& hashesAfter);

} // namespace command
