#include "serial/xml/output_buffer.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace ODF::xml {
namespace {

/// What an ASCII character becomes; null for itself.
using Replacements = std::array<const char*, 128>;

constexpr Replacements MakeReplacements(bool isAttribute) {
    Replacements table{};
    for (std::size_t c = 0; c < 0x20; ++c)
        table[c] = "\xEF\xBF\xBD"; // U+FFFD
    table['\t'] = isAttribute ? "&#9;" : nullptr;
    table['\n'] = isAttribute ? "&#10;" : nullptr;
    table['\r'] = "&#13;"; // a parser would turn a bare one into a line feed
    table['&'] = "&amp;";
    table['<'] = "&lt;";
    table['>'] = "&gt;";
    if (isAttribute) table['"'] = "&quot;";
    return table;
}

template<bool IsAttribute>
constexpr Replacements kReplacements = MakeReplacements(IsAttribute);

/// Length of the entity or character reference at the head of `text`, with its `;`; 0 when there is none.
std::size_t ReferenceLength(std::u16string_view text) noexcept {
    constexpr std::u16string_view kNames[] = {u"&amp;", u"&lt;", u"&gt;", u"&quot;", u"&apos;"};
    for (const std::u16string_view name : kNames)
        if (text.starts_with(name)) return name.size();
    if (!text.starts_with(u"&#")) return 0;
    const bool isHex = text.size() > 2 && text[2] == u'x';
    char32_t c = 0;
    std::size_t at = isHex ? 3 : 2;
    const std::size_t first = at;
    for (; at < text.size() && at < first + 7; ++at) {
        const char16_t digit = text[at];
        if (digit >= u'0' && digit <= u'9')
            c = c * (isHex ? 16 : 10) + (digit - u'0');
        else if (isHex && (digit | 0x20) >= u'a' && (digit | 0x20) <= u'f')
            c = c * 16 + ((digit | 0x20) - u'a' + 10U);
        else
            break;
    }
    return at > first && at < text.size() && text[at] == u';' && IsXmlCharacter(c) ? at + 1 : 0;
}

} // namespace

bool OutputBuffer::openFile(const platform::Path& path) {
    return file_.create(path);
}

void OutputBuffer::openMemory(void* target, std::size_t capacity) noexcept {
    memory_ = static_cast<char*>(target);
    capacity_ = capacity;
}

void OutputBuffer::flush() {
    if (used_ == 0) return;
    if (memory_) {
        const std::uint64_t room = capacity_ - std::min<std::uint64_t>(capacity_, flushed_);
        if (used_ > room)
            failed_ = true;
        else
            std::memcpy(memory_ + flushed_, buffer_.get(), used_);
    } else if (text_) {
        text_->append(buffer_.get(), used_);
    } else if (!failed_ && !file_.write(buffer_.get(), used_)) {
        failed_ = true;
    }
    flushed_ += used_;
    used_ = 0;
}

void OutputBuffer::putLong(std::string_view text) {
    while (!text.empty()) {
        if (used_ == kCapacity) flush();
        const std::size_t piece = text.copy(buffer_.get() + used_, kCapacity - used_);
        used_ += piece;
        text.remove_prefix(piece);
    }
}

bool OutputBuffer::close() {
    flush();
    if (file_.isOpen() && !file_.close()) failed_ = true;
    memory_ = nullptr;
    text_ = nullptr;
    return !failed_;
}

void OutputBuffer::putRaw(std::u16string_view text) {
    constexpr std::size_t kRun = 8192;
    const char16_t* at = text.data();
    const char16_t* const end = at + text.size();
    while (at != end) {
        const char16_t* const pieceEnd = at + std::min<std::ptrdiff_t>(end - at, kRun);
        char* out = reserve(kRun + 1);
        while (at < pieceEnd)
            out = PutUtf8(out, NextCodePoint(at, end));
        used_ = static_cast<std::size_t>(out - buffer_.get());
    }
}

template<bool IsAttribute>
void OutputBuffer::putEscaped(std::u16string_view text) {
    constexpr std::size_t kRun = 8192;
    const Replacements& replacements = kReplacements<IsAttribute>;
    const char16_t* at = text.data();
    const char16_t* const end = at + text.size();
    while (at != end) {
        const char16_t* const pieceEnd = at + std::min<std::ptrdiff_t>(end - at, kRun);
        char* out = reserve(kRun + 1);
        while (at < pieceEnd) {
            const char16_t unit = *at;
            if (unit < 0x80) {
                ++at;
                const char* const replacement = replacements[unit];
                if (!replacement) [[likely]]
                    *out++ = static_cast<char>(unit);
                else
                    for (const char* c = replacement; *c; ++c)
                        *out++ = *c;
                continue;
            }
            const char32_t c = NextCodePoint(at, end);
            out = PutUtf8(out, IsXmlCharacter(c) ? c : kReplacement);
        }
        used_ = static_cast<std::size_t>(out - buffer_.get());
    }
}

template void OutputBuffer::putEscaped<false>(std::u16string_view text);
template void OutputBuffer::putEscaped<true>(std::u16string_view text);

void OutputBuffer::putEscapedAttribute(std::u16string_view text) {
    while (!text.empty()) {
        const std::size_t ampersand = std::min(text.find(u'&'), text.size());
        putAttribute(text.substr(0, ampersand));
        text.remove_prefix(ampersand);
        if (text.empty()) return;
        const std::size_t reference = std::max<std::size_t>(ReferenceLength(text), 1);
        if (reference > 1)
            putRaw(text.substr(0, reference));
        else
            putAttribute(text.substr(0, 1));
        text.remove_prefix(reference);
    }
}

} // namespace ODF::xml
