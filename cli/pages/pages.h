#pragma once

#include <ostream>

namespace CLI {
class App;
} // namespace CLI

namespace command {

// What is made of the definitions of the subcommands and their options when the command is built.

/// The manual page, odfmodel(1).
void WriteManual(const CLI::App& app, std::ostream& out);
void WriteBashCompletion(const CLI::App& app, std::ostream& out);
void WriteZshCompletion(const CLI::App& app, std::ostream& out);
void WriteFishCompletion(const CLI::App& app, std::ostream& out);

} // namespace command
