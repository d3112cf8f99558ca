#pragma once

#include "platform/path.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// Files and folders. No function throws for what the system refuses (only for want of memory), and none
/// follows a symbolic link unless it says so.
namespace ODF::platform {

enum class FileKind { None, File, Folder, Link, Other };

/// What is at `path`; a link is followed, so `Link` never comes out of here.
FileKind KindOf(const Path& path);
bool Exists(const Path& path);
/// Whether the name is taken, be it by a link that leads nowhere.
bool IsTaken(const Path& path);
bool IsFile(const Path& path);
bool IsFolder(const Path& path);
/// Whether this process may read a file or folder at `path`.
bool IsReadable(const Path& path);
/// What the last call that the system refused says of the cause, in words.
std::string LastFault();

/// How many names the file at `path` has; 0 when there is none.
std::uint64_t NameCount(const Path& path);
/// Bytes of the regular file at `path`.
std::optional<std::uint64_t> FileSize(const Path& path);

/// Reads a regular file whole; nothing when it can't be read or is larger than `maximum`.
std::optional<std::vector<unsigned char>> ReadFile(const Path& path, std::uint64_t maximum = UINT64_MAX);
/// Creates or overwrites a file. False when not every byte arrived.
bool WriteFile(const Path& path, std::span<const unsigned char> data);
bool WriteFile(const Path& path, std::string_view data);
/// Adds `data` at the end of the file, which is created when it isn't there.
bool AppendFile(const Path& path, std::string_view data);

/// Makes one folder. True also when it is there already.
bool CreateFolder(const Path& path);
/// Makes the folder with its missing parents; with `isPrivate` all new ones get mode 0700.
bool CreateFolders(const Path& path, bool isPrivate = false);

/// Moves a file, replacing what is at `to`. False across file systems.
bool RenameReplacing(const Path& from, const Path& to);
/// Moves a file; across file systems it is copied, flushed and then deleted.
bool MoveReplacing(const Path& from, const Path& to);
/// Waits until the names in a folder are on the medium, as far as its file system can do that.
void FlushFolder(const Path& folder) noexcept;
/// Deletes one file or link.
bool RemoveFile(const Path& path);
/// Deletes a folder with all that is in it, read-only and dot entries too. True when nothing is left.
bool RemoveTree(const Path& folder) noexcept;

/// Calls `visit` for everything below `folder`, in the binary order of names, a folder before what it holds.
/// `relative` has `/` between folders. The walk ends early when `visit` gives false. False when `folder`
/// can't be read. Links are reported as such and never entered.
using WalkVisitor = std::function<bool(const std::string& relative, FileKind kind)>;
bool Walk(const Path& folder, const WalkVisitor& visit);

/// An open file for reading at any place.
class InputFile {
public:
    InputFile() noexcept = default;
    explicit InputFile(const Path& path) { open(path); }
    InputFile(InputFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    InputFile& operator=(InputFile&& other) noexcept;
    ~InputFile() { close(); }

    /// Opens a regular file; links are followed.
    bool open(const Path& path);
    void close() noexcept;
    bool isOpen() const noexcept { return descriptor_ >= 0; }
    std::uint64_t size() const noexcept;
    /// Reads up to `byteCount` bytes at `offset`: fewer only at the end of the file, -1 on a fault.
    std::ptrdiff_t readAt(std::uint64_t offset, void* buffer, std::size_t byteCount) const noexcept;

private:
    int descriptor_ = -1;
};

/// An open file for writing, and for reading back what was written.
class OutputFile {
public:
    OutputFile() noexcept = default;
    OutputFile(OutputFile&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)), isPipe_(other.isPipe_) {}
    OutputFile& operator=(OutputFile&& other) noexcept;
    ~OutputFile() { close(); }

    /// Creates or empties the file at `path`; links are followed.
    bool create(const Path& path);
    /// Creates a file that isn't there yet, with the given mode less the process's mask.
    bool createNew(const Path& path, unsigned mode = 0666);
    /// Opens a file that is there, without changing it; links aren't followed.
    bool openPresent(const Path& path);
    /// A file without a name in the temporary directory, gone when it is closed.
    bool createNameless();
    /// The same in `folder`, with the given mode less the process's mask; `giveName` can keep it. False where
    /// the file system doesn't know such files.
    bool createNameless(const Path& folder, unsigned mode);
    /// Gives a file without a name one that is free.
    bool giveName(const Path& name) noexcept;
    bool isOpen() const noexcept { return descriptor_ >= 0; }
    /// Appends at the current end. False when not every byte was taken.
    bool write(const void* data, std::size_t byteCount) noexcept;
    bool writeAt(std::uint64_t offset, const void* data, std::size_t byteCount) noexcept;
    std::ptrdiff_t readAt(std::uint64_t offset, void* buffer, std::size_t byteCount) const noexcept;
    /// Gives the file the access rights, and as far as allowed the owner, of the file at `path`.
    void takeModeOf(const Path& path) noexcept;
    /// Gives it the extended attributes of that file; false when there is one that it can't have.
    bool takeAttributesOf(const Path& path);
    /// Claims the file for this process as long as it is open. False when another process, or another open
    /// file of this one, has it.
    bool claim() noexcept;
    /// Waits until the bytes are on the medium.
    bool flushToDisk() noexcept;
    /// False when the system reports a late write error.
    bool close() noexcept;

private:
    friend class FolderWriter;
    int descriptor_ = -1;
    bool isPipe_ = false;
};

/// A file's bytes mapped for reading. An empty file maps to an empty span.
class MappedFile {
public:
    MappedFile() noexcept = default;
    explicit MappedFile(const Path& path) { open(path); }
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    ~MappedFile() { close(); }

    bool open(const Path& path);
    void close() noexcept;
    bool isOpen() const noexcept { return isOpen_; }
    std::span<const unsigned char> bytes() const noexcept { return bytes_; }

private:
    std::span<const unsigned char> bytes_;
    bool isOpen_ = false;
};

/// Creates files and folders strictly below one folder: every step is opened relative to the one before and
/// no link is followed, so that nothing ends outside whatever is in the folder.
class FolderWriter {
public:
    FolderWriter() noexcept = default;
    FolderWriter(const FolderWriter&) = delete;
    FolderWriter& operator=(const FolderWriter&) = delete;
    ~FolderWriter() { close(); }

    bool open(const Path& folder);
    void close() noexcept;
    /// Creates the file `steps`, the last being its name, with missing folders (mode 0700). What stands in
    /// its place is replaced, unless it is a folder. An `OutputFile` that isn't open tells of failure.
    OutputFile createFile(std::span<const std::string> steps);
    /// Creates the folder `steps`; true also when it is there already.
    bool createFolder(std::span<const std::string> steps);
    /// Whether the last creation failed for what the name is or for what is there already, and not
    /// because the medium is full or can't be written.
    bool isNameFault() const noexcept { return isNameFault_; }

private:
    int openParent(std::span<const std::string> steps);
    int descriptor_ = -1;
    bool isNameFault_ = false;
};

/// The longest name of one file or folder, in bytes of UTF-8.
inline constexpr std::size_t kMaxName = 255;
/// The longest path that the system takes, in bytes of UTF-8 with the terminator.
inline constexpr std::size_t kMaxPath = 4096;

/// Where a file that replaces `target` belongs: `target` with links at its end followed, so that the file
/// behind a link is replaced and not the link. Empty when the links lead in a circle.
Path ResolveLinks(const Path& target);

} // namespace ODF::platform
