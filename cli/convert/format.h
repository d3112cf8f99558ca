#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace command {

enum class Format { Text, Markdown, Html, Csv, Flat, Package };

struct Target {
    Format format;
    std::string extension; ///< as it was asked for, such as "fods"; empty for a form of any document
};

/// What a word of --to or the extension of a file asks for; nothing for one that isn't known.
std::optional<Target> TargetOf(std::string_view word);
/// Whether a file of that extension is read as comma-separated values.
bool IsCsvName(std::string_view name);
/// The words for the help.
std::vector<std::string> TargetWords();

} // namespace command
