#pragma once

#include "check/finding.h"
#include "exit_code.h"

#include <map>
#include <string>
#include <vector>

namespace command {

class Passwords;

/// What a round trip does to one file.
struct CheckResult {
    std::string path;
    ExitCode code = ExitCode::Ok;            ///< `Lost` when anything is
    std::string error;                       ///< why it couldn't be checked
    std::map<std::string, Findings> members; ///< members that something was found about
    std::vector<std::string> notes;          ///< what the library had to say while it opened the file
};

/// The round trip that is checked.
enum class Trip {
    Full,  ///< by the document that keeps everything
    Listed ///< by the plain model
};

/// Opens the document, saves it and compares both files member by member. Passwords are asked for as need be.
/// `isStrict` refuses archives that other programs may read otherwise.
CheckResult CheckPackage(const std::string& path, Trip trip, const Passwords& passwords, bool isStrict);

} // namespace command
