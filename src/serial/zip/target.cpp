#include "serial/zip/target.h"

#include <algorithm>
#include <cerrno>

namespace ODF::archive {

namespace {

class FileTarget final : public Target {
public:
    bool open(const platform::Path& path) { return replacement_.open(path); }
    bool writeAt(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        return replacement_.file().writeAt(offset, bytes.data(), bytes.size());
    }
    bool finish(std::uint64_t /*size*/) override { return replacement_.replace(); }

private:
    platform::ReplacementFile replacement_;
};

/// Something that can't be replaced and where no place can be written twice.
class DeviceTarget final : public Target {
public:
    bool open(const platform::Path& path) { return device_.create(path) && whole_.createNameless(); }
    bool writeAt(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        return whole_.writeAt(offset, bytes.data(), bytes.size());
    }
    bool finish(std::uint64_t size) override {
        std::vector<unsigned char> piece(std::size_t{1} << 18);
        for (std::uint64_t offset = 0; offset < size;) {
            const auto wanted =
                static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), size - offset));
            if (whole_.readAt(offset, piece.data(), wanted) != static_cast<std::ptrdiff_t>(wanted) ||
                !device_.write(piece.data(), wanted))
                return false;
            offset += wanted;
        }
        return device_.close();
    }

private:
    platform::OutputFile device_;
    platform::OutputFile whole_;
};

class MemoryTarget : public Target {
public:
    explicit MemoryTarget(std::span<unsigned char> buffer) noexcept : buffer_(buffer) {}
    bool writeAt(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        if (offset > buffer_.size() || bytes.size() > buffer_.size() - offset) return false;
        std::copy(bytes.begin(), bytes.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(offset));
        return true;
    }
    bool finish(std::uint64_t size) override { return size <= buffer_.size(); }

private:
    std::span<unsigned char> buffer_;
};

class MappingTarget final : public MemoryTarget {
public:
    explicit MappingTarget(MemoryView view) noexcept
        : MemoryTarget({view.data(), view.size()}), view_(std::move(view)) {}

private:
    MemoryView view_;
};

/// libzip's calls, turned into few and large writes: it writes member by member, in small pieces, and goes
/// back to each member's header when the member is done.
class TargetSource {
public:
    TargetSource(Target& target, std::uint64_t& size) : target_(target), size_(size) {
        window_.reserve(kLargestWindow); // no call from libzip may throw
        zip_error_init(&error_);
    }
    TargetSource(const TargetSource&) = delete;
    TargetSource& operator=(const TargetSource&) = delete;
    ~TargetSource() { zip_error_fini(&error_); }

    static zip_int64_t call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
        return static_cast<TargetSource*>(self)->handle(data, length, command);
    }

private:
    zip_int64_t handle(void* data, zip_uint64_t length, zip_source_cmd_t command) {
        switch (command) {
        case ZIP_SOURCE_OPEN:
        case ZIP_SOURCE_READ: // the archive is new: there is nothing to read
        case ZIP_SOURCE_CLOSE:
            return 0;
        case ZIP_SOURCE_STAT: {
            auto* const status = static_cast<zip_stat_t*>(data);
            zip_stat_init(status);
            status->valid = ZIP_STAT_SIZE;
            status->size = 0;
            return sizeof(zip_stat_t);
        }
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&error_, data, length);
        case ZIP_SOURCE_SEEK:
        case ZIP_SOURCE_TELL:
            return 0;
        case ZIP_SOURCE_BEGIN_WRITE:
            position_ = 0;
            size_ = 0;
            return 0;
        case ZIP_SOURCE_WRITE:
            return write({static_cast<const unsigned char*>(data), static_cast<std::size_t>(length)});
        case ZIP_SOURCE_SEEK_WRITE: {
            const zip_int64_t to = zip_source_seek_compute_offset(position_, size_, data, length, &error_);
            if (to < 0) return -1;
            position_ = static_cast<std::uint64_t>(to);
            return 0;
        }
        case ZIP_SOURCE_TELL_WRITE:
            return static_cast<zip_int64_t>(position_);
        case ZIP_SOURCE_COMMIT_WRITE:
            return flush() ? 0 : fail();
        case ZIP_SOURCE_ROLLBACK_WRITE:
        case ZIP_SOURCE_REMOVE:
            window_.clear();
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_WRITABLE;
        case ZIP_SOURCE_FREE:
            delete this;
            return 0; // libzip's way to give up ownership
        default:
            zip_error_set(&error_, ZIP_ER_OPNOTSUPP, 0);
            return -1;
        }
    }

    zip_int64_t fail() {
        zip_error_set(&error_, ZIP_ER_WRITE, errno);
        return -1;
    }

    bool flush() {
        const bool isWritten = window_.empty() || target_.writeAt(windowStart_, window_);
        window_.clear();
        return isWritten;
    }

    zip_int64_t write(std::span<const unsigned char> bytes) {
        const bool touches = position_ >= windowStart_ && position_ <= windowStart_ + window_.size();
        if (!touches || position_ - windowStart_ + bytes.size() > kLargestWindow) {
            if (!flush()) return fail();
            windowStart_ = position_;
        }
        if (bytes.size() > kLargestWindow) {
            if (!target_.writeAt(position_, bytes)) return fail();
            windowStart_ += bytes.size();
        } else {
            const auto offset = static_cast<std::size_t>(position_ - windowStart_);
            window_.resize(std::max(window_.size(), offset + bytes.size()));
            std::copy(bytes.begin(), bytes.end(), window_.begin() + static_cast<std::ptrdiff_t>(offset));
        }
        position_ += bytes.size();
        size_ = std::max(size_, position_);
        return static_cast<zip_int64_t>(bytes.size());
    }

    static constexpr std::size_t kLargestWindow = std::size_t{1} << 20;

    Target& target_;
    std::uint64_t& size_;
    std::uint64_t position_ = 0;
    std::vector<unsigned char> window_; ///< not yet written, from `windowStart_` on
    std::uint64_t windowStart_ = 0;
    zip_error_t error_{};
};

template<typename FromPath>
std::unique_ptr<Target> Opened(const platform::Path& path) {
    auto target = std::make_unique<FromPath>();
    return target->open(path) ? std::move(target) : nullptr;
}

} // namespace

std::unique_ptr<Target> MakeFileTarget(const platform::Path& path) {
    return platform::KindOf(path) == platform::FileKind::Other ? Opened<DeviceTarget>(path)
                                                               : Opened<FileTarget>(path);
}

std::unique_ptr<Target> MakeMemoryTarget(std::span<unsigned char> buffer) {
    return std::make_unique<MemoryTarget>(buffer);
}

std::unique_ptr<Target> MakeMappingTarget(void* mapping, std::size_t capacity) {
    MemoryView view(mapping, capacity, true);
    return view.data() ? std::make_unique<MappingTarget>(std::move(view)) : nullptr;
}

zip_source_t* MakeTargetSource(Target& target, std::uint64_t& size, zip_error_t* error) {
    auto source = std::make_unique<TargetSource>(target, size);
    zip_source_t* const made = zip_source_function_create(TargetSource::call, source.get(), error);
    if (made) source.release(); // NOLINT(bugprone-unused-return-value): libzip owns it now
    return made;
}

} // namespace ODF::archive
