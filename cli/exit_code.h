#pragma once

#include <algorithm>

namespace command {

/// How the command ends. With several files the greatest one counts.
enum class ExitCode : int {
    Ok = 0,
    Lost = 1,        ///< `check`: a round trip loses something; `diff`: the files differ
    Usage = 2,       ///< wrong options or arguments
    CannotOpen = 3,  ///< a file can't be opened, or not be read to its end
    CannotWrite = 4, ///< the output can't be written
    Failure = 5,     ///< anything else, such as lack of memory
};

constexpr ExitCode Worst(ExitCode a, ExitCode b) noexcept {
    return std::max(a, b);
}

} // namespace command
