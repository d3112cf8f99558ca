#include "commands.h"
#include "console.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <exception>
#include <iostream>
#include <new>

namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done, 1 a round trip loses something (check), 2 wrong usage,\n"
    "3 a file can't be opened, or not be read to its end, 4 the output can't be\n"
    "written, 5 other failures. With several files the greatest one counts.";

command::ExitCode Run(int argc, char** argv) {
    using command::ExitCode;
    CLI::App app("Looks into OpenDocument files and writes them anew.", "odfmodel");
    app.set_version_flag("--version", "odfmodel " ODFMODEL_COMMAND_VERSION);
    app.require_subcommand(1);
    app.footer(kExitCodes);
    ExitCode exitCode = ExitCode::Ok;
    command::AddInfo(app, exitCode);
    command::AddText(app, exitCode);
    command::AddTree(app, exitCode);
    command::AddRoundtrip(app, exitCode);
    command::AddCheck(app, exitCode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) { // --help and --version
        app.exit(success);
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> rest = app.remaining();
        const bool isUnknown = app.get_subcommands().empty() && !rest.empty();
        command::Complain({}, isUnknown ? "there is no command or option " + rest.front() : error.what());
        std::cerr << "Try odfmodel --help\n";
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
