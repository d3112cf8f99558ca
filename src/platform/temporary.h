#pragma once

#include "platform/files.h"

#include <memory>
#include <optional>
#include <string_view>

/// Temporary names. Everything is created exclusively, so that a name which another process has taken or
/// foreseen is never used; the random part comes from the system's generator.
namespace ODF::platform {

/// The system's temporary directory, `TMPDIR` or "/tmp", without a separator at its end; empty when it isn't
/// a folder that can be written.
Path TemporaryDirectory();
/// What it is called in a message, also when it can't be used.
std::string TemporaryDirectoryName();

/// Creates a new empty file, mode 0600, named `prefix`, at least `digits` hexadecimal digits and `suffix`, in
/// the temporary directory. Empty when that can't be done.
Path CreateTemporaryFile(std::string_view prefix, std::string_view suffix, unsigned digits = 4);

/// A name of that form that nothing bears at the moment. Creates nothing: prefer the two above.
Path FreeTemporaryName(std::string_view prefix, std::string_view suffix, unsigned digits = 4);

/// A temporary folder and the claim on it: a record in a folder of this user's, ".odfmodel-<user>" in "/tmp",
/// which tells other processes that the folder is in use as long as this process lives and holds the claim.
/// What a killed process has left is found by it.
class FolderClaim {
public:
    /// Creates the folder, mode 0700, named `stem` and at least four hexadecimal digits, and removes the
    /// folders of processes that were killed. Null when it can't be created.
    static std::unique_ptr<FolderClaim> create(std::string_view stem);
    FolderClaim(const FolderClaim&) = delete;
    FolderClaim& operator=(const FolderClaim&) = delete;
    /// Gives up the claim. A folder that is still there goes when the next one is made.
    ~FolderClaim();

    const Path& folder() const noexcept { return folder_; }

private:
    FolderClaim() = default;
    void makeRecord(const Path& directory);

    Path folder_;
    Path records_; ///< the folder of all records
    Path record_;
    bool hasRecord_ = false;
    std::string told_; ///< what the record says
    OutputFile file_;
};

/// A new file next to the one it shall replace. It is deleted again unless `replace` has succeeded; where the
/// file system can, it has no name until then, so that nothing is left of it when the process is killed.
class ReplacementFile {
public:
    ReplacementFile() = default;
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;
    ~ReplacementFile() { discard(); }

    /// Creates the file in the folder of `target`, with the access rights of the present target or those of
    /// any new file. False when the folder is missing or can't be written, or when `target` is no regular
    /// file.
    bool open(const Path& target);
    OutputFile& file() noexcept { return file_; }
    const Path& target() const noexcept { return target_; }
    /// Closes the file and moves it over the target, which stays as it was on any fault.
    bool replace();
    void discard() noexcept;
    /// What of the present target the new file doesn't have, in English; null for nothing.
    const char* loss() const noexcept { return loss_; }

private:
    OutputFile file_;
    Path target_;
    Path name_; ///< empty for a file without one
    const char* loss_ = nullptr;
};

} // namespace ODF::platform
