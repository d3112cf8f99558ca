#include "check/package_check.h"
#include "check/report.h"
#include "check/version_check.h"
#include "commands.h"
#include "files.h"
#include "json.h"
#include "verb.h"

#include <iostream>

namespace command {
namespace {

struct CheckOptions : Files {
    bool isListed = false;
    bool isJson = false;
    bool isVerbose = false;
    bool isStrict = false;
    std::string version;
};

/// Checks each file, and prints each result at once or all of them as one JSON document.
ExitCode ForEach(CheckOptions& options, auto check, auto print) {
    nlohmann::json results = nlohmann::json::array();
    const ExitCode code = options.forEach([&](const std::string& path) {
        const auto result = check(path);
        if (options.isJson)
            results.push_back(ToJson(result));
        else
            print(result);
        return result.code;
    });
    if (options.isJson) PrintJson({{"files", std::move(results)}}, std::cout);
    return code;
}

ExitCode Run(CheckOptions& options) {
    if (const auto version = ODF::ParseVersion(options.version))
        return ForEach(
            options,
            [&](const std::string& path) {
                return CheckVersion(path, *version, options.passwords, options.isStrict);
            },
            [&](const VersionResult& result) { PrintReport(result, *version); });
    return ForEach(
        options,
        [&](const std::string& path) {
            return CheckPackage(path, options.isListed ? Trip::Listed : Trip::Full, options.passwords,
                                options.isStrict);
        },
        [&](const CheckResult& result) { PrintReport(result, options.isVerbose); });
}

} // namespace

void AddCheck(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<CheckOptions>(
        app, exitCode, Run, "check",
        "Tells what a round trip loses or adds: members, elements, attributes, text, and values that would\n"
        "be written differently; or what readers of an older version of the format don't know. Exit code 1\n"
        "when there is anything");
    options.addOptions(verb);
    verb.add_flag("--listed", options.isListed,
                  "Check the trip that keeps what the element classes list alone, as roundtrip --listed");
    verb.add_flag("--strict", options.isStrict, kStrictHelp);
    verb.add_flag("--json", options.isJson, kJsonHelp);
    verb.add_flag("-v,--verbose", options.isVerbose,
                  "List also what is harmless: a document type that is dropped");
    verb.add_option("--version", options.version,
                    "List what readers of this version of the format don't know, instead of a round trip")
        ->check(CLI::IsMember({"1.2", "1.3", "1.4"}))
        ->type_name("VERSION");
}

} // namespace command
