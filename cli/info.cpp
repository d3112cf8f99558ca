#include "commands.h"
#include "files.h"
#include "info/report.h"
#include "package/kind.h"
#include "verb.h"

namespace command {
namespace {

ExitCode Run(Files& files) {
    return files.forEach([&](const std::string& path) {
        return IsOpenPackaging(DetectType(path)) ? ReportOpenPackaging(path)
                                                 : ReportOdf(path, files.passwords);
    });
}

} // namespace

void AddInfo(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<Files>(
        app, exitCode, Run, "info",
        "Tells the type, the members, the metadata and the statistics of documents; of Open Packaging files\n"
        "the parts with their content types and relationships");
    options.addOptions(verb);
}

} // namespace command
