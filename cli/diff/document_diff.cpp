#include "diff/document_diff.h"

#include <odfmodel/elements/office/document.h>

#include <set>

namespace command {
namespace {

using Kind = MemberDifference::Kind;

/// Reads the members of one of the documents.
class Side {
public:
    Side(ODF::Document& document, bool isBefore, std::vector<UnreadMember>& unread)
        : document_(document), isBefore_(isBefore), unread_(unread) {
        for (std::string& name : document.Trees())
            readAtOnce_.insert(std::move(name));
    }
    bool has(const std::string& member) const { return document_.HasMember(member); }
    /// Null for a member without a tree.
    const CSDObject* root(const std::string& member) {
        ODF::Result result;
        const CSDObject* const root = document_.Root(member, &result);
        if (root && !readAtOnce_.contains(member)) take(member, result);
        return root;
    }
    std::vector<unsigned char> bytes(const std::string& member) {
        std::vector<unsigned char> bytes;
        take(member, document_.ReadMember(member, bytes));
        return bytes;
    }

private:
    void take(const std::string& member, const ODF::Result& result) {
        if (!result) unread_.push_back({isBefore_, member, result});
    }

    ODF::Document& document_;
    bool isBefore_;
    std::vector<UnreadMember>& unread_;
    std::set<std::string> readAtOnce_; ///< their faults were told when the document was opened
};

void CompareMember(Side& before, Side& after, const std::string& member,
                   std::vector<MemberDifference>& found) {
    if (!after.has(member)) return found.push_back({member, Kind::OnlyBefore, {}});
    if (!before.has(member)) return found.push_back({member, Kind::OnlyAfter, {}});
    if (member.ends_with(".xml")) {
        const CSDObject* const one = before.root(member);
        const CSDObject* const other = after.root(member);
        if (one && other) {
            std::vector<Difference> differences = CompareTrees(*one, *other);
            if (!differences.empty()) found.push_back({member, Kind::Tree, std::move(differences)});
            return;
        }
    }
    if (before.bytes(member) != after.bytes(member)) found.push_back({member, Kind::Bytes, {}});
}

} // namespace

Comparison CompareDocuments(ODF::Document& before, ODF::Document& after, const std::string& only) {
    Comparison comparison;
    if (before.IsFlat() && after.IsFlat()) {
        std::vector<Difference> differences = CompareTrees(*before.Flat(), *after.Flat());
        if (!differences.empty())
            comparison.found.push_back({kFlatMember, Kind::Tree, std::move(differences)});
        return comparison;
    }
    std::vector<std::string> names = before.Members();
    const std::set<std::string> known(names.begin(), names.end());
    for (std::string& name : after.Members())
        if (!known.contains(name)) names.push_back(std::move(name));
    Side one(before, true, comparison.unread);
    Side other(after, false, comparison.unread);
    for (const std::string& name : names)
        if (only.empty() || name == only) CompareMember(one, other, name, comparison.found);
    return comparison;
}

} // namespace command
