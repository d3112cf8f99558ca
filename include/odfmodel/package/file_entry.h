#pragma once

#include <cstdint>
#include <string>

namespace ODF {

/// A member or folder in the file of a package.
struct FileEntry {
    std::string name;
    std::uint64_t size = 0; ///< plain bytes, as the file claims and as far as so many can come out of it
    bool isFolder = false;
};

} // namespace ODF
