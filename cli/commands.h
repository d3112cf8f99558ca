#pragma once

#include "exit_code.h"

namespace CLI {
class App;
} // namespace CLI

namespace command {

// Each adds one subcommand, which leaves how it ended in `exitCode`.
void AddCheck(CLI::App& app, ExitCode& exitCode);
void AddConvert(CLI::App& app, ExitCode& exitCode);
void AddDecrypt(CLI::App& app, ExitCode& exitCode);
void AddDiff(CLI::App& app, ExitCode& exitCode);
void AddEncrypt(CLI::App& app, ExitCode& exitCode);
void AddExtract(CLI::App& app, ExitCode& exitCode);
void AddHelp(CLI::App& app, ExitCode& exitCode);
void AddInfo(CLI::App& app, ExitCode& exitCode);
void AddInsert(CLI::App& app, ExitCode& exitCode);
void AddMeta(CLI::App& app, ExitCode& exitCode);
void AddNew(CLI::App& app, ExitCode& exitCode);
void AddPages(CLI::App& app, ExitCode& exitCode);
void AddReplace(CLI::App& app, ExitCode& exitCode);
void AddRoundtrip(CLI::App& app, ExitCode& exitCode);
void AddText(CLI::App& app, ExitCode& exitCode);
void AddTree(CLI::App& app, ExitCode& exitCode);

} // namespace command
