#pragma once

#include "exit_code.h"

namespace CLI {
class App;
} // namespace CLI

namespace command {

// Each adds one subcommand, which leaves how it ended in `exitCode`.
void AddInfo(CLI::App& app, ExitCode& exitCode);
void AddText(CLI::App& app, ExitCode& exitCode);
void AddTree(CLI::App& app, ExitCode& exitCode);
void AddRoundtrip(CLI::App& app, ExitCode& exitCode);
void AddCheck(CLI::App& app, ExitCode& exitCode);

} // namespace command
