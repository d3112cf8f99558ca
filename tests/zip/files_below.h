#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace test {

/// Names of all files below `folder`, relative to it and in order.
inline std::vector<std::string> FilesBelow(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (!entry.is_directory()) names.push_back(std::filesystem::relative(entry.path(), folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace test
