#include "io/progress_line.h"

#include "console.h"

#include <algorithm>
#include <iostream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace command {
namespace {

constexpr std::chrono::milliseconds kFirst(500);
constexpr std::chrono::milliseconds kBetween(100);

std::string_view NameOf(ODF::Progress::Step step) {
    switch (step) {
    case ODF::Progress::Step::Keys:
        return "deriving keys";
    case ODF::Progress::Step::Reading:
        return "reading";
    case ODF::Progress::Step::Writing:
        return "writing";
    case ODF::Progress::Step::Packing:
        return "packing";
    }
    return {};
}

std::size_t TerminalWidth() {
    constexpr std::size_t kCustomary = 80;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kCustomary;
}

} // namespace

ProgressLine::ProgressLine(std::string_view file)
    : file_(Quoted(file)), isOnTerminal_(isatty(STDERR_FILENO) != 0),
      next_(std::chrono::steady_clock::now() + kFirst) {}

ProgressLine::~ProgressLine() {
    if (isShown_) std::cerr << "\r\x1b[K" << std::flush;
}

ODF::ProgressCallback ProgressLine::callback() {
    if (!isOnTerminal_) return {};
    return [this](const ODF::Progress& progress) {
        show(progress);
        return true;
    };
}

void ProgressLine::show(const ODF::Progress& progress) {
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + kBetween;
    isShown_ = true;
    std::string line = std::string(NameOf(progress.step));
    if (progress.total > 0)
        line += ' ' + std::to_string(std::min(progress.done, progress.total) * 100 / progress.total) + " %";
    // The name of the file may be cut; a line that doesn't fit would leave its head behind.
    line += "  " + file_;
    const std::size_t width = TerminalWidth() - 1;
    if (line.size() > width) {
        std::size_t cut = width;
        while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0U) == 0x80)
            --cut;
        line.resize(cut);
    }
    std::cerr << '\r' << line << "\x1b[K" << std::flush;
}

} // namespace command
