#pragma once

#include <filesystem>
#include <string>

namespace command {

/// A folder of its own below the temporary directory, gone with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    /// False when it couldn't be made.
    bool isThere() const { return !path_.empty(); }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

} // namespace command
