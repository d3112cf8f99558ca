#pragma once

#include <odfmodel/core/diagnostics.h>

#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace command {

/// The options about passwords, and where a password comes from when there are none: the terminal.
class Passwords {
public:
    void addOptions(CLI::App& app);
    /// Reads the password file; false, with a complaint, when that can't be done.
    bool prepare();

    using Attempt = std::function<ODF::Status(const std::string* password)>;
    /// Calls `attempt` with the password of the options, null for none. Asks on the terminal, where there is
    /// one, as long as a password is needed or doesn't fit, three times at most.
    ODF::Status open(const std::string& file, const Attempt& attempt) const;

private:
    std::string text_;
    std::string file_;
    bool isGiven_ = false;
    CLI::App* app_ = nullptr;
};

/// The first line of a file; nothing, with a complaint, when there is none.
std::optional<std::string> ReadPasswordFile(const std::string& path);
/// Asks on the terminal, without showing what is typed; nothing where there is none, or nothing is typed.
std::optional<std::string> AskPassword(const std::string& question);

} // namespace command
