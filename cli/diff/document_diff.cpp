#include "diff/document_diff.h"

#include <odfmodel/elements/office/document.h>

#include <set>

namespace command {
namespace {

using Kind = MemberDifference::Kind;

std::vector<unsigned char> BytesOf(ODF::Document& document, const std::string& member) {
    std::vector<unsigned char> bytes;
    // What can't be read whole differs from what can.
    static_cast<void>(document.ReadMember(member, bytes));
    return bytes;
}

void CompareMember(ODF::Document& before, ODF::Document& after, const std::string& member,
                   std::vector<MemberDifference>& found) {
    if (!after.HasMember(member)) return found.push_back({member, Kind::OnlyBefore, {}});
    if (!before.HasMember(member)) return found.push_back({member, Kind::OnlyAfter, {}});
    if (member.ends_with(".xml")) {
        const CSDObject* const one = before.Root(member);
        const CSDObject* const other = after.Root(member);
        if (one && other) {
            std::vector<Difference> differences = CompareTrees(*one, *other);
            if (!differences.empty()) found.push_back({member, Kind::Tree, std::move(differences)});
            return;
        }
    }
    if (BytesOf(before, member) != BytesOf(after, member)) found.push_back({member, Kind::Bytes, {}});
}

} // namespace

std::vector<MemberDifference> CompareDocuments(ODF::Document& before, ODF::Document& after,
                                               const std::string& only) {
    std::vector<MemberDifference> found;
    if (before.IsFlat() && after.IsFlat()) {
        std::vector<Difference> differences = CompareTrees(*before.Flat(), *after.Flat());
        if (!differences.empty()) found.push_back({"(flat document)", Kind::Tree, std::move(differences)});
        return found;
    }
    std::vector<std::string> names = before.Members();
    const std::set<std::string> known(names.begin(), names.end());
    for (std::string& name : after.Members())
        if (!known.contains(name)) names.push_back(std::move(name));
    for (const std::string& name : names)
        if (only.empty() || name == only) CompareMember(before, after, name, found);
    return found;
}

} // namespace command
