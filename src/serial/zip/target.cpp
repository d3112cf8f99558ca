#include "serial/zip/target.h"

#include "serial/zip/custom_source.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace ODF::archive {

namespace {

class FileTarget final : public Target {
public:
    bool open(const platform::Path& path) { return replacement_.open(path); }
    bool writeAt(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        return replacement_.file().writeAt(offset, bytes.data(), bytes.size());
    }
    bool finish(std::uint64_t /*size*/) override { return replacement_.replace(); }
    const char* loss() const noexcept override { return replacement_.loss(); }

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

class GrowingTarget final : public Target {
public:
    explicit GrowingTarget(std::vector<unsigned char>& bytes) noexcept : bytes_(bytes) {}
    bool writeAt(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        try {
            if (bytes.size() > bytes_.max_size() || offset > bytes_.max_size() - bytes.size()) return false;
            const auto start = static_cast<std::size_t>(offset);
            if (bytes_.size() < start + bytes.size()) bytes_.resize(start + bytes.size());
            std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(start));
            return true;
        } catch (const std::bad_alloc&) { // what calls this is libzip
            errno = ENOMEM;
            return false;
        }
    }
    bool finish(std::uint64_t size) override {
        bytes_.resize(static_cast<std::size_t>(size));
        return true;
    }

private:
    std::vector<unsigned char>& bytes_;
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
class TargetSource final : public CustomSource {
public:
    TargetSource(Target& target, std::uint64_t& size) : target_(target), size_(size) {
        window_.reserve(kMaxWindow); // no call from libzip may throw
    }

private:
    void describe(zip_stat_t& status) const override {
        status.valid = ZIP_STAT_SIZE;
        status.size = 0;
    }

    zip_int64_t answer(void* data, zip_uint64_t length, zip_source_cmd_t command) override {
        switch (command) {
        case ZIP_SOURCE_OPEN:
        case ZIP_SOURCE_READ: // the archive is new: there is nothing to read
        case ZIP_SOURCE_SEEK:
        case ZIP_SOURCE_TELL:
            return 0;
        case ZIP_SOURCE_BEGIN_WRITE:
            position_ = 0;
            size_ = 0;
            return 0;
        case ZIP_SOURCE_WRITE:
            return write({static_cast<const unsigned char*>(data), static_cast<std::size_t>(length)});
        case ZIP_SOURCE_SEEK_WRITE:
            return seek(position_, size_, data, length) ? 0 : -1;
        case ZIP_SOURCE_TELL_WRITE:
            return static_cast<zip_int64_t>(position_);
        case ZIP_SOURCE_COMMIT_WRITE:
            return flush() ? 0 : notWritten();
        case ZIP_SOURCE_ROLLBACK_WRITE:
        case ZIP_SOURCE_REMOVE:
            window_.clear();
            return 0;
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_WRITABLE;
        default:
            return unsupported();
        }
    }

    zip_int64_t notWritten() { return fail(ZIP_ER_WRITE, errno); }

    bool flush() {
        const bool isWritten = window_.empty() || target_.writeAt(windowStart_, window_);
        window_.clear();
        return isWritten;
    }

    zip_int64_t write(std::span<const unsigned char> bytes) {
        const bool touches = position_ >= windowStart_ && position_ <= windowStart_ + window_.size();
        if (!touches || position_ - windowStart_ + bytes.size() > kMaxWindow) {
            if (!flush()) return notWritten();
            windowStart_ = position_;
        }
        if (bytes.size() > kMaxWindow) {
            if (!target_.writeAt(position_, bytes)) return notWritten();
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

    static constexpr std::size_t kMaxWindow = std::size_t{1} << 20;

    Target& target_;
    std::uint64_t& size_;
    std::uint64_t position_ = 0;
    std::vector<unsigned char> window_; ///< not yet written, from `windowStart_` on
    std::uint64_t windowStart_ = 0;
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

std::unique_ptr<Target> MakeGrowingTarget(std::vector<unsigned char>& bytes) {
    return std::make_unique<GrowingTarget>(bytes);
}

std::unique_ptr<Target> MakeMappingTarget(void* mapping, std::size_t capacity) {
    MemoryView view(mapping, capacity, true);
    return view.data() ? std::make_unique<MappingTarget>(std::move(view)) : nullptr;
}

zip_source_t* MakeTargetSource(Target& target, std::uint64_t& size, zip_error_t* error) {
    return CustomSource::handOver(std::make_unique<TargetSource>(target, size), error);
}

} // namespace ODF::archive
