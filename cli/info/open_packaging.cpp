#include "info/report.h"

#include "console.h"
#include "package/archive.h"
#include "package/kind.h"
#include "package/reason.h"

#include <odfmodel/package/package.h>

#include <iomanip>
#include <iostream>
#include <map>
#include <memory>

namespace command {
namespace {

using SDPackage::IPackage;
using SDPackage::IPart;
using SDPackage::IPartList;

std::string NameWithoutSlash(const IPart& part) {
    std::string name = ODF::ToUtf8(part.GetPackagePath());
    if (name.starts_with('/')) name.erase(0, 1);
    return name;
}

void PrintParts(IPackage& package) {
    std::map<std::string, long long> sizes;
    for (const Member& member : MembersOf(*package.GetUnZip()))
        sizes[member.name] = member.size;
    PrintHeading("parts");
    for (const auto& [path, part] : *package.GetParts()) {
        if (part->GetTargetMode() == TargetModeExternal) continue;
        const std::string name = NameWithoutSlash(*part);
        auto size = sizes.find(name);
        // Archives may keep the escapes of links in their names, or begin these with a separator.
        for (const std::string& other : {SDPackage::EscapeTarget(CTulStringW(name)).utf8(), "/" + name})
            if (size == sizes.end()) size = sizes.find(other);
        std::cout << "  " << std::setw(12) << (size == sizes.end() ? "missing" : std::to_string(size->second))
                  << "  " << Quoted(path.utf8()) << "  " << Quoted(ODF::ToUtf8(part->GetContentType()))
                  << '\n';
    }
}

void PrintLinks(std::string_view source, const IPart& part) {
    SDPackage::IRelationships* const links = part.GetRelationships();
    const std::unique_ptr<IPartList> list(links ? links->GetPartList(nullptr) : nullptr);
    for (int i = 0; list && i < list->Count(); ++i) {
        const IPartList::Entry& entry = *list->GetEntry(i);
        const bool isExternal = entry.second->GetTargetMode() == TargetModeExternal;
        std::cout << "  " << Quoted(source) << "  " << Quoted(entry.first.utf8()) << " -> "
                  << Quoted(ODF::ToUtf8(entry.second->GetPackagePath())) << (isExternal ? " (external)" : "")
                  << "  " << Quoted(ODF::ToUtf8(entry.second->GetRelationType())) << '\n';
    }
}

} // namespace

ExitCode ReportOpenPackaging(const std::string& path) {
    ODF::Diagnostics diagnostics;
    IPackage package;
    package.SetDiagnostics(&diagnostics);
    package.SetFidelity(ODF::Fidelity::Everything);
    if (package.Open(path, 1) == 0) {
        Complain(path, Reason(diagnostics));
        return ExitCode::CannotOpen;
    }
    std::cout << Quoted(path) << '\n';
    PrintField("type", NameOf(package.GetDocType()));
    PrintParts(package);
    PrintHeading("relationships");
    PrintLinks("/", *package.GetRootPart());
    for (const auto& [name, part] : *package.GetParts())
        PrintLinks(name.utf8(), *part);
    ComplainNotes(path, diagnostics);
    return ExitCode::Ok;
}

} // namespace command
