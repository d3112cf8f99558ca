#pragma once

#include <array>
#include <cstdint>
#include <list>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace SDPackage {

/// The whole content of a compound storage file: a tree of storages with streams at its leaves.
struct CompoundNode {
    std::string name; ///< UTF-8
    bool isStorage = false;
    std::vector<unsigned char> bytes;       ///< of a stream
    std::array<std::uint8_t, 16> classId{}; ///< of a storage
    std::list<CompoundNode> children;       ///< of a storage; a list, as open streams hold on to their node
};

/// Nothing for bytes that are no sound compound file.
std::optional<CompoundNode> ReadCompoundFile(std::span<const unsigned char> file);
/// Nothing when there is no memory for it.
std::optional<std::vector<unsigned char>> WriteCompoundFile(const CompoundNode& root);

} // namespace SDPackage
