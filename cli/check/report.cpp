#include "check/report.h"

#include "console.h"

#include <iostream>

namespace command {
namespace {

void PrintFinding(const Finding& finding) {
    std::cout << "    " << finding.count << " x " << TextOf(finding.kind);
    if (!finding.name.empty()) std::cout << ' ' << Quoted(finding.name);
    if (finding.below > 0) std::cout << ", with " << finding.below << " elements below";
    if (!finding.example.empty()) std::cout << ": " << Quoted(finding.example);
    std::cout << '\n';
}

std::string VerdictOf(const CheckResult& result) {
    return result.code == ExitCode::Ok ? "nothing is lost" : "a round trip loses something";
}

nlohmann::json ToJson(const Finding& finding) {
    nlohmann::json json{{"kind", KeyOf(finding.kind)}, {"count", finding.count}};
    if (!finding.name.empty()) json["name"] = finding.name;
    if (finding.below > 0) json["below"] = finding.below;
    if (!finding.example.empty()) json["example"] = finding.example;
    return json;
}

} // namespace

nlohmann::json ToJson(const CheckResult& result) {
    nlohmann::json json{{"file", result.path}, {"exitCode", static_cast<int>(result.code)}};
    if (!result.error.empty()) {
        json["error"] = result.error;
        return json;
    }
    json["notes"] = result.notes;
    json["members"] = nlohmann::json::array();
    for (const auto& [name, findings] : result.members) {
        nlohmann::json member{
            {"member", name}, {"lost", nlohmann::json::array()}, {"harmless", nlohmann::json::array()}};
        for (const Finding& finding : findings.list())
            member[IsLoss(finding.kind) ? "lost" : "harmless"].push_back(ToJson(finding));
        json["members"].push_back(std::move(member));
    }
    return json;
}

void PrintReport(const CheckResult& result, bool isVerbose) {
    if (!result.error.empty()) {
        Complain(result.path, result.error);
        return;
    }
    std::cout << Quoted(result.path) << ": " << VerdictOf(result) << '\n';
    for (const std::string& note : result.notes)
        std::cout << "  note: " << Quoted(note) << '\n';
    for (const auto& [name, findings] : result.members) {
        std::size_t harmless = 0;
        const std::vector<Finding> list = findings.list();
        for (const Finding& finding : list)
            if (!IsLoss(finding.kind)) harmless += finding.count;
        if (!findings.hasLoss() && !isVerbose) continue;
        std::cout << "  " << Quoted(name) << '\n';
        for (const Finding& finding : list)
            if (isVerbose || IsLoss(finding.kind)) PrintFinding(finding);
        if (harmless > 0 && !isVerbose) std::cout << "    " << harmless << " x harmless\n";
    }
}

} // namespace command
