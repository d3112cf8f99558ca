#pragma once

#include "exit_code.h"
#include "json.h"

#include <odfmodel/document/format_use.h>

#include <map>
#include <string>
#include <vector>

namespace command {

class Passwords;

/// What readers of an older version don't know in one file.
struct VersionResult {
    std::string path;
    ExitCode code = ExitCode::Ok; ///< `Lost` when there is anything
    std::string error;            ///< why it couldn't be looked at whole
    struct Member {
        std::string version; ///< that it tells; empty for none
        std::vector<ODF::LaterUse> uses;
    };
    std::map<std::string, Member> members; ///< those with trees
};

/// Looks through the trees of a document.
VersionResult CheckVersion(const std::string& path, ODF::FormatVersion version, const Passwords& passwords,
                           bool isStrict);
void PrintReport(const VersionResult& result, ODF::FormatVersion version);
nlohmann::json ToJson(const VersionResult& result);

} // namespace command
