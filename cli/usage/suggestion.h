#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace command {

/// The one of `words` that was probably meant by `typed`; empty when none is near.
std::string Nearest(std::string_view typed, const std::vector<std::string>& words);
/// What was wrong with arguments that a parse of `app` has refused, with what may have been meant.
/// `reason` is what the parser says.
std::string UsageFault(const CLI::App& app, const std::string& reason);
/// Names of the subcommands that are shown to people.
std::vector<std::string> VerbNames(const CLI::App& app);
/// "there is no command x; did you mean y?"
std::string UnknownVerb(const CLI::App& app, const std::string& typed);

} // namespace command
