#include "check/compare_packages.h"

#include "check/compare_xml.h"
#include "package/manifest.h"

#include <algorithm>

namespace command {
namespace {

/// The place where two members part for the first time; nothing for equal ones.
bool SameBytes(MemberStream& a, MemberStream& b) {
    std::string_view fromA;
    std::string_view fromB;
    for (;;) {
        if (fromA.empty()) fromA = a.next();
        if (fromB.empty()) fromB = b.next();
        const std::size_t length = std::min(fromA.size(), fromB.size());
        if (length == 0) return fromA.empty() && fromB.empty();
        if (fromA.substr(0, length) != fromB.substr(0, length)) return false;
        fromA.remove_prefix(length);
        fromB.remove_prefix(length);
    }
}

class PackageComparison {
public:
    PackageComparison(Archive& before, Archive& after, const TreeRoots& roots,
                      std::map<std::string, Findings>& findings)
        : before_(before), after_(after), roots_(roots), findings_(findings) {}

    void compareMembers(bool isOdf) {
        for (const Member& member : before_.members()) {
            const bool isManifest = isOdf && member.name == kManifestName;
            const bool isMimetype = isOdf && member.name == kMimetypeName;
            if (member.isFolder() || isManifest) continue;
            const Member* const saved = after_.find(member.name);
            if (saved)
                compareMember(member, *saved);
            else if (isMimetype)
                checkMimetype();
            else
                add(member.name, FindingKind::MemberLost, {}, std::to_string(member.size) + " bytes");
        }
        for (const Member& member : after_.members())
            if (!before_.find(member.name)) add(member.name, FindingKind::MemberAdded);
    }

    /// What the manifest tells of each member; its own attributes are of no interest.
    void compareManifests() {
        const auto before = ReadManifest(before_.read(kManifestName).value_or(""));
        std::map<std::string, std::string> after;
        for (const ManifestEntry& entry : ReadManifest(after_.read(kManifestName).value_or("")))
            after.emplace(entry.path, entry.mediaType);
        bool wasEncrypted = false;
        for (const ManifestEntry& entry : before) {
            wasEncrypted = wasEncrypted || !entry.algorithm.empty();
            const auto saved = after.find(entry.path);
            const bool isThere = entry.isRoot() || after_.find(entry.path);
            if (saved != after.end() && saved->second != entry.mediaType)
                add(kManifestName, FindingKind::MediaTypeChanged, entry.path,
                    Change(entry.mediaType, saved->second));
            else if (saved == after.end() && isThere)
                add(kManifestName, FindingKind::EntryLost, entry.path);
            else if (saved == after.end() && entry.isFolder() && !entry.mediaType.empty())
                add(kManifestName, FindingKind::EntryLost, entry.path, Example(entry.mediaType));
            else if (saved == after.end())
                add(kManifestName, FindingKind::EmptyEntryDropped, entry.path);
        }
        if (wasEncrypted) add(kManifestName, FindingKind::Decrypted);
    }

private:
    void add(std::string_view member, FindingKind kind, std::string_view name = {},
             std::string_view example = {}) {
        findings_[std::string(member)].add(kind, name, example);
    }

    void compareMember(const Member& member, const Member& saved) {
        MemberStream a(before_, member);
        MemberStream b(after_, saved);
        if (const auto root = roots_.find(member.name); root != roots_.end()) {
            NamePool names;
            XmlEvents before(names, [&] { return a.next(); });
            XmlEvents after(names, [&] { return b.next(); });
            Findings found;
            CompareXml(before, after, classes_.find(root->second), classes_, found);
            if (!found.isEmpty()) findings_[member.name] = std::move(found);
        } else if (!SameBytes(a, b)) {
            add(member.name, FindingKind::MemberChanged);
        }
        if (a.isDamaged() || b.isDamaged()) add(member.name, FindingKind::MemberDamaged);
    }

    /// The member repeats what the manifest says of the package as a whole.
    void checkMimetype() {
        const std::string mimetype = before_.read(kMimetypeName).value_or("");
        const std::string mediaType = MediaTypeOf(ReadManifest(after_.read(kManifestName).value_or("")));
        if (mimetype == mediaType)
            add(kMimetypeName, FindingKind::MimetypeDropped);
        else
            add(kMimetypeName, FindingKind::MemberLost, {}, Change(mimetype, mediaType));
    }

    Archive& before_;
    Archive& after_;
    const TreeRoots& roots_;
    std::map<std::string, Findings>& findings_;
    Classes classes_;
};

} // namespace

void ComparePackages(Archive& before, Archive& after, const TreeRoots& roots, bool isOdf,
                     std::map<std::string, Findings>& findings) {
    PackageComparison comparison(before, after, roots, findings);
    comparison.compareMembers(isOdf);
    if (isOdf) comparison.compareManifests();
}

} // namespace command
