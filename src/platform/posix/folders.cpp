// Walking, filling and removing folders. Everything goes by descriptors relative to the folder above, so that
// a folder which is exchanged for a link at the wrong moment leads nowhere.

#include "platform/files.h"
#include "platform/posix/system_call.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace ODF::platform {

namespace {

using posix::Native;

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

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

/// The entries of a folder in binary order of their names. Takes the descriptor over.
bool ReadEntries(int folder, std::vector<Entry>& entries) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(fdopendir(folder), closedir);
    if (!listing) {
        ::close(folder);
        return false;
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
    return true;
}

/// A folder below `root`, opened step by step. Only one descriptor is held, however deep it lies.
int OpenBelow(int root, const std::string& relative) {
    int folder = ::openat(root, ".", kFolderFlags);
    for (std::size_t start = 0; folder >= 0 && start < relative.size();) {
        auto end = relative.find('/', start);
        if (end == std::string::npos) end = relative.size();
        const int next = ::openat(folder, relative.substr(start, end - start).c_str(), kFolderFlags);
        ::close(folder);
        folder = next;
        start = end + 1;
    }
    return folder;
}

bool IsNameFault(int error) noexcept {
    return error == ENAMETOOLONG || error == ENOTDIR || error == EISDIR || error == EEXIST ||
           error == EINVAL || error == EILSEQ || error == ELOOP || error == ENOENT || error == ENXIO ||
           error == ENOTEMPTY;
}

class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int get() const noexcept { return number_; }

private:
    int number_;
};

} // namespace

bool Walk(const Path& folder, const WalkVisitor& visit) {
    const Descriptor root(::open(Native(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (root.get() < 0) return false;
    // A list of what is still to be visited instead of a recursion: nesting has no bound.
    std::vector<Entry> pending;
    const auto enter = [&](const std::string& relative) {
        const int opened = OpenBelow(root.get(), relative);
        std::vector<Entry> entries;
        if (opened < 0 || !ReadEntries(opened, entries)) return false;
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            if (!relative.empty()) entry->name.insert(0, relative + '/');
            pending.push_back(std::move(*entry));
        }
        return true;
    };
    if (!enter({})) return false;
    while (!pending.empty()) {
        const Entry entry = std::move(pending.back());
        pending.pop_back();
        if (!visit(entry.name, entry.kind)) return true;
        if (entry.kind == FileKind::Folder) enter(entry.name);
    }
    return true;
}

bool RemoveTree(const Path& tree) {
    // With a separator at its end the name of a link would mean the folder behind it.
    const auto end = tree.utf8().find_last_not_of('/');
    const Path folder(tree.utf8().substr(0, end == std::string::npos ? 0 : end + 1));
    const FileKind kind = KindAt(AT_FDCWD, Native(folder));
    if (kind == FileKind::None) return true;
    if (kind != FileKind::Folder) return RemoveFile(folder);

    // A folder that its owner may not change or enter is opened up first.
    const auto makeAccessible = [](int parent, const char* name) {
        const Descriptor opened(::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (opened.get() < 0) return;
        const std::string self = "/proc/self/fd/" + std::to_string(opened.get());
        if (chmod(self.c_str(), 0700) != 0) fchmodat(parent, name, 0700, 0);
    };
    makeAccessible(AT_FDCWD, Native(folder));
    {
        const Descriptor root(::open(Native(folder), kFolderFlags));
        if (root.get() < 0) return false;
        // Folders are emptied on the way down and removed on the way back.
        std::vector<std::string> folders{std::string()};
        for (std::size_t next = 0; next < folders.size(); ++next) {
            const std::string relative = folders[next];
            const Descriptor opened(OpenBelow(root.get(), relative));
            if (opened.get() < 0) continue;
            std::vector<Entry> entries;
            ReadEntries(::openat(opened.get(), ".", kFolderFlags), entries);
            for (const Entry& entry : entries) {
                if (entry.kind == FileKind::Folder) {
                    makeAccessible(opened.get(), entry.name.c_str());
                    folders.push_back(relative.empty() ? entry.name : relative + '/' + entry.name);
                } else {
                    unlinkat(opened.get(), entry.name.c_str(), 0);
                }
            }
        }
        for (auto relative = folders.rbegin(); relative != folders.rend() && !relative->empty(); ++relative) {
            const auto slash = relative->rfind('/');
            const bool isNested = slash != std::string::npos;
            const Descriptor above(
                OpenBelow(root.get(), isNested ? relative->substr(0, slash) : std::string()));
            const std::string name = isNested ? relative->substr(slash + 1) : *relative;
            if (above.get() >= 0) unlinkat(above.get(), name.c_str(), AT_REMOVEDIR);
        }
    }
    return rmdir(Native(folder)) == 0;
}

bool FolderWriter::open(const Path& folder) {
    close();
    descriptor_ = ::open(Native(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return descriptor_ >= 0;
}

void FolderWriter::close() noexcept {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

int FolderWriter::openParent(std::span<const std::string> steps) {
    int folder = ::openat(descriptor_, ".", kFolderFlags);
    for (const std::string& step : steps) {
        if (folder < 0) break;
        const char* const name = Native(step);
        int next = ::openat(folder, name, kFolderFlags);
        if (next < 0 && errno == ENOENT && mkdirat(folder, name, 0700) == 0)
            next = ::openat(folder, name, kFolderFlags);
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
    // What stands there is taken away, not written through: it may be a link, or one name of several of a
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
