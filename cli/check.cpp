#include "check/package_check.h"
#include "check/report.h"
#include "commands.h"
#include "files.h"
#include "json.h"
#include "verb.h"

namespace command {
namespace {

struct CheckOptions : Files {
    bool isListed = false;
    bool isJson = false;
    bool isVerbose = false;
    bool isStrict = false;
};

ExitCode Run(CheckOptions& options) {
    std::vector<CheckResult> results;
    const ExitCode code = options.forEach([&](const std::string& path) {
        const CheckResult result = CheckPackage(path, options.isListed ? Trip::Listed : Trip::Full,
                                                options.passwords, options.isStrict);
        if (options.isJson)
            results.push_back(result);
        else
            PrintReport(result, options.isVerbose);
        return result.code;
    });
    if (options.isJson) PrintJson(results);
    return code;
}

} // namespace

void AddCheck(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<CheckOptions>(
        app, exitCode, Run, "check",
        "Tells what a round trip loses or adds: members, elements, attributes, text, and values that would\n"
        "be written differently. Exit code 1 when there is anything");
    options.addOptions(verb);
    verb.add_flag("--listed", options.isListed,
                  "Check the trip that keeps what the element classes list alone, as roundtrip --listed");
    verb.add_flag("--strict", options.isStrict, kStrictHelp);
    verb.add_flag("--json", options.isJson, kJsonHelp);
    verb.add_flag("-v,--verbose", options.isVerbose,
                  "List also what is harmless: a document type that is dropped");
}

} // namespace command
