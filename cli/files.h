#pragma once

#include "console.h"
#include "exit_code.h"
#include "io/input.h"
#include "password.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace command {

inline constexpr const char* kStrictHelp = "Refuse archives in which other programs may read another content";
/// Told with `ExitCode::Failure` where the copies that a document asks for are bounded.
inline constexpr const char* kCut = "repeated cells or blanks are too many; some copies are left out";

/// The arguments of a subcommand that works on one file after the other.
struct Files {
    std::vector<std::string> paths;
    Passwords passwords;

    void addOptions(CLI::App& app) {
        app.add_option("FILE", paths, "Documents; - is the standard input")->required()->type_name("");
        passwords.addOptions(app);
    }
    /// Does `work` on each file; one that fails doesn't stop the others. `path` is what to open for the
    /// argument.
    ExitCode
    forEach(const std::function<ExitCode(const std::string& path, const std::string& argument)>& work) {
        if (!passwords.prepare()) return ExitCode::CannotOpen;
        ExitCode worst = ExitCode::Ok;
        for (const std::string& argument : paths) {
            const std::string path = InputPath(argument);
            ExitCode code = ExitCode::Failure;
            try {
                code = path.empty() ? ExitCode::CannotOpen : work(path, argument);
            } catch (const std::bad_alloc&) {
                Complain(path, "out of memory");
            } catch (const std::exception& error) {
                Complain(path, error.what());
            }
            worst = Worst(worst, code);
        }
        return worst;
    }
    ExitCode forEach(const std::function<ExitCode(const std::string& path)>& work) {
        return forEach([&](const std::string& path, const std::string& /*argument*/) { return work(path); });
    }
};

} // namespace command
