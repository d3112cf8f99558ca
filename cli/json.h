#pragma once

#include <nlohmann/json.hpp>

#include <ostream>

namespace command {

inline constexpr const char* kJsonHelp = "Print one JSON document for all files";

/// Prints a JSON document, escaped down to ASCII: whatever files hold, a terminal sees no control character.
inline void PrintJson(const nlohmann::json& json, std::ostream& out) {
    out << json.dump(2, ' ', true, nlohmann::json::error_handler_t::replace) << '\n';
}

} // namespace command
