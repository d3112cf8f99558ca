#pragma once

#include "core/utf.h"
#include "platform/files.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace ODF::xml {

/// Collects UTF-8 output in one buffer and hands it on in large pieces, to a file or into a caller's memory.
class OutputBuffer {
public:
    OutputBuffer() : buffer_(std::make_unique_for_overwrite<char[]>(kCapacity)) {}

    /// Creates or overwrites the file.
    bool openFile(const platform::Path& path);
    void openMemory(void* target, std::size_t capacity) noexcept;
    void openText(std::string& target) noexcept { text_ = &target; }
    bool isOpen() const noexcept { return file_.isOpen() || memory_ || text_; }

    void put(std::string_view text) {
        if (text.size() > kCapacity - used_) {
            putLong(text);
            return;
        }
        text.copy(buffer_.get() + used_, text.size());
        used_ += text.size();
    }
    void put(char c) {
        if (used_ == kCapacity) flush();
        buffer_[used_++] = c;
    }

    /// UTF-16 to UTF-8 as it is.
    void putRaw(std::u16string_view text);
    /// Character data: what is markup becomes an entity; what XML forbids, and a lone surrogate, becomes
    /// U+FFFD.
    void putText(std::u16string_view text) { putEscaped<false>(text); }
    /// The same for an attribute value in double quotes; tab, line feed and carriage return become
    /// references, so that they come back as they were.
    void putAttribute(std::u16string_view text) { putEscaped<true>(text); }
    /// An attribute value whose markup its maker has escaped already. What would make the file ill-formed is
    /// escaped all the same.
    void putEscapedAttribute(std::u16string_view text);

    /// Hands on what is left and closes the target. False when not everything arrived.
    bool close();
    std::uint64_t bytes() const noexcept { return flushed_ + used_; }

private:
    static constexpr std::size_t kCapacity = 1U << 18;
    static constexpr std::size_t kMaxPerUnit = 6; ///< "&quot;"

    void flush();
    void putLong(std::string_view text);
    /// Room for `units` more units of any kind, at most kCapacity / kMaxPerUnit.
    char* reserve(std::size_t units) {
        if ((kCapacity - used_) / kMaxPerUnit < units) flush();
        return buffer_.get() + used_;
    }
    template<bool IsAttribute>
    void putEscaped(std::u16string_view text);

    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    std::uint64_t flushed_ = 0;
    platform::OutputFile file_;
    char* memory_ = nullptr;
    std::size_t capacity_ = 0;
    std::string* text_ = nullptr;
    bool failed_ = false;
};

} // namespace ODF::xml
