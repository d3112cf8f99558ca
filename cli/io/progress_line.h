#pragma once

#include <odfmodel/core/progress.h>

#include <chrono>
#include <string>
#include <string_view>

namespace command {

/// One line on a terminal that tells how far long work has come. It appears after half a second, is kept up
/// ten times a second at most, and goes with this object. Where the standard error stream is no terminal
/// there is none.
class ProgressLine {
public:
    explicit ProgressLine(std::string_view file);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    /// For the options of an open or a save; empty where there is no line. It must not outlive this object.
    ODF::ProgressCallback callback();

private:
    void show(const ODF::Progress& progress);

    std::string file_;
    bool isOnTerminal_;
    bool isShown_ = false;
    std::chrono::steady_clock::time_point next_;
};

} // namespace command
