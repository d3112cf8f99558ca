#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace command {

/// One option of a subcommand as the pages tell it.
struct OptionText {
    std::vector<std::string> names; ///< such as "-o" and "--output"; empty for a positional one
    std::string value;              ///< what stands for its value, such as "OUT"; empty for a flag
    std::string about;              ///< on one line
    bool takesFile = false;
};

struct VerbText {
    std::string name;
    std::string about; ///< on one line
    std::string usage; ///< what follows the name, such as "[OPTIONS] FILE..."
    std::vector<OptionText> options;
    std::vector<OptionText> arguments;
};

/// The subcommands that are shown to people, in their order.
std::vector<VerbText> VerbsOf(const CLI::App& app);

} // namespace command
