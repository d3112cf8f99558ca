#include "package/odf/whole_file.h"

#include "platform/files.h"
#include "platform/temporary.h"

#include <new>
#include <optional>
#include <utility>

namespace ODF::package {

Status ReadFileWhole(const platform::Path& path, std::uint64_t mostBytes,
                     std::vector<unsigned char>& bytes) noexcept {
    try {
        const std::optional<std::uint64_t> size = platform::FileSize(path);
        if (size && *size > mostBytes) return Status::LimitExceeded;
        std::optional<std::vector<unsigned char>> read = platform::ReadFile(path, mostBytes);
        if (!read) return Status::NotReadable;
        bytes = std::move(*read);
        return Status::Ok;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
}

Status WriteFileWhole(const platform::Path& path, std::span<const unsigned char> bytes) noexcept {
    try {
        if (platform::KindOf(path) == platform::FileKind::Other) {
            platform::OutputFile device;
            const bool isWritten =
                device.create(path) && device.write(bytes.data(), bytes.size()) && device.close();
            return isWritten ? Status::Ok : Status::CouldNotWrite;
        }
        platform::ReplacementFile file;
        const bool isWritten = file.open(path) && file.file().write(bytes.data(), bytes.size()) &&
                               file.file().flushToDisk() && file.replace();
        return isWritten ? Status::Ok : Status::CouldNotWrite;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
}

} // namespace ODF::package
