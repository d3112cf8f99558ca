#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace ODF::xml {

/// The part of a file that the tokeniser has at hand. It doubles while a token is longer, so that what is
/// long is read a few times at most.
class Window {
public:
    explicit Window(std::uint64_t fileBytes)
        : capacity_(static_cast<std::size_t>(std::min<std::uint64_t>(fileBytes, kStart)) + 1),
          bytes_(new char[capacity_]) {}

    /// Drops the first `count` bytes.
    void drop(std::size_t count) noexcept {
        used_ -= count;
        std::memmove(bytes_.get(), bytes_.get() + count, used_);
    }
    /// Makes room for more; false when the window is as large as it may become.
    bool grow() {
        if (used_ < capacity_) return true;
        if (capacity_ >= kMax) return false;
        std::unique_ptr<char[]> larger(new char[capacity_ * 2]);
        std::memcpy(larger.get(), bytes_.get(), used_);
        bytes_ = std::move(larger);
        capacity_ *= 2;
        return true;
    }
    char* room() noexcept { return bytes_.get() + used_; }
    std::size_t roomBytes() const noexcept { return capacity_ - used_; }
    void add(std::size_t count) noexcept { used_ += count; }
    std::string_view view() const noexcept { return {bytes_.get(), used_}; }

private:
    static constexpr std::size_t kStart = std::size_t{1} << 18;
    static constexpr std::size_t kMax = std::size_t{1} << 28;

    std::size_t capacity_;
    std::unique_ptr<char[]> bytes_;
    std::size_t used_ = 0;
};

} // namespace ODF::xml
