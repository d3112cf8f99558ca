#include "check/package_check.h"
#include "check/report.h"
#include "commands.h"
#include "files.h"

namespace command {

void AddCheck(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const check = app.add_subcommand(
        "check",
        "Tells what a round trip through the element trees loses: members, unknown elements and attributes,\n"
        "text, and values that would be written differently. Exit code 1 when anything is lost");
    struct Options : Files {
        bool isJson = false;
        bool isVerbose = false;
    };
    const auto options = std::make_shared<Options>();
    options->addOptions(*check);
    check->add_flag("--json", options->isJson, "Print one JSON document for all files");
    check->add_flag("-v,--verbose", options->isVerbose,
                    "List also what is harmless: the same in other words");
    check->callback([options, &exitCode] {
        std::vector<CheckResult> results;
        exitCode = options->forEach([&](const std::string& path) {
            const CheckResult result = CheckPackage(path, options->passwords);
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
