#pragma once

#include <odfmodel/package/package.h>

#include <string>

namespace command {

/// A folder of its own below the temporary directory, gone with the object; after a kill, with the next run.
class ScratchFolder {
public:
    ScratchFolder();

    /// False when it couldn't be made.
    bool isThere() const { return !path_.empty(); }
    std::string file(const std::string& name) const { return path_ + '/' + name; }

private:
    SDPackage::IPackage owner_;
    std::string path_;
};

} // namespace command
