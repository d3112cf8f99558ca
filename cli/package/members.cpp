#include "package/members.h"

namespace command {

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
