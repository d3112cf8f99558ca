#include "check/compare_packages.h"

#include "check/compare_xml.h"
#include "check/manifest_rows.h"
#include "package/manifest.h"

#include <algorithm>

namespace command {
namespace {

constexpr const char* kMediaType = "media-type";

std::string ValueOf(const ManifestRow& row, const std::string& name) {
    const auto at = row.find(name);
    return at == row.end() ? std::string() : at->second;
}

std::string TextOf(const ManifestRow& row) {
    std::string text;
    for (const auto& [name, value] : row)
        if (name != "full-path") text.append(text.empty() ? "" : " ").append(name).append("=").append(value);
    return text;
}

void CompareXmlBytes(const MemberBytes& before, const MemberBytes& after, unsigned root, Classes& classes,
                     Findings& findings) {
    NamePool names;
    XmlEvents eventsBefore(names, Pieces(before.text()));
    XmlEvents eventsAfter(names, Pieces(after.text()));
    CompareXml(eventsBefore, eventsAfter, classes.find(root), classes, findings);
}

class PackageComparison {
public:
    PackageComparison(const MemberSource& before, const MemberSource& after, const TreeRoots& roots,
                      FindingsByMember& findings)
        : before_(before), after_(after), roots_(roots), findings_(findings) {}

    void compareMembers(bool isOdf) {
        for (const Member& member : before_.members()) {
            if (isOdf && (member.isFolder() || member.name == kManifestName)) continue;
            if (after_.find(member.name))
                compareMember(member.name);
            else
                add(member.name, FindingKind::MemberLost, {}, std::to_string(member.size) + " bytes");
        }
        for (const Member& member : after_.members()) {
            const bool isManifest = isOdf && member.name == kManifestName;
            if (!isManifest && !before_.find(member.name)) add(member.name, FindingKind::MemberAdded);
        }
    }

    void compareManifests() {
        std::string fault;
        std::string savedFault;
        const ManifestRows before = ReadManifestRows(before_.read(kManifestName).text(), fault);
        const ManifestRows after = ReadManifestRows(after_.read(kManifestName).text(), savedFault);
        if (!fault.empty()) add(kManifestName, FindingKind::XmlFault, {}, fault);
        if (!savedFault.empty()) add(kManifestName, FindingKind::XmlFault, kWrittenFile, savedFault);
        for (const auto& [path, rows] : before) {
            const auto saved = after.find(path);
            for (std::size_t i = 0; i < rows.size(); ++i)
                if (saved == after.end() || i >= saved->second.size())
                    add(kManifestName, FindingKind::EntryLost, path, Example(ValueOf(rows[i], kMediaType)));
                else
                    compareRows(path, rows[i], saved->second[i]);
        }
        for (const auto& [path, rows] : after) {
            const auto was = before.find(path);
            for (std::size_t i = was == before.end() ? 0 : was->second.size(); i < rows.size(); ++i)
                add(kManifestName, FindingKind::EntryAdded, path, Example(ValueOf(rows[i], kMediaType)));
        }
    }

private:
    void add(std::string_view member, FindingKind kind, std::string_view name = {},
             std::string_view example = {}) {
        findings_[std::string(member)].add(kind, name, example);
    }

    void compareRows(const std::string& path, ManifestRow was, ManifestRow is) {
        if (ValueOf(was, kMediaType) != ValueOf(is, kMediaType))
            add(kManifestName, FindingKind::MediaTypeChanged, path,
                Change(ValueOf(was, kMediaType), ValueOf(is, kMediaType)));
        was.erase(kMediaType);
        is.erase(kMediaType);
        if (was != is) add(kManifestName, FindingKind::EntryChanged, path, Change(TextOf(was), TextOf(is)));
    }

    void compareMember(const std::string& name) {
        const MemberBytes before = before_.read(name);
        const MemberBytes after = after_.read(name);
        if (const auto root = roots_.find(name); root != roots_.end()) {
            Findings found;
            CompareXmlBytes(before, after, root->second, classes_, found);
            if (!found.isEmpty()) findings_[name] = std::move(found);
        } else if (before.bytes != after.bytes) {
            add(name, FindingKind::MemberChanged);
        }
        if (!before.isWhole || !after.isWhole) add(name, FindingKind::MemberDamaged);
    }

    const MemberSource& before_;
    const MemberSource& after_;
    const TreeRoots& roots_;
    FindingsByMember& findings_;
    Classes classes_;
};

} // namespace

void ComparePackages(const MemberSource& before, const MemberSource& after, const TreeRoots& roots,
                     bool isOdf, FindingsByMember& findings) {
    PackageComparison comparison(before, after, roots, findings);
    comparison.compareMembers(isOdf);
    if (isOdf) comparison.compareManifests();
}

void CompareFlat(const MemberBytes& before, const MemberBytes& after, unsigned root, Findings& findings) {
    Classes classes;
    CompareXmlBytes(before, after, root, classes, findings);
}

} // namespace command
