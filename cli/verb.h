#pragma once

#include "exit_code.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace command {

/// A subcommand that was added, and what its options set.
template<typename Options>
struct Verb {
    CLI::App& verb;
    Options& options; ///< lives as long as the subcommand
};

/// Adds a subcommand. When it is called, `run` gets the options, and what it returns comes into `exitCode`.
template<typename Options>
Verb<Options> AddVerb(CLI::App& app, ExitCode& exitCode, ExitCode (*run)(Options&), const std::string& name,
                      const std::string& about) {
    const auto options = std::make_shared<Options>();
    CLI::App& verb = *app.add_subcommand(name, about);
    verb.callback([options, run, &exitCode] { exitCode = run(*options); });
    return {verb, *options};
}

} // namespace command
