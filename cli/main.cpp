#include "commands.h"
#include "console.h"
#include "io/input.h"
#include "usage/suggestion.h"

#include <odfmodel/version.h>

#include <CLI/CLI.hpp>

#include <csignal>
#include <exception>
#include <iostream>
#include <new>

namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done, 1 a round trip loses something (check), or files differ\n"
    "(diff), 2 wrong usage, 3 a file can't be opened, or not be read to its end,\n"
    "4 the output can't be written, 5 other failures. With several files the\n"
    "greatest one counts.";

/// In the order of the help: looking, changing, the rest.
constexpr void (*kVerbs[])(CLI::App&, command::ExitCode&) = {
    command::AddInfo,    command::AddText,      command::AddTree,    command::AddMeta,
    command::AddCheck,   command::AddDiff,      command::AddConvert, command::AddNew,
    command::AddReplace, command::AddExtract,   command::AddInsert,  command::AddEncrypt,
    command::AddDecrypt, command::AddRoundtrip, command::AddHelp,    command::AddPages,
};

/// The parser takes an argument in brackets for a list. With a mark before it it is none.
constexpr char kMark = '\x1F';

std::vector<std::string> Marked(int argc, char** argv) {
    std::vector<std::string> arguments;
    for (int i = argc; i-- > 1;) { // the parser wants the last one first
        const std::string_view argument = argv[i];
        const bool isList = argument.starts_with('[') && argument.ends_with(']');
        arguments.emplace_back(isList ? kMark + std::string(argument) : std::string(argument));
    }
    return arguments;
}

void TakeMarksAway(CLI::App& app) {
    for (CLI::App* const verb : app.get_subcommands({}))
        for (CLI::Option* const option : verb->get_options())
            option->transform([](const std::string& text) {
                return text.starts_with(std::string{kMark, '['}) ? text.substr(1) : text;
            });
}

command::ExitCode Run(int argc, char** argv) {
    using command::ExitCode;
    CLI::App app("Looks into OpenDocument files, changes and converts them.", "odfmodel");
    app.set_version_flag("--version", "odfmodel " ODFMODEL_VERSION);
    app.require_subcommand(1);
    app.footer(kExitCodes);
    ExitCode exitCode = ExitCode::Ok;
    for (const auto add : kVerbs)
        add(app, exitCode);
    TakeMarksAway(app);
    try {
        app.parse(Marked(argc, argv));
    } catch (const CLI::Success& success) { // --help and --version
        app.exit(success);
    } catch (const CLI::ParseError& error) {
        const std::vector<CLI::App*> verbs = app.get_subcommands();
        command::Complain({}, command::UsageFault(app, error.what()));
        std::cerr << "Try odfmodel " << (verbs.empty() ? "" : verbs.front()->get_name() + " ") << "--help\n";
        return ExitCode::Usage;
    }
    std::cout.flush();
    if (std::cout) return exitCode;
    if (command::IsReaderGone()) return command::Worst(exitCode, ExitCode::CannotWrite);
    command::Complain({}, "the output can't be written");
    return command::Worst(exitCode, ExitCode::CannotWrite);
}

} // namespace

int main(int argc, char** argv) {
    command::ExitCode exitCode = command::ExitCode::Failure;
    try {
        std::ios::sync_with_stdio(false);
        command::HoldStandardStreams();
        // When the reader of a pipe goes away the write fails, and the program can still clean up.
        std::signal(SIGPIPE, SIG_IGN);
        exitCode = Run(argc, argv);
    } catch (const std::bad_alloc&) {
        command::Complain({}, "out of memory");
    } catch (const std::exception& error) {
        command::Complain({}, error.what());
    }
    return static_cast<int>(exitCode);
}
