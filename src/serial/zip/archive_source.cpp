#include "serial/zip/archive_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace ODF::archive {

namespace {

// libzip reads the directory in pieces of a few bytes; each would be a call to the system.
constexpr std::size_t kBufferSize = std::size_t{1} << 16;

class FileSource {
public:
    explicit FileSource(platform::InputFile file) : file_(std::move(file)), buffer_(kBufferSize) {
        zip_error_init(&error_);
    }
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource() { zip_error_fini(&error_); }

    static zip_int64_t call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
        return static_cast<FileSource*>(self)->handle(data, length, command);
    }

private:
    zip_int64_t handle(void* data, zip_uint64_t length, zip_source_cmd_t command) {
        switch (command) {
        case ZIP_SOURCE_OPEN:
            position_ = 0;
            return 0;
        case ZIP_SOURCE_READ:
            return read(static_cast<unsigned char*>(data), length);
        case ZIP_SOURCE_CLOSE:
            return 0;
        case ZIP_SOURCE_STAT: {
            auto* const status = static_cast<zip_stat_t*>(data);
            zip_stat_init(status);
            status->valid = ZIP_STAT_SIZE;
            status->size = file_.size();
            return sizeof(zip_stat_t);
        }
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&error_, data, length);
        case ZIP_SOURCE_SEEK: {
            const zip_int64_t target =
                zip_source_seek_compute_offset(position_, file_.size(), data, length, &error_);
            if (target < 0) return -1;
            position_ = static_cast<std::uint64_t>(target);
            return 0;
        }
        case ZIP_SOURCE_TELL:
            return static_cast<zip_int64_t>(position_);
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_SEEKABLE;
        case ZIP_SOURCE_FREE:
            delete this;
            return 0; // libzip's way to give up ownership
        default:
            zip_error_set(&error_, ZIP_ER_OPNOTSUPP, 0);
            return -1;
        }
    }

    zip_int64_t read(unsigned char* target, std::uint64_t wanted) {
        std::uint64_t done = 0;
        while (done < wanted) {
            if (position_ >= bufferStart_ && position_ - bufferStart_ < bufferedBytes_) {
                const auto offset = static_cast<std::size_t>(position_ - bufferStart_);
                const auto count =
                    static_cast<std::size_t>(std::min<std::uint64_t>(bufferedBytes_ - offset, wanted - done));
                std::memcpy(target + done, buffer_.data() + offset, count);
                position_ += count;
                done += count;
                continue;
            }
            const bool isLarge = wanted - done >= kBufferSize;
            const std::ptrdiff_t count =
                isLarge ? file_.readAt(position_, target + done, static_cast<std::size_t>(wanted - done))
                        : file_.readAt(position_, buffer_.data(), kBufferSize);
            if (count < 0) {
                zip_error_set(&error_, ZIP_ER_READ, errno);
                return -1;
            }
            if (count == 0) break;
            if (isLarge) {
                position_ += static_cast<std::uint64_t>(count);
                done += static_cast<std::uint64_t>(count);
            } else {
                bufferStart_ = position_;
                bufferedBytes_ = static_cast<std::size_t>(count);
            }
        }
        return static_cast<zip_int64_t>(done);
    }

    platform::InputFile file_;
    std::vector<unsigned char> buffer_;
    std::uint64_t bufferStart_ = 0;
    std::size_t bufferedBytes_ = 0;
    std::uint64_t position_ = 0;
    zip_error_t error_{};
};

} // namespace

zip_source_t* MakeFileSource(platform::InputFile file, zip_error_t* error) {
    auto source = std::make_unique<FileSource>(std::move(file));
    zip_source_t* const made = zip_source_function_create(FileSource::call, source.get(), error);
    if (made) source.release(); // NOLINT(bugprone-unused-return-value): libzip owns it now
    return made;
}

zip_source_t* MakeMemorySource(const void* data, std::uint64_t byteCount, zip_error_t* error) {
    return zip_source_buffer_create(data, byteCount, 0, error);
}

} // namespace ODF::archive
