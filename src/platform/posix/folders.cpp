// Walking, filling and removing folders. Everything goes by descriptors relative to the folder above, so that
// a folder which is exchanged for a link at the wrong moment leads nowhere.

#include "platform/files.h"
#include "platform/posix/system_call.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string_view>

namespace ODF::platform {

namespace {

using posix::Native;

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Opens a name of a folder for reading; a signal doesn't end it.
int OpenAt(int folder, const char* name, int flags) noexcept {
    return posix::Retry([&] { return ::openat(folder, name, flags); });
}

struct Entry {
    std::string name;
    FileKind kind = FileKind::Other;
};

FileKind KindAt(int folder, const char* name) noexcept {
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return FileKind::None;
    if (S_ISREG(status.st_mode)) return FileKind::File;
    if (S_ISDIR(status.st_mode)) return FileKind::Folder;
    return S_ISLNK(status.st_mode) ? FileKind::Link : FileKind::Other;
}

class Descriptor {
public:
    explicit Descriptor(int number = -1) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int get() const noexcept { return number_; }
    bool isOpen() const noexcept { return number_ >= 0; }

private:
    int number_;
};

/// The entries of a folder in binary order of their names; none when it can't be read.
std::vector<Entry> ReadEntries(int folder) {
    std::vector<Entry> entries;
    const int own = OpenAt(folder, ".", kFolderFlags);
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(own < 0 ? nullptr : fdopendir(own), closedir);
    if (!listing) {
        const bool isOutOfMemory = errno == ENOMEM;
        if (own >= 0) ::close(own);
        if (isOutOfMemory) throw std::bad_alloc();
        return entries;
    }
    while (const dirent* found = readdir(listing.get())) { // NOLINT(concurrency-mt-unsafe): own DIR object
        const std::string_view name = found->d_name;
        if (name == "." || name == "..") continue;
        FileKind kind = FileKind::Other;
        if (found->d_type == DT_REG)
            kind = FileKind::File;
        else if (found->d_type == DT_DIR)
            kind = FileKind::Folder;
        else if (found->d_type == DT_LNK)
            kind = FileKind::Link;
        else if (found->d_type == DT_UNKNOWN)
            kind = KindAt(folder, found->d_name);
        entries.push_back({std::string(name), kind});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

bool IsNameFault(int error) noexcept {
    return error == ENAMETOOLONG || error == ENOTDIR || error == EISDIR || error == EEXIST ||
           error == EINVAL || error == EILSEQ || error == ELOOP || error == ENOENT || error == ENXIO ||
           error == ENOTEMPTY;
}

/// A place in a tree that holds few descriptors however deep it lies, and costs the same to leave as to
/// enter.
class Place {
public:
    explicit Place(int root) noexcept : root_(root), folder_(OpenAt(root, ".", kFolderFlags)) {}

    int folder() const noexcept { return folder_.get(); }

    /// Goes into a folder, never through a link.
    bool enter(const std::string& name) {
        struct stat status {};
        Descriptor next(OpenAt(folder_.get(), name.c_str(), kFolderFlags));
        if (!next.isOpen() || fstat(folder_.get(), &status) != 0) return false;
        above_.push_back({name, status.st_dev, status.st_ino});
        folder_ = std::move(next);
        return true;
    }

    /// Goes back to the folder above. When this one was moved meanwhile, its ".." leads elsewhere; the way
    /// from the root down is taken then.
    bool leave() {
        const Step step = std::move(above_.back());
        above_.pop_back();
        struct stat status {};
        Descriptor parent(OpenAt(folder_.get(), "..", kFolderFlags));
        const bool isRight = parent.isOpen() && fstat(parent.get(), &status) == 0 &&
                             status.st_dev == step.device && status.st_ino == step.inode;
        if (!isRight) {
            parent = Descriptor(OpenAt(root_, ".", kFolderFlags));
            for (const Step& down : above_)
                parent = Descriptor(OpenAt(parent.get(), down.name.c_str(), kFolderFlags));
        }
        folder_ = std::move(parent);
        return folder_.isOpen();
    }

private:
    struct Step {
        std::string name;
        dev_t device; ///< of the folder that holds it
        ino_t inode;
    };

    int root_;
    Descriptor folder_;
    std::vector<Step> above_;
};

/// Calls `before` for each entry below `root`, with the folder's descriptor and the path from the root, and
/// `after` for each folder that was entered once it is done. Ends early when `before` gives false. No
/// recursion: nesting has no bound.
template<typename Before, typename After>
void Traverse(int root, Before before, After after) {
    struct Level {
        std::vector<Entry> entries;
        std::size_t next = 0;
        std::size_t pathLength = 0;
    };
    Place place(root);
    std::string path;
    std::vector<Level> levels(1);
    levels.back().entries = ReadEntries(place.folder());
    for (;;) {
        Level& level = levels.back();
        path.resize(level.pathLength);
        if (level.next == level.entries.size()) {
            levels.pop_back();
            if (levels.empty() || !place.leave()) return;
            after(place.folder(), levels.back().entries[levels.back().next - 1].name);
            continue;
        }
        const Entry& entry = level.entries[level.next++];
        path.append(path.empty() ? "" : "/").append(entry.name);
        if (!before(place.folder(), path, entry)) return;
        if (entry.kind != FileKind::Folder || !place.enter(entry.name)) continue;
        levels.push_back({ReadEntries(place.folder()), 0, path.size()});
    }
}

/// Opens up a folder that its owner may not change or enter.
void MakeAccessible(int parent, const char* name) {
    const Descriptor opened(OpenAt(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened.isOpen()) return;
    const std::string self = "/proc/self/fd/" + std::to_string(opened.get());
    if (chmod(self.c_str(), 0700) != 0) fchmodat(parent, name, 0700, 0);
}

} // namespace

bool Walk(const Path& folder, const WalkVisitor& visit) {
    const Descriptor root(OpenAt(AT_FDCWD, Native(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!root.isOpen()) return false;
    Traverse(
        root.get(), [&](int, const std::string& path, const Entry& entry) { return visit(path, entry.kind); },
        [](int, const std::string&) {});
    return true;
}

namespace {

bool RemoveWholeTree(const Path& tree) {
    // With a separator at its end the name of a link would mean the folder behind it.
    const auto end = tree.utf8().find_last_not_of('/');
    const Path folder(tree.utf8().substr(0, end == std::string::npos ? 0 : end + 1));
    const FileKind kind = KindAt(AT_FDCWD, Native(folder));
    if (kind == FileKind::None) return true;
    if (kind != FileKind::Folder) return RemoveFile(folder);
    MakeAccessible(AT_FDCWD, Native(folder));
    {
        const Descriptor root(OpenAt(AT_FDCWD, Native(folder), kFolderFlags));
        if (!root.isOpen()) return false;
        Traverse(
            root.get(),
            [](int parent, const std::string&, const Entry& entry) {
                if (entry.kind == FileKind::Folder)
                    MakeAccessible(parent, entry.name.c_str());
                else
                    unlinkat(parent, entry.name.c_str(), 0);
                return true;
            },
            [](int parent, const std::string& name) { unlinkat(parent, name.c_str(), AT_REMOVEDIR); });
    }
    return rmdir(Native(folder)) == 0;
}

} // namespace

namespace {

/// Deletes what a folder holds but for folders that hold something themselves, of which `left` gets the name
/// of one. True when anything was deleted. Nothing is allocated.
bool Empty(int folder, std::span<char> left) noexcept {
    alignas(std::uint64_t) std::array<char, 8192> entries{};
    bool isSmaller = false;
    left.front() = '\0';
    for (;;) {
        const long count = syscall(SYS_getdents64, folder, entries.data(), entries.size());
        if (count <= 0) return isSmaller;
        for (long at = 0; at < count;) {
            std::uint16_t length = 0;
            std::memcpy(&length, entries.data() + at + 16, sizeof length);
            const char* const name = entries.data() + at + 19;
            at += length;
            const std::string_view text(name);
            if (text == "." || text == "..") continue;
            if (unlinkat(folder, name, 0) == 0 || unlinkat(folder, name, AT_REMOVEDIR) == 0)
                isSmaller = true;
            else if (text.size() < left.size())
                left[text.copy(left.data(), left.size() - 1)] = '\0';
        }
    }
}

/// What is left to do when there is no memory: from the top down to a folder without folders, again and
/// again.
bool RemoveWithoutMemory(const char* tree) noexcept {
    for (bool isSmaller = true; isSmaller;) {
        if (rmdir(tree) == 0 || errno == ENOENT) return true;
        isSmaller = false;
        Descriptor folder(OpenAt(AT_FDCWD, tree, kFolderFlags));
        std::array<char, kMaxName + 1> left{};
        while (folder.isOpen()) {
            isSmaller = Empty(folder.get(), left) || isSmaller;
            if (left.front() == '\0') break;
            MakeAccessible(folder.get(), left.data());
            folder = Descriptor(OpenAt(folder.get(), left.data(), kFolderFlags));
        }
    }
    return false;
}

} // namespace

bool RemoveTree(const Path& tree) noexcept {
    try {
        return RemoveWholeTree(tree);
    } catch (const std::bad_alloc&) { // destructors come here, perhaps because there was no memory
        return RemoveWithoutMemory(Native(tree));
    }
}

bool FolderWriter::open(const Path& folder) {
    close();
    descriptor_ = OpenAt(AT_FDCWD, Native(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return descriptor_ >= 0;
}

void FolderWriter::close() noexcept {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

int FolderWriter::openParent(std::span<const std::string> steps) {
    int folder = OpenAt(descriptor_, ".", kFolderFlags);
    for (const std::string& step : steps) {
        if (folder < 0) break;
        const char* const name = Native(step);
        int next = OpenAt(folder, name, kFolderFlags);
        if (next < 0 && errno == ENOENT && mkdirat(folder, name, 0700) == 0)
            next = OpenAt(folder, name, kFolderFlags);
        isNameFault_ = next < 0 && IsNameFault(errno);
        ::close(folder);
        folder = next;
    }
    return folder;
}

OutputFile FolderWriter::createFile(std::span<const std::string> steps) {
    OutputFile file;
    if (steps.empty()) return file;
    const Descriptor folder(openParent(steps.first(steps.size() - 1)));
    if (folder.get() < 0) return file;
    const char* const name = Native(steps.back());
    const auto create = [&] {
        return posix::Retry([&] {
            return ::openat(folder.get(), name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        });
    };
    file.descriptor_ = create();
    // What is there is taken away, not written through: it may be a link, or one name of several of a
    // file.
    if (file.descriptor_ < 0 && errno == EEXIST && unlinkat(folder.get(), name, 0) == 0)
        file.descriptor_ = create();
    isNameFault_ = file.descriptor_ < 0 && IsNameFault(errno);
    return file;
}

bool FolderWriter::createFolder(std::span<const std::string> steps) {
    return Descriptor(openParent(steps)).get() >= 0;
}

} // namespace ODF::platform
