#pragma once

#include <odfmodel/core/object.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

// What a sheet does to the tree: walking with a state, inserting at a position, dividing what is repeated.
namespace ODF {

/// Inserts a child before the one at `position`; the parent owns it then. Throws std::bad_alloc, with
/// nothing changed.
CSDObject* Insert(CSDExtObject& parent, std::size_t position, std::unique_ptr<CSDObject> child);

/// The children; an empty list for an object that never had one.
const std::vector<CSDObject*>& ChildrenOf(const CSDObject& object) noexcept;

/// Calls `visit(child, state)` for what is below `root`, in document order. A child whose call returns a
/// state is entered, with that state for its own children. Trees may be of any depth.
template<typename State, typename Visit>
void WalkBelow(const CSDObject& root, State state, Visit visit) {
    struct Level {
        const std::vector<CSDObject*>& objects;
        State state;
        std::size_t next = 0;
    };
    std::vector<Level> levels;
    levels.push_back({ChildrenOf(root), state});
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.objects.size()) {
            levels.pop_back();
            continue;
        }
        CSDObject* const object = level.objects[level.next++];
        if (!object) continue;
        if (const std::optional<State> below = visit(*object, level.state))
            levels.push_back({ChildrenOf(*object), *below});
    }
}

/// @name Repeats
/// Of rows, cells and columns.
/// @{
bool IsCell(const CSDObject& object) noexcept;
std::uint32_t RepeatOf(const CSDObject& object) noexcept; ///< at least 1
void SetRepeat(CSDObject& object, std::uint32_t repeat);

/// Elements that `Isolate` has put before and after the object.
struct Pieces {
    bool hasBefore = false;
    bool hasAfter = false;
};
/// Divides a repeated element so that the object stands for the one copy `offset` alone and clones for the
/// copies before and after it.
Pieces Isolate(CSDExtObject& parent, std::size_t position, std::uint32_t offset);
/// @}

} // namespace ODF
