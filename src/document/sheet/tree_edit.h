#pragma once

#include <odfmodel/core/object.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

// What a sheet does to the tree: copying, taking attributes away, inserting.
namespace ODF {

/// A copy of the object with all below it and all that it has of its file, but for `xml:id`, which is unique
/// in a document. Objects of callers' own classes are left out; null for one.
std::unique_ptr<CSDObject> Clone(const CSDObject& original);

/// Takes an attribute away; nothing happens where it is absent.
void Unset(CSDObject& object, unsigned row) noexcept;

/// Inserts a child before the one at `position`; the parent owns it then. Throws std::bad_alloc, with
/// nothing changed.
CSDObject* Insert(CSDExtObject& parent, std::size_t position, std::unique_ptr<CSDObject> child);

/// The children; an empty list for an object that never had one.
const std::vector<CSDObject*>& ChildrenOf(const CSDObject& object) noexcept;

/// Calls `visit(child, state)` for what lies below `root`, in document order. A child whose call returns a
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

/// Where `child` is in the list, searched from `guess` on to both sides; the size if it isn't there.
std::size_t PositionOf(const std::vector<CSDObject*>& list, const CSDObject* child,
                       std::size_t guess) noexcept;

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
