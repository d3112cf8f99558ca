#include "check/package_check.h"
#include "check/report.h"
#include "check/version_check.h"
#include "commands.h"
#include "files.h"
#include "json.h"

namespace command {

void AddCheck(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const check = app.add_subcommand(
        "check",
        "Tells what a round trip loses or adds: members, elements, attributes, text, and values that would\n"
        "be written differently; or what readers of an older version of the format don't know. Exit code 1\n"
        "when there is anything");
    struct Options : Files {
        bool isListed = false;
        bool isJson = false;
        bool isVerbose = false;
        bool isStrict = false;
        std::string version;
    };
    const auto options = std::make_shared<Options>();
    options->addOptions(*check);
    check->add_flag("--listed", options->isListed,
                    "Check the trip that keeps what the element classes list alone, as roundtrip --listed");
    check->add_flag("--strict", options->isStrict, kStrictHelp);
    check->add_flag("--json", options->isJson, kJsonHelp);
    check->add_flag("-v,--verbose", options->isVerbose,
                    "List also what is harmless: a document type that is dropped");
    check
        ->add_option("--version", options->version,
                     "List what readers of this version of the format don't know, instead of a round trip")
        ->check(CLI::IsMember({"1.1", "1.2", "1.3", "1.4"}))
        ->type_name("VERSION");
    check->callback([options, &exitCode] {
        if (const auto version = ODF::ParseVersion(options->version)) {
            std::vector<VersionResult> results;
            exitCode = options->forEach([&](const std::string& path) {
                const VersionResult result =
                    CheckVersion(path, *version, options->passwords, options->isStrict);
                if (options->isJson)
                    results.push_back(result);
                else
                    PrintReport(result, *version);
                return result.code;
            });
            if (options->isJson) PrintJson(results);
            return;
        }
        std::vector<CheckResult> results;
        exitCode = options->forEach([&](const std::string& path) {
            const CheckResult result = CheckPackage(path, options->isListed ? Trip::Listed : Trip::Full,
                                                    options->passwords, options->isStrict);
            if (options->isJson)
                results.push_back(result);
            else
                PrintReport(result, options->isVerbose);
            return result.code;
        });
        if (options->isJson) PrintJson(results);
    });
}

} // namespace command
