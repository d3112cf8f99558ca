#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ODF::archive {

/// Where a member goes below the folder that it is extracted to.
struct MemberPath {
    std::vector<std::string> steps; ///< folders and, at the end, the name of the file or folder itself
    std::string joined() const;     ///< the steps with `/` between them
};

/// The place of the member `name`, or nothing, with the reason in `fault`, when the name would lead out of
/// the folder or can't be stored. `\` counts as a separator, since other systems read it so; "." steps and
/// doubled separators fall away. `room` is the longest result in bytes.
std::optional<MemberPath> ToMemberPath(std::string_view name, std::size_t room, const char*& fault);

} // namespace ODF::archive
