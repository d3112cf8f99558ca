#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace test {

/// How a program ended.
struct Ending {
    int code =
        -1; ///< exit code; -1 when it couldn't be started, was stopped for its time or ended by a signal
    bool isTimeout = false;
    std::string output; ///< of both streams
};

/// Runs a program, found by `PATH`, to its end or until its time is over; then it goes with all that it
/// started.
Ending Run(const std::vector<std::string>& command, std::chrono::seconds time);
/// True when a program of that name can be found.
bool HasProgram(const std::string& name);

} // namespace test
