#include "package/members.h"

#include "console.h"

#include <filesystem>

namespace command {

bool IsSafeName(std::string_view name) {
    const std::filesystem::path path(name);
    if (name.empty() || path.is_absolute() || name.find('\0') != std::string_view::npos) return false;
    for (const std::filesystem::path& step : path)
        if (step == ".." || step == "." || step.empty()) return false;
    return true;
}

const Member* MemberSource::find(std::string_view name) const {
    const auto at = byName_.find(name);
    return at == byName_.end() ? nullptr : &members_[at->second];
}

void MemberSource::setMembers(std::vector<Member> members) {
    members_ = std::move(members);
    byName_.clear();
    for (std::size_t i = 0; i < members_.size(); ++i)
        byName_.emplace(members_[i].name, i);
}

} // namespace command
