#include "check/version_check.h"

#include "console.h"
#include "package/open_document.h"
#include "package/reason.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/office/document.h>

#include <iostream>

namespace command {
namespace {

/// Reads the trees of embedded objects too.
void ReadAllTrees(ODF::Document& document, ODF::Result& result) {
    for (const std::string& object : document.Objects())
        for (const char* const member : {"/content.xml", "/styles.xml", "/meta.xml", "/settings.xml"})
            if (document.HasMember(object + member)) {
                ODF::Result read;
                document.Root(object + member, &read);
                if (!read && result) result = read;
            }
}

} // namespace

nlohmann::json ToJson(const VersionResult& result) {
    nlohmann::json json{{"file", result.path}, {"exitCode", static_cast<int>(result.code)}};
    if (!result.error.empty()) json["error"] = result.error;
    json["members"] = nlohmann::json::array();
    for (const auto& [name, member] : result.members) {
        nlohmann::json uses = nlohmann::json::array();
        for (const ODF::LaterUse& use : member.uses)
            uses.push_back(
                {{"name", use.name}, {"since", ODF::VersionName(use.since)}, {"count", use.count}});
        json["members"].push_back(
            {{"member", name}, {"version", member.version}, {"later", std::move(uses)}});
    }
    return json;
}

VersionResult CheckVersion(const std::string& path, ODF::FormatVersion version, const Passwords& passwords,
                           bool isStrict) {
    VersionResult checked;
    checked.path = path;
    ODF::Document document;
    ODF::Result opened = TryOpen(document, path, passwords, nullptr, isStrict);
    if (document.IsOpen()) ReadAllTrees(document, opened);
    if (!opened) {
        checked.code = ExitCode::CannotOpen;
        checked.error = OpenReason(path, opened.Code(), opened.Notes());
    }
    if (!document.IsOpen()) return checked;
    const auto look = [&](const std::string& name, const CSDObject* root) {
        if (!root) return;
        VersionResult::Member& member = checked.members[name];
        member.version = ODF::AttributeOf(*root, "office:version");
        member.uses = ODF::UsesAfter(version, *root);
        if (!member.uses.empty()) checked.code = Worst(checked.code, ExitCode::Lost);
    };
    if (document.IsFlat()) look(kFlatMember, document.Flat());
    for (const std::string& member : document.IsFlat() ? std::vector<std::string>() : document.Trees())
        look(member, document.Root(member));
    return checked;
}

void PrintReport(const VersionResult& result, ODF::FormatVersion version) {
    if (!result.error.empty()) Complain(result.path, result.error);
    if (result.members.empty()) return;
    std::cout << Quoted(result.path) << ": "
              << (result.code == ExitCode::Lost ? "has what readers of ODF " : "nothing that readers of ODF ")
              << ODF::VersionName(version)
              << (result.code == ExitCode::Lost ? " don't know" : " don't know was found") << '\n';
    for (const auto& [name, member] : result.members) {
        if (member.uses.empty()) continue;
        std::cout << "  " << Quoted(name);
        if (!member.version.empty()) std::cout << ", version " << Quoted(member.version);
        std::cout << '\n';
        for (const ODF::LaterUse& use : member.uses)
            std::cout << "    " << use.count << " x " << Quoted(use.name) << " ("
                      << ODF::VersionName(use.since) << ")\n";
    }
}

} // namespace command
