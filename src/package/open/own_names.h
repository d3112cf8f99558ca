#pragma once

#include "package/paths.h"

#include <odfmodel/package/relationship.h>
#include <odfmodel/package/types.h>
#include <odfmodel/serial/unzip.h>

#include <map>

/// How an Open Packaging file spells names and gives types, where that isn't the customary way.
namespace SDPackage {

/// Finds the archive's own spelling of a member name. Names there may keep the escapes that targets lose, and
/// writers on other systems take no care of case.
class MemberNames {
public:
    /// `isLoose` finds also what has a leading `/` or other escapes.
    MemberNames(const ZipItemTable& table, bool isLoose) : table_(table), isLoose_(isLoose) {}

    /// Null when there is no such member. Valid as long as the table.
    const CTulStringW* find(Units name) {
        for (const CTulStringW& spelling : {CTulStringW(name), EscapeTarget(CTulStringW(name))}) {
            const auto item = table_.find(spelling);
            if (item != table_.end() && item->second.index >= 0) return &item->first;
        }
        if (byFoldedName_.empty())
            for (const auto& [member, item] : table_)
                if (item.index >= 0) byFoldedName_.try_emplace(key(member), &member);
        for (const CTulStringW& spelling : {CTulStringW(name), EscapeTarget(CTulStringW(name)),
                                            CTulStringW(Unescaped(ODF::ToUtf8(name)))}) {
            const auto folded = byFoldedName_.find(spelling);
            if (folded != byFoldedName_.end()) return folded->second;
            if (!isLoose_) break;
        }
        return nullptr;
    }

private:
    CTulStringW key(const CTulStringW& member) const {
        return isLoose_ ? CTulStringW(WithoutLeadingSeparator(member.view())) : member;
    }

    const ZipItemTable& table_;
    bool isLoose_;
    std::map<CTulStringW, const CTulStringW*, IgnoreCaseLess> byFoldedName_;
};

/// The content types as the file has them, found as the convention says: without regard to case.
class OwnContentTypes {
public:
    Map overrides;
    Map defaults;

    /// To be called when both maps are filled.
    void index() {
        for (const auto& [name, type] : overrides)
            byName_.try_emplace(CTulStringW(WithoutLeadingSeparator(name.view())), &name);
        for (const auto& [extension, type] : defaults)
            byExtension_.try_emplace(extension, &type);
    }
    /// The part name of the member's override; null when it has none.
    const CTulStringW* overrideOf(const CTulStringW& member) const {
        const auto found = byName_.find(CTulStringW(WithoutLeadingSeparator(member.view())));
        return found == byName_.end() ? nullptr : found->second;
    }
    /// Null when neither an override nor a default gives one.
    const CTulStringW* typeOf(const CTulStringW& member) const {
        if (const CTulStringW* const name = overrideOf(member)) return &overrides.at(*name);
        const Units extension = ExtensionOf(member.view());
        const auto found =
            extension.empty() ? byExtension_.end() : byExtension_.find(CTulStringW(extension.substr(1)));
        return found == byExtension_.end() ? nullptr : found->second;
    }

private:
    std::map<CTulStringW, const CTulStringW*, IgnoreCaseLess> byName_;
    std::map<CTulStringW, const CTulStringW*, IgnoreCaseLess> byExtension_;
};

} // namespace SDPackage
