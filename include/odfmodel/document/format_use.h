#pragma once

#include <odfmodel/core/format_version.h>
#include <odfmodel/core/object.h>
#include <odfmodel/export.h>

#include <cstddef>
#include <string>
#include <vector>

/// @file
/// What of the OpenDocument Format a tree uses that older versions don't have.
///
///     for (const ODF::LaterUse& use : ODF::UsesAfter(ODF::FormatVersion::V1_2, *document.Content()))
///         std::cout << use.count << " x " << use.name << " (" << ODF::VersionName(use.since) << ")\n";

namespace ODF {

/// Something that came later, and how often a tree has it.
struct LaterUse {
    /// "text:meta" for an element, "draw:page/draw:a" for one that its parent may have since then,
    /// "text:p@xml:id" for an attribute, "draw:page@style:repeat=scale" for a key. Names that no version has
    /// are with their customary prefix, or with their namespace in braces.
    std::string name;
    FormatVersion since; ///< `Extended` also for what no class lists
    std::size_t count;
};

/// What a reader of `version` doesn't know in a tree that was read with full fidelity or made by the caller,
/// in the order of the names. Text, comments and the values of attributes other than keys don't count.
ODFMODEL_API std::vector<LaterUse> UsesAfter(FormatVersion version, const CSDObject& tree);

} // namespace ODF
