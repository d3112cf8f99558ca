#include "package/odf/whole_file.h"

#include "platform/files.h"
#include "platform/temporary.h"

#include <cerrno>
#include <new>
#include <optional>
#include <utility>

namespace ODF::package {

Status ReadFileWhole(const platform::Path& path, std::uint64_t mostBytes, std::vector<unsigned char>& bytes,
                     Diagnostics& notes) noexcept {
    try {
        errno = 0;
        const std::optional<std::uint64_t> size = platform::FileSize(path);
        if (size && *size > mostBytes) return Status::LimitExceeded;
        std::optional<std::vector<unsigned char>> read = platform::ReadFile(path, mostBytes);
        if (!read) {
            const std::string cause = errno != 0 ? ": " + platform::LastFault() : std::string();
            notes.add(NoteCode::ReadFailed, Severity::Error, {}, "can't read " + path.utf8() + cause);
            return Status::NotReadable;
        }
        bytes = std::move(*read);
        return Status::Ok;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
}

namespace {

bool WriteWhole(const platform::Path& path, std::span<const unsigned char> bytes, Diagnostics& notes) {
    if (platform::KindOf(path) == platform::FileKind::Other) {
        platform::OutputFile device;
        return device.create(path) && device.write(bytes.data(), bytes.size()) && device.close();
    }
    platform::ReplacementFile file;
    const bool isWritten = file.open(path) && file.file().write(bytes.data(), bytes.size()) && file.replace();
    if (isWritten && file.loss()) notes.add(NoteCode::TargetChanged, Severity::Warning, {}, file.loss());
    return isWritten;
}

} // namespace

Status WriteFileWhole(const platform::Path& path, std::span<const unsigned char> bytes,
                      Diagnostics& notes) noexcept {
    try {
        errno = 0;
        if (WriteWhole(path, bytes, notes)) return Status::Ok;
        const std::string cause = errno != 0 ? ": " + platform::LastFault() : std::string();
        notes.add(NoteCode::WriteFailed, Severity::Error, {}, "can't write " + path.utf8() + cause);
        return Status::CouldNotWrite;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
}

} // namespace ODF::package
