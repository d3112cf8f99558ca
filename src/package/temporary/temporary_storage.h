#pragma once

#include "package/paths.h"
#include "platform/temporary.h"

#include <odfmodel/core/string.h>

#include <memory>
#include <vector>

namespace SDPackage {

/// The folder in which a package works, the files next to it, and what has to go with the package.
class TemporaryStorage {
public:
    TemporaryStorage() = default;
    TemporaryStorage(const TemporaryStorage&) = delete;
    TemporaryStorage& operator=(const TemporaryStorage&) = delete;
    /// Deletes the folders and files that are this package's own.
    ~TemporaryStorage();

    /// A new folder that only this user can enter. False when there is no temporary directory; the folder
    /// stays.
    bool makeFolder();
    /// A caller's folder. It becomes the package's own unless it holds something already: a folder with other
    /// people's files is never deleted.
    void takeFolder(const CTulStringW& folder);
    /// A folder that outlives the package.
    void borrowFolder(const CTulStringW& folder);
    /// The folder that a save works in. The root part's own below the temporary directory, where a new
    /// document has put its files, becomes the package's whatever it holds.
    void adoptFolder(const CTulStringW& folder, bool isRootFolder);

    const CTulStringW& folder() const noexcept { return folder_; }
    /// The file of the member `name` below the folder.
    ODF::platform::Path pathOf(Units name) const;

    /// Notes a file that is deleted with the package.
    void keepUntilEnd(ODF::platform::Path file) { files_.push_back(std::move(file)); }

    void lock(const CTulStringW& pattern);
    void unlock() noexcept { locked_.clear(); }
    const std::vector<CTulStringW>& locked() const noexcept { return locked_; }

private:
    void set(const CTulStringW& folder);
    void own();

    CTulStringW folder_;
    ODF::platform::Path path_; // of `folder_`
    std::vector<ODF::platform::Path> ownFolders_;
    std::vector<std::unique_ptr<ODF::platform::FolderClaim>> claims_; ///< on those that were made here
    std::vector<ODF::platform::Path> borrowedFolders_;
    std::vector<ODF::platform::Path> files_;
    std::vector<CTulStringW> locked_;
};

/// Puts the bytes of `from` in the place of `target`, whose access rights stay, and deletes `from`. On a
/// fault both are as they were.
bool MoveOver(const ODF::platform::Path& from, const ODF::platform::Path& target);

} // namespace SDPackage
