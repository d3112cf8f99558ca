#include "commands.h"
#include "files.h"
#include "info/report.h"
#include "package/kind.h"

namespace command {

void AddInfo(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const info = app.add_subcommand(
        "info",
        "Tells the type, the members, the metadata and the statistics of documents; of Open Packaging files\n"
        "the parts with their content types and relationships");
    const auto files = std::make_shared<Files>();
    files->addOptions(*info);
    info->callback([files, &exitCode] {
        exitCode = files->forEach([&](const std::string& path) {
            return IsOpenPackaging(DetectType(path)) ? ReportOpenPackaging(path)
                                                     : ReportOdf(path, files->passwords);
        });
    });
}

} // namespace command
