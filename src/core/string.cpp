#include <odfmodel/core/string.h>

#include "core/utf.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

/// Stands in front of the units of every buffer.
struct Header {
    std::int32_t references; ///< strings that share the buffer; -2 marks the shared empty one
    std::uint32_t length;    ///< units in use, without the terminator
    std::uint32_t capacity;  ///< units that fit, without the terminator
};

constexpr std::int32_t kNil = -2;
constexpr std::size_t kMaxLength = 0x3FFFFFFF;

struct NilBuffer {
    Header header{kNil, 0, 0};
    unsigned short terminator = 0;
};
// Never written to: its count is not changed and nothing is put into it.
const NilBuffer kNilBuffer;

unsigned short* Nil() noexcept {
    return const_cast<unsigned short*>(&kNilBuffer.terminator);
}

Header* HeaderOf(unsigned short* units) noexcept {
    return reinterpret_cast<Header*>(units) - 1;
}

/// A buffer for `length` units, with one reference and no unit in use; null without memory. The block holds
/// the header and a multiple of eight units.
unsigned short* Allocate(std::size_t length) noexcept {
    if (length == 0) return Nil();
    if (length > kMaxLength) return nullptr;
    const std::size_t capacity = ((length + 9) & ~std::size_t{7}) - 1;
    auto* const header =
        static_cast<Header*>(std::malloc(sizeof(Header) + (capacity + 1) * sizeof(unsigned short)));
    if (!header) return nullptr;
    *header = Header{1, 0, static_cast<std::uint32_t>(capacity)};
    auto* const units = reinterpret_cast<unsigned short*>(header + 1);
    *units = 0;
    return units;
}

void Share(unsigned short* units) noexcept {
    if (units == Nil()) return;
    std::atomic_ref<std::int32_t>(HeaderOf(units)->references).fetch_add(1, std::memory_order_relaxed);
}

void Release(unsigned short* units) noexcept {
    Header* const header = HeaderOf(units);
    if (units == Nil()) return;
    std::atomic_ref<std::int32_t> references(header->references);
    // A buffer with one owner can't be shared by another thread at the same time, so the last release needs
    // no locked instruction.
    if (references.load(std::memory_order_acquire) == 1 ||
        references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        std::free(header);
}

bool IsShared(unsigned short* units) noexcept {
    if (units == Nil()) return true;
    return std::atomic_ref<std::int32_t>(HeaderOf(units)->references).load(std::memory_order_acquire) > 1;
}

void SetLength(unsigned short* units, std::size_t length) noexcept {
    HeaderOf(units)->length = static_cast<std::uint32_t>(length);
    units[length] = 0;
}

std::size_t Terminated(std::u16string_view text) noexcept {
    return std::min(text.find(u'\0'), text.size());
}

/// A new buffer with the pieces one after the other; null without memory.
unsigned short* Join(std::u16string_view a, std::u16string_view b) noexcept {
    unsigned short* const units = Allocate(a.size() + b.size());
    if (units && units != Nil()) {
        std::memcpy(units, a.data(), a.size() * sizeof(unsigned short));
        if (!b.empty()) std::memcpy(units + a.size(), b.data(), b.size() * sizeof(unsigned short));
        SetLength(units, a.size() + b.size());
    }
    return units;
}

} // namespace

CTulStringW::CTulStringW() noexcept : units_(Nil()) {}
CTulStringW::CTulStringW(std::nullptr_t) noexcept : units_(Nil()) {}
CTulStringW::CTulStringW(const unsigned short* text) : CTulStringW(ToView(text)) {}
CTulStringW::CTulStringW(const unsigned short* text, std::size_t length) : units_(Nil()) {
    Assign(text, length);
}
CTulStringW::CTulStringW(const char16_t* text)
    : CTulStringW(text ? std::u16string_view(text) : std::u16string_view()) {}
CTulStringW::CTulStringW(std::u16string_view text) : units_(Nil()) {
    Assign(text);
}
CTulStringW::CTulStringW(const std::u16string& text) : CTulStringW(std::u16string_view(text)) {}
CTulStringW::CTulStringW(const char* utf8)
    : CTulStringW(utf8 ? std::string_view(utf8) : std::string_view()) {}
CTulStringW::CTulStringW(const std::string& utf8) : CTulStringW(std::string_view(utf8)) {}
CTulStringW::CTulStringW(std::string_view utf8) : units_(Nil()) {
    utf8 = utf8.substr(0, utf8.find('\0'));
    if (unsigned short* const units = Allocate(utf8.size()); units && units != Nil()) {
        SetLength(units, ODF::DecodeUtf8(utf8, reinterpret_cast<char16_t*>(units)));
        units_ = units;
    }
}

CTulStringW::CTulStringW(const CTulStringW& other) noexcept : units_(other.units_) {
    Share(units_);
}
CTulStringW::CTulStringW(CTulStringW&& other) noexcept : units_(other.units_) {
    other.units_ = Nil();
}
CTulStringW::~CTulStringW() {
    Release(units_);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): sharing before releasing takes care of it
CTulStringW& CTulStringW::operator=(const CTulStringW& other) noexcept {
    Share(other.units_);
    Release(units_);
    units_ = other.units_;
    return *this;
}
CTulStringW& CTulStringW::operator=(CTulStringW&& other) noexcept {
    swap(other);
    return *this;
}
CTulStringW& CTulStringW::operator=(const unsigned short* text) {
    Assign(ToView(text));
    return *this;
}

std::size_t CTulStringW::GetLength() const noexcept {
    return HeaderOf(units_)->length;
}
std::size_t CTulStringW::GetCapacity() const noexcept {
    return HeaderOf(units_)->capacity;
}

void CTulStringW::Clear() noexcept {
    Release(units_);
    units_ = Nil();
}

bool CTulStringW::Assign(const unsigned short* text, std::size_t length) {
    return Assign(text ? std::u16string_view(ToChar16(text), length) : std::u16string_view());
}

bool CTulStringW::Assign(std::u16string_view text) {
    text = text.substr(0, Terminated(text));
    if (text.empty()) {
        Clear();
        return true;
    }
    if (!IsShared(units_) && GetCapacity() >= text.size()) {
        std::memmove(units_, text.data(),
                     text.size() * sizeof(unsigned short)); // may lie in this very buffer
        SetLength(units_, text.size());
        return true;
    }
    unsigned short* const units = Join(text, {});
    if (!units) return false;
    Release(units_);
    units_ = units;
    return true;
}

bool CTulStringW::Append(const unsigned short* text, std::size_t length) {
    return Append(text ? std::u16string_view(ToChar16(text), length) : std::u16string_view());
}

bool CTulStringW::Append(std::u16string_view text) {
    text = text.substr(0, Terminated(text));
    if (text.empty()) return true;
    const std::size_t length = GetLength();
    const std::size_t needed = length + text.size();
    if (!IsShared(units_) && GetCapacity() >= needed) {
        std::memmove(units_ + length, text.data(), text.size() * sizeof(unsigned short));
        SetLength(units_, needed);
        return true;
    }
    unsigned short* const units = Join(view(), text);
    if (!units) return false;
    Release(units_);
    units_ = units;
    return true;
}

bool CTulStringW::Append(unsigned short unit) {
    const auto c = static_cast<char16_t>(unit);
    return Append(std::u16string_view(&c, 1));
}

CTulStringW& CTulStringW::operator+=(const CTulStringW& text) {
    Append(text.view()); // which may be this very string
    return *this;
}
CTulStringW& CTulStringW::operator+=(unsigned short unit) {
    Append(unit);
    return *this;
}

bool CTulStringW::Replace(unsigned short from, unsigned short to) {
    if (view().find(static_cast<char16_t>(from)) == std::u16string_view::npos || to == 0) return true;
    if (IsShared(units_)) {
        unsigned short* const units = Join(view(), {});
        if (!units) return false;
        Release(units_);
        units_ = units;
    }
    std::replace(units_, units_ + GetLength(), from, to);
    return true;
}

bool CTulStringW::Replace(const CTulStringW& fromText, const CTulStringW& toText) {
    const std::u16string_view from = fromText.view();
    const std::u16string_view text = view();
    if (from.empty() || text.find(from) == std::u16string_view::npos) return true;
    std::u16string result;
    std::size_t at = 0;
    for (std::size_t hit = 0; (hit = text.find(from, at)) != std::u16string_view::npos;
         at = hit + from.size())
        result.append(text.substr(at, hit - at)).append(toText.view());
    result.append(text.substr(at));
    return Assign(std::u16string_view(result));
}

CTulStringW CTulStringW::Left(std::size_t count) const {
    return count >= GetLength() ? *this : CTulStringW(view().substr(0, count));
}
CTulStringW CTulStringW::Right(std::size_t count) const {
    return count >= GetLength() ? *this : CTulStringW(view().substr(GetLength() - count));
}
CTulStringW CTulStringW::Mid(std::size_t start, std::size_t count) const {
    return start >= GetLength() ? CTulStringW() : CTulStringW(view().substr(start, count));
}

namespace {

/// One conversion of a printf format, without the leading percent sign.
struct Conversion {
    std::string flags; ///< flags, width and precision
    char16_t letter = 0;
};

Conversion ReadConversion(std::u16string_view format, std::size_t& at) {
    Conversion conversion;
    constexpr std::u16string_view kFlags = u"-+ #0123456789.";
    for (; at < format.size() && kFlags.find(format[at]) != std::u16string_view::npos; ++at)
        conversion.flags += static_cast<char>(format[at]);
    while (at < format.size() && (format[at] == u'l' || format[at] == u'h'))
        ++at; // arguments bring their width
    if (at < format.size()) conversion.letter = format[at++];
    return conversion;
}

template<typename T>
std::u16string Print(const Conversion& conversion, const char* length, T value) {
    const std::string format = "%" + conversion.flags + length + static_cast<char>(conversion.letter);
    char buffer[512];
    const int count = std::snprintf(buffer, sizeof buffer, format.c_str(), value);
    if (count <= 0) return {};
    return ODF::ToUtf16(
        std::string_view(buffer, std::min<std::size_t>(static_cast<std::size_t>(count), sizeof buffer - 1)));
}

std::u16string PrintText(const Conversion& conversion, std::u16string_view text) {
    std::size_t width = 0;
    std::size_t precision = std::u16string_view::npos;
    bool left = false;
    std::size_t* number = &width;
    for (const char c : conversion.flags) {
        if (c == '-')
            left = true;
        else if (c == '.')
            *(number = &precision) = 0;
        else if (c >= '0' && c <= '9')
            *number = std::min<std::size_t>(*number * 10 + static_cast<std::size_t>(c - '0'), 4096);
    }
    std::u16string result(text.substr(0, precision));
    if (result.size() < width) result.insert(left ? result.size() : 0, width - result.size(), u' ');
    return result;
}

} // namespace

bool CTulStringW::FormatList(std::u16string_view format, std::initializer_list<FormatArgument> arguments) {
    std::u16string result;
    const FormatArgument* argument = arguments.begin();
    for (std::size_t at = 0; at < format.size();) {
        if (format[at] != u'%') {
            result += format[at++];
            continue;
        }
        const Conversion conversion = ReadConversion(format, ++at);
        if (conversion.letter == u'%') {
            result += u'%';
            continue;
        }
        if (argument == arguments.end() || conversion.flags.size() > 16) continue;
        const FormatArgument::Value& value = (argument++)->value_;
        const auto asUnsigned = [&value] {
            if (const auto* number = std::get_if<long long>(&value))
                return static_cast<unsigned long long>(*number);
            if (const auto* number = std::get_if<unsigned long long>(&value)) return *number;
            return 0ULL;
        };
        switch (conversion.letter) {
        case u's':
        case u'S':
            if (const auto* text = std::get_if<std::u16string_view>(&value))
                result += PrintText(conversion, *text);
            break;
        case u'c':
            result += static_cast<char16_t>(asUnsigned());
            break;
        case u'd':
        case u'i':
            result += Print(conversion, "ll", static_cast<long long>(asUnsigned()));
            break;
        case u'u':
        case u'o':
        case u'x':
        case u'X': {
            // A negative number shows as the 32-bit pattern that callers of %x and %u expect.
            unsigned long long number = asUnsigned();
            if (const auto* whole = std::get_if<long long>(&value);
                whole && *whole < 0 && *whole >= INT32_MIN)
                number = static_cast<std::uint32_t>(*whole);
            result += Print(conversion, "ll", number);
            break;
        }
        case u'f':
        case u'e':
        case u'g':
            if (const auto* number = std::get_if<double>(&value)) result += Print(conversion, "", *number);
            break;
        default:
            return false;
        }
    }
    return Assign(std::u16string_view(result));
}
