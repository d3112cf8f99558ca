#pragma once

#include "platform/files.h"

#include <optional>
#include <string_view>

/// Temporary names. Everything is created exclusively, so that a name which another process has taken or
/// foreseen is never used; the random part comes from the system's generator.
namespace ODF::platform {

/// The system's temporary directory, `TMPDIR` or "/tmp", without a separator at its end; empty when it isn't
/// a folder that can be written.
Path TemporaryDirectory();

/// Creates a new folder, mode 0700, named `stem` and at least four hexadecimal digits, in the temporary
/// directory. Empty when that can't be done.
Path CreateTemporaryFolder(std::string_view stem);

/// Creates a new empty file, mode 0600, named `prefix`, at least `digits` hexadecimal digits and `suffix`, in
/// the temporary directory. Empty when that can't be done.
Path CreateTemporaryFile(std::string_view prefix, std::string_view suffix, unsigned digits = 4);

/// A name of that form that nothing bears at the moment. Creates nothing: prefer the two above.
Path FreeTemporaryName(std::string_view prefix, std::string_view suffix, unsigned digits = 4);

/// A new file beside the one it shall replace. It is deleted again unless `replace` has succeeded.
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

private:
    OutputFile file_;
    Path target_;
    Path name_;
};

} // namespace ODF::platform
