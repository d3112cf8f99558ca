#include "serial/zip/archive_source.h"

#include "serial/zip/custom_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace ODF::archive {

namespace {

// libzip reads the directory in pieces of a few bytes; each would be a call to the system.
constexpr std::size_t kBufferSize = std::size_t{1} << 16;

class FileSource final : public CustomSource {
public:
    FileSource(platform::InputFile file, std::uint64_t start)
        : file_(std::move(file)), start_(start), buffer_(kBufferSize) {}

private:
    void describe(zip_stat_t& status) const override {
        status.valid = ZIP_STAT_SIZE;
        status.size = size();
    }

    zip_int64_t answer(void* data, zip_uint64_t length, zip_source_cmd_t command) override {
        switch (command) {
        case ZIP_SOURCE_OPEN:
            position_ = 0;
            return 0;
        case ZIP_SOURCE_READ:
            return read(static_cast<unsigned char*>(data), length);
        case ZIP_SOURCE_SEEK:
            return seek(position_, size(), data, length) ? 0 : -1;
        case ZIP_SOURCE_TELL:
            return static_cast<zip_int64_t>(position_);
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_SEEKABLE;
        default:
            return unsupported();
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
                isLarge
                    ? file_.readAt(start_ + position_, target + done, static_cast<std::size_t>(wanted - done))
                    : file_.readAt(start_ + position_, buffer_.data(), kBufferSize);
            if (count < 0) return fail(ZIP_ER_READ, errno);
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

    std::uint64_t size() const noexcept { return file_.size() - std::min(file_.size(), start_); }

    platform::InputFile file_;
    std::uint64_t start_; ///< of the archive in the file
    std::vector<unsigned char> buffer_;
    std::uint64_t bufferStart_ = 0;
    std::size_t bufferedBytes_ = 0;
    std::uint64_t position_ = 0;
};

} // namespace

zip_source_t* MakeFileSource(platform::InputFile file, std::uint64_t start, zip_error_t* error) {
    return CustomSource::handOver(std::make_unique<FileSource>(std::move(file), start), error);
}

zip_source_t* MakeMemorySource(const void* data, std::uint64_t byteCount, zip_error_t* error) {
    return zip_source_buffer_create(data, byteCount, 0, error);
}

} // namespace ODF::archive
