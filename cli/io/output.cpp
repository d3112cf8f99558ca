#include "io/output.h"

#include "console.h"
#include "io/input.h"
#include "io/progress_line.h"
#include "package/reason.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

namespace command {

bool CheckStandardOutput() {
    if (isatty(STDOUT_FILENO) == 0) return true;
    Complain({}, "a document isn't written to a terminal; -o names a file");
    return false;
}

ExitCode SaveDocument(ODF::Document& document, const std::string& target, const ODF::SaveOptions& options) {
    ODF::SaveOptions save = options;
    ODF::Result saved;
    {
        ProgressLine line(target);
        save.progress = line.callback();
        saved = target == kStandardStream ? document.Save(std::cout, save) : document.Save(target, save);
    }
    if (saved) {
        ComplainNotes(target, saved.Notes());
        return ExitCode::Ok;
    }
    // A fault of the standard output itself is reported once, when the program ends.
    if (target != kStandardStream || std::cout)
        Complain(target, WriteReason(target, saved.Code(), saved.Notes()));
    // A member that was to be copied and can't be read is a fault of the document.
    return saved.Code() == ODF::Status::Damaged ? ExitCode::CannotOpen : ExitCode::CannotWrite;
}

ExitCode RefuseIncomplete(const std::string& target) {
    Complain(target, "not written, since the document can't be read whole; --incomplete writes what can be "
                     "read");
    return ExitCode::CannotOpen;
}

namespace {

bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// Writes a file that takes the place of the one at `path` when it is complete, with the rights of the old
/// one.
bool ReplaceFile(std::string_view bytes, const std::string& path) {
    // A link stays, and so does the length of a name that may be as long as names can be.
    std::error_code error;
    const std::filesystem::path target = std::filesystem::exists(path, error)
                                             ? std::filesystem::canonical(path, error)
                                             : std::filesystem::path(path);
    std::string partial = (target.parent_path() / ".odfmodel-XXXXXX").string();
    const int file = mkstemp(partial.data());
    if (file < 0) return false;
    const mode_t mask = umask(0);
    umask(mask);
    struct stat old {};
    const mode_t mode = stat(target.c_str(), &old) == 0 ? old.st_mode & 07777U : 0666U & ~mask;
    const bool isWritten = WriteAll(file, bytes) && fchmod(file, mode) == 0;
    if (close(file) == 0 && isWritten && std::rename(partial.c_str(), target.c_str()) == 0) return true;
    const int cause = errno;
    unlink(partial.c_str());
    errno = cause;
    return false;
}

/// Writes into what is there already and can't be replaced, such as a device.
bool WriteInto(std::string_view bytes, const std::string& target) {
    const int file = open(target.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool isWritten = WriteAll(file, bytes);
    return close(file) == 0 && isWritten;
}

} // namespace

ExitCode WriteBytes(std::string_view bytes, const std::string& target) {
    if (target == kStandardStream) {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return std::cout ? ExitCode::Ok : ExitCode::CannotWrite;
    }
    struct stat old {};
    const bool isSpecial = stat(target.c_str(), &old) == 0 && !S_ISREG(old.st_mode);
    if (isSpecial ? WriteInto(bytes, target) : ReplaceFile(bytes, target)) return ExitCode::Ok;
    Complain(target, std::string("could not write the file (") + std::strerror(errno) + ")");
    return ExitCode::CannotWrite;
}

} // namespace command
