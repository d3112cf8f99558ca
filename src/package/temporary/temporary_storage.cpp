#include "package/temporary/temporary_storage.h"

#include "platform/files.h"
#include "platform/temporary.h"

#include <algorithm>

namespace SDPackage {

namespace platform = ODF::platform;

namespace {

bool Contains(const std::vector<platform::Path>& folders, const platform::Path& folder) {
    return std::find(folders.begin(), folders.end(), platform::Absolute(folder)) != folders.end();
}

bool IsTemporary(const platform::Path& folder) {
    const platform::Path directory = platform::TemporaryDirectory();
    return !directory.empty() && platform::Absolute(folder).utf8().starts_with(directory.utf8() + '/');
}

bool HoldsSomething(const platform::Path& folder) {
    bool isEmpty = true;
    platform::Walk(folder, [&](const std::string&, platform::FileKind) { return isEmpty = false; });
    return !isEmpty;
}

} // namespace

TemporaryStorage::~TemporaryStorage() {
    for (const platform::Path& file : files_)
        platform::RemoveFile(file);
    // There is nobody to tell of a fault, such as too many open files for a moment, so it is tried again.
    for (const platform::Path& folder : ownFolders_)
        for (int attempt = 0; attempt < 3 && !platform::RemoveTree(folder);)
            ++attempt;
}

void TemporaryStorage::set(const CTulStringW& folder) {
    folder_ = folder;
    path_ = platform::Path(folder);
}

void TemporaryStorage::own() {
    if (!path_.empty() && !Contains(ownFolders_, path_)) ownFolders_.push_back(platform::Absolute(path_));
}

bool TemporaryStorage::makeFolder() {
    std::unique_ptr<platform::FolderClaim> claim = platform::FolderClaim::create({});
    if (!claim) return false;
    claims_.push_back(std::move(claim));
    set(claims_.back()->folder().text());
    own();
    return true;
}

void TemporaryStorage::takeFolder(const CTulStringW& folder) {
    set(folder);
    if (!HoldsSomething(path_)) own();
}

void TemporaryStorage::borrowFolder(const CTulStringW& folder) {
    set(folder);
    if (!Contains(borrowedFolders_, path_)) borrowedFolders_.push_back(platform::Absolute(path_));
}

void TemporaryStorage::adoptFolder(const CTulStringW& folder, bool isRootFolder) {
    if (folder == folder_) return;
    set(folder);
    if (Contains(borrowedFolders_, path_)) return;
    if ((isRootFolder && IsTemporary(path_)) || !HoldsSomething(path_)) own();
}

platform::Path TemporaryStorage::pathOf(Units name) const {
    return path_ / platform::Path(name);
}

void TemporaryStorage::lock(const CTulStringW& pattern) {
    const platform::Path path(pattern);
    if (platform::IsFile(path)) {
        locked_.push_back(path.text());
        return;
    }
    platform::Walk(path, [&](const std::string& name, platform::FileKind kind) {
        if (kind == platform::FileKind::File) locked_.push_back((path / platform::Path(name)).text());
        return true;
    });
}

bool MoveOver(const platform::Path& from, const platform::Path& target) {
    platform::InputFile source(from);
    platform::ReplacementFile replacement;
    if (!source.isOpen() || !replacement.open(target)) return false;
    std::vector<unsigned char> piece(std::size_t{1} << 18);
    for (std::uint64_t offset = 0;;) {
        const std::ptrdiff_t count = source.readAt(offset, piece.data(), piece.size());
        if (count < 0) return false;
        if (count == 0) break;
        if (!replacement.file().write(piece.data(), static_cast<std::size_t>(count))) return false;
        offset += static_cast<std::uint64_t>(count);
    }
    return replacement.replace() && platform::RemoveFile(from);
}

} // namespace SDPackage
