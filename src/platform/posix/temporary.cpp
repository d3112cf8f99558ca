#include "platform/temporary.h"

#include "platform/environment.h"
#include "platform/posix/system_call.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <random>

namespace ODF::platform {

namespace {

using posix::Native;

std::uint64_t RandomNumber() {
    std::uint64_t number = 0;
    if (posix::Retry([&] { return getrandom(&number, sizeof number, 0); }) == sizeof number) return number;
    std::random_device device;
    return std::uint64_t{device()} << 32U | device();
}

std::string RandomDigits(unsigned count) {
    std::string digits;
    while (digits.size() < count) {
        std::uint64_t number = RandomNumber();
        for (int place = 0; place < 16 && digits.size() < count; ++place, number >>= 4U)
            digits += "0123456789abcdef"[number & 15U];
    }
    return digits;
}

/// The longest start of `text` that fits, not cut inside a UTF-8 sequence and without what would name a
/// folder.
std::string Fitting(std::string_view text, std::size_t length) {
    if (text.size() > length) {
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U)
            --length;
        text = text.substr(0, length);
    }
    std::string result(text);
    for (char& unit : result)
        if (unit == '/' || unit == '\\' || unit == '\0') unit = '_';
    return result;
}

/// Tries names below `folder` until `create` takes one. A crowded folder gets longer names.
template<typename Create>
Path TryNames(const Path& folder, std::string_view prefix, std::string_view suffix, unsigned digits,
              Create create) {
    if (folder.empty()) return {};
    const std::string end = Fitting(suffix, 40);
    const std::string start = Fitting(prefix, 180);
    for (int attempt = 0; attempt < 192; ++attempt) {
        const unsigned count = attempt < 64 ? digits : digits + 12;
        std::string text = start + RandomDigits(count);
        Path name = folder / Path(text.append(end));
        if (create(name)) return name;
        if (errno != EEXIST) break;
    }
    return {};
}

} // namespace

Path TemporaryDirectory() {
    std::string folder = GetEnvironment("TMPDIR").value_or(std::string());
    if (folder.empty() || !IsFolder(folder) || access(folder.c_str(), W_OK | X_OK) != 0) folder = "/tmp";
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    if (!IsFolder(folder) || access(folder.c_str(), W_OK | X_OK) != 0) return {};
    return Absolute(folder);
}

namespace {

/// Where this user's records lie, whatever the temporary directory of a process is. Empty when something else
/// has the name.
Path RecordFolder(const Path& directory) {
    const Path common(P_tmpdir);
    const bool isCommon = IsFolder(common) && access(Native(common), W_OK | X_OK) == 0;
    Path folder = (isCommon ? common : directory) / Path(".odfmodel-" + std::to_string(geteuid()));
    if (mkdir(Native(folder), 0700) == 0) return folder;
    struct stat status {};
    const bool isOurs = lstat(Native(folder), &status) == 0 && S_ISDIR(status.st_mode) &&
                        status.st_uid == geteuid() && (status.st_mode & 0077) == 0;
    return isOurs ? folder : Path();
}

/// Whether that is a folder which only this user can enter, as the temporary ones are.
bool IsPrivateFolder(const Path& folder) {
    struct stat status {};
    return lstat(Native(folder), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & 07777) == 0700;
}

/// The folder that a record tells of; empty for one that was never finished.
Path ReadRecord(const OutputFile& record) {
    std::array<char, kMaxPath> text{};
    const std::ptrdiff_t count = record.readAt(0, text.data(), text.size());
    const std::string_view all(text.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    const std::size_t end = all.find('\n');
    return end == std::string_view::npos || !all.starts_with('/') ? Path() : Path(all.substr(0, end));
}

/// Removes the folders whose processes are gone: their records can be claimed.
void RemoveForsaken(const Path& records) {
    std::vector<std::string> names;
    Walk(records, [&](const std::string& name, FileKind kind) {
        if (kind == FileKind::File) names.push_back(name);
        return true;
    });
    for (const std::string& name : names) {
        const Path record = records / Path(name);
        OutputFile file;
        if (!file.openPresent(record) || !file.claim()) continue;
        const Path folder = ReadRecord(file);
        if (folder.empty() || !IsPrivateFolder(folder) || RemoveTree(folder)) RemoveFile(record);
    }
}

} // namespace

std::unique_ptr<FolderClaim> FolderClaim::create(std::string_view stem) {
    std::unique_ptr<FolderClaim> claim(new FolderClaim);
    const Path directory = TemporaryDirectory();
    if (directory.empty()) return nullptr;
    claim->makeRecord(directory);
    claim->folder_ = TryNames(directory, stem, {}, 4, [&](const Path& name) {
        // The record comes first: a process that is killed between both leaves nothing but that.
        claim->told_ = name.utf8();
        claim->told_ += '\n';
        if (claim->hasRecord_) claim->file_.writeAt(0, claim->told_.data(), claim->told_.size());
        return mkdir(Native(name), 0700) == 0;
    });
    if (!claim->folder_.empty()) return claim;
    const int error = errno;
    claim.reset();
    errno = error;
    return nullptr;
}

/// Without a record, as on a medium that is full, the folder is only not found again.
void FolderClaim::makeRecord(const Path& directory) {
    // The folder of records may go before there is a record in it: another process removes it when it is
    // empty.
    for (int attempt = 0; attempt < 64; ++attempt) {
        records_ = RecordFolder(directory);
        if (!records_.empty()) {
            RemoveForsaken(records_);
            record_ = TryNames(records_, {}, {}, 16, [&](const Path& name) {
                // Before it is claimed another process may take it for a forsaken one, and remove it.
                const bool isMade = file_.createNew(name, 0600);
                if (isMade && file_.claim() && IsTaken(name)) return true;
                if (isMade) errno = EEXIST;
                return false;
            });
        }
        hasRecord_ = !record_.empty();
        if (hasRecord_ || errno != ENOENT) return;
    }
}

FolderClaim::~FolderClaim() {
    // A folder that couldn't be removed is left to whoever comes next.
    if (hasRecord_ && (folder_.empty() || !IsTaken(folder_))) RemoveFile(record_);
    if (!records_.empty()) rmdir(Native(records_)); // which only works on an empty one
}

Path CreateTemporaryFile(std::string_view prefix, std::string_view suffix, unsigned digits) {
    return TryNames(TemporaryDirectory(), prefix, suffix, digits, [](const Path& name) {
        OutputFile file;
        return file.createNew(name, 0600);
    });
}

Path FreeTemporaryName(std::string_view prefix, std::string_view suffix, unsigned digits) {
    return TryNames(TemporaryDirectory(), prefix, suffix, digits, [](const Path& name) {
        const bool isTaken = IsTaken(name);
        errno = EEXIST;
        return !isTaken;
    });
}

std::string TemporaryDirectoryName() {
    const Path folder = TemporaryDirectory();
    return folder.empty() ? GetEnvironment("TMPDIR").value_or("/tmp") : folder.utf8();
}

bool OutputFile::createNameless() {
    close();
    const Path folder = TemporaryDirectory();
    if (folder.empty()) return false;
    if (createNameless(folder, 0600)) return true;
    // Not every file system knows files without a name.
    const Path name =
        TryNames(folder, "odfmodel", ".tmp", 16, [&](const Path& tried) { return createNew(tried, 0600); });
    return !name.empty() && RemoveFile(name);
}

namespace {
template<typename Create>
Path NameBeside(const Path& target, Create create) {
    return TryNames(target.parent(), '.' + target.name(), ".tmp", 16, create);
}
} // namespace

bool ReplacementFile::open(const Path& target) {
    discard();
    const Path resolved = ResolveLinks(target);
    const FileKind kind = KindOf(resolved);
    if (resolved.empty() || resolved.utf8().back() == '/' ||
        (kind != FileKind::None && kind != FileKind::File))
        return false;
    // Only a file that could have been overwritten is replaced, although the folder alone would allow it.
    if (kind == FileKind::File && faccessat(AT_FDCWD, Native(resolved), W_OK, AT_EACCESS) != 0) return false;
    // Such a file gets its name by way of what the system shows of this process.
    if (!IsFolder("/proc/self/fd") || !file_.createNameless(resolved.parent(), 0666)) {
        name_ = NameBeside(resolved, [&](const Path& name) { return file_.createNew(name); });
        if (name_.empty()) return false;
    }
    loss_ = nullptr;
    if (kind == FileKind::File) {
        file_.takeModeOf(resolved);
        if (!file_.takeAttributesOf(resolved))
            loss_ = "an extended attribute of the old file couldn't be kept";
        if (NameCount(resolved) > 1)
            loss_ = "the old file has another name too, which keeps the old contents";
    }
    target_ = resolved;
    return true;
}

bool ReplacementFile::replace() {
    if (!file_.isOpen()) return false;
    // The bytes must be on the medium before the name is, and the name before a caller relies on it.
    const bool isSafe = file_.flushToDisk();
    if (isSafe && name_.empty())
        name_ = NameBeside(target_, [&](const Path& name) { return file_.giveName(name); });
    if (!file_.close() || !isSafe || name_.empty() || !RenameReplacing(name_, target_)) {
        discard();
        return false;
    }
    name_ = {};
    FlushFolder(target_.parent());
    return true;
}

void ReplacementFile::discard() noexcept {
    file_.close();
    if (!name_.empty()) RemoveFile(name_);
    name_ = {};
}

} // namespace ODF::platform
