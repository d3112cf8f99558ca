#include "platform/temporary.h"

#include "platform/environment.h"
#include "platform/posix/system_call.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

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

Path CreateTemporaryFolder(std::string_view stem) {
    return TryNames(TemporaryDirectory(), stem, {}, 4,
                    [](const Path& name) { return mkdir(Native(name), 0700) == 0; });
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

bool OutputFile::createNameless() {
    close();
    const Path folder = TemporaryDirectory();
    if (folder.empty()) return false;
    descriptor_ = posix::Retry([&] { return ::open(Native(folder), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); });
    if (descriptor_ >= 0) return true;
    // Not every file system knows files without a name.
    const Path name =
        TryNames(folder, "odfmodel", ".tmp", 16, [&](const Path& tried) { return createNew(tried, 0600); });
    return !name.empty() && RemoveFile(name);
}

bool ReplacementFile::open(const Path& target) {
    discard();
    const Path resolved = ResolveLinks(target);
    const FileKind kind = KindOf(resolved);
    if (resolved.empty() || resolved.utf8().back() == '/' ||
        (kind != FileKind::None && kind != FileKind::File))
        return false;
    // Only a file that could have been overwritten is replaced, although the folder alone would allow it.
    if (kind == FileKind::File && faccessat(AT_FDCWD, Native(resolved), W_OK, AT_EACCESS) != 0) return false;
    name_ = TryNames(resolved.parent(), '.' + resolved.name(), ".tmp", 16,
                     [&](const Path& name) { return file_.createNew(name); });
    if (name_.empty()) return false;
    if (kind == FileKind::File) file_.takeModeOf(resolved);
    target_ = resolved;
    return true;
}

bool ReplacementFile::replace() {
    if (!file_.isOpen()) return false;
    // The bytes must be on the medium before the name is, and the name before a caller relies on it.
    const bool isSafe = file_.flushToDisk();
    if (!file_.close() || !isSafe || !RenameReplacing(name_, target_)) {
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
