#include "commands.h"
#include "console.h"
#include "usage/suggestion.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace command {

void AddHelp(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const help = app.add_subcommand("help", "Tells what a command does, and its options");
    const auto verb = std::make_shared<std::string>();
    help->add_option("COMMAND", *verb, "Command to tell of; all without one")->type_name("");
    help->callback([&app, verb, &exitCode] {
        const auto isIt = [&](const CLI::App* other) { return other->get_name() == *verb; };
        const std::vector<const CLI::App*> found = std::as_const(app).get_subcommands(isIt);
        if (!verb->empty() && found.empty()) {
            Complain({}, UnknownVerb(app, *verb));
            exitCode = ExitCode::Usage;
            return;
        }
        const CLI::App* const about = verb->empty() ? &app : found.front();
        std::cout << app.get_formatter()->make_help(about, verb->empty() ? "odfmodel" : "odfmodel " + *verb,
                                                    CLI::AppFormatMode::Normal);
    });
}

} // namespace command
