#pragma once

#include <string>

namespace command {

/// What stands for the standard input and output among the arguments.
inline constexpr const char* kStandardStream = "-";

/// The path to open for an argument: for "-" one that gives the standard input from its start as often as it
/// is opened. What comes by a pipe is read into memory for that, up to the library's bound on files. Empty,
/// with a complaint, when that can't be done.
std::string InputPath(const std::string& argument);

/// Puts something that can't be read or written in the place of closed standard streams, so that no file that
/// is opened gets their numbers, and with them what is printed.
void HoldStandardStreams();

} // namespace command
