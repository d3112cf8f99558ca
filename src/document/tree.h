#pragma once

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/format_version.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/object.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

/// The tree of one XML member, with full fidelity.
struct Tree {
    std::unique_ptr<CSDObject> root; ///< null when the member is no XML of a known root
    Status status = Status::Ok;      ///< any other: the tree has only what came before a fault
    TreeCost cost;
};

/// Reads a member's tree. Notes tell of faults, with line and column.
Tree ReadTree(std::span<const unsigned char> xml, std::string_view member, const Limits& limits,
              Diagnostics& diagnostics);
/// The tree as XML, appended to `bytes`; false when it holds what can't be written. `newest`, if given, gets
/// the version of the format that it needs.
bool WriteTree(CSDObject& root, std::vector<unsigned char>& bytes, FormatVersion* newest = nullptr);

/// The bounds for the trees of a file of that size, which share what it allows: how large its members become
/// when they are unpacked doesn't count.
Limits SharedLimits(const Limits& limits, std::uint64_t fileBytes) noexcept;
/// Takes off what a tree has had.
void Spend(Limits& left, const TreeCost& cost) noexcept;

} // namespace ODF
