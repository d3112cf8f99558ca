#include "pages/pages.h"
#include "commands.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace command {

void AddPages(CLI::App& app, ExitCode& /*exitCode*/) {
    CLI::App* const verb = app.add_subcommand("pages", "Prints the manual page, or completions for a shell");
    verb->group(""); // for the build
    const auto page = std::make_shared<std::string>();
    verb->add_option("PAGE", *page)->required()->check(CLI::IsMember({"man", "bash", "zsh", "fish"}));
    verb->callback([&app, page] {
        if (*page == "man") WriteManual(app, std::cout);
        if (*page == "bash") WriteBashCompletion(app, std::cout);
        if (*page == "zsh") WriteZshCompletion(app, std::cout);
        if (*page == "fish") WriteFishCompletion(app, std::cout);
    });
}

} // namespace command
