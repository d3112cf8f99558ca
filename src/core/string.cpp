#include <odfmodel/core/string.h>

#include "core/string_buffer.h"
#include "core/utf.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <ostream>

using namespace ODF::string_buffer;

namespace {

/// Length up to the first 0 unit.
std::size_t Terminated(std::u16string_view text) noexcept {
    // Eight units at a time, which the compiler turns into wide instructions.
    constexpr std::size_t kStep = 8;
    std::size_t at = 0;
    for (; text.size() - at >= kStep; at += kStep) {
        bool hasZero = false;
        for (std::size_t i = 0; i < kStep; ++i)
            hasZero |= text[at + i] == 0;
        if (hasZero) break;
    }
    while (at < text.size() && text[at] != 0)
        ++at;
    return at;
}

/// Where an operation has no result to tell a lack of memory by: an empty string must not pass for a value.
void Require(bool isDone) {
    if (!isDone) throw std::bad_alloc();
}

} // namespace

CTulStringW::CTulStringW() noexcept : units_(Nil()) {}
CTulStringW::CTulStringW(std::nullptr_t) noexcept : units_(Nil()) {}
CTulStringW::CTulStringW(const unsigned short* text) : CTulStringW(ToView(text)) {}
CTulStringW::CTulStringW(const unsigned short* text, std::size_t length) : units_(Nil()) {
    Require(Assign(text, length));
}
CTulStringW::CTulStringW(const char16_t* text)
    : CTulStringW(text ? std::u16string_view(text) : std::u16string_view()) {}
CTulStringW::CTulStringW(std::u16string_view text) : units_(Nil()) {
    Require(Assign(text));
}
CTulStringW::CTulStringW(const std::u16string& text) : CTulStringW(std::u16string_view(text)) {}
CTulStringW::CTulStringW(const char* utf8)
    : CTulStringW(utf8 ? std::string_view(utf8) : std::string_view()) {}
CTulStringW::CTulStringW(const std::string& utf8) : CTulStringW(std::string_view(utf8)) {}
CTulStringW::CTulStringW(std::string_view utf8) : units_(Nil()) {
    utf8 = utf8.substr(0, utf8.find('\0'));
    unsigned short* const units = Allocate(utf8.size());
    Require(units != nullptr);
    if (units != Nil()) {
        SetLength(units, ODF::DecodeUtf8(utf8, reinterpret_cast<char16_t*>(units)));
        units_ = Fitted(units);
    }
}

CTulStringW::CTulStringW(const CTulStringW& other) noexcept : units_(Share(other.units_)) {}
CTulStringW::CTulStringW(CTulStringW&& other) noexcept : units_(other.units_) {
    other.units_ = Nil();
}
CTulStringW::~CTulStringW() {
    Release(units_);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): sharing before releasing takes care of it
CTulStringW& CTulStringW::operator=(const CTulStringW& other) noexcept {
    unsigned short* const shared = Share(other.units_);
    Release(units_);
    units_ = shared;
    return *this;
}
CTulStringW& CTulStringW::operator=(CTulStringW&& other) noexcept {
    swap(other);
    return *this;
}
CTulStringW& CTulStringW::operator=(const unsigned short* text) {
    Require(Assign(ToView(text)));
    return *this;
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
                     text.size() * sizeof(unsigned short)); // may be in this very buffer
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
    // A string that is built piece by piece gets more room each time, so that it is copied a few times only.
    const std::size_t room = std::min(length + length / 2, kMaxLength);
    unsigned short* const units = Join(view(), text, room);
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
    Require(Append(text.view())); // which may be this very string
    return *this;
}
CTulStringW& CTulStringW::operator+=(unsigned short unit) {
    Require(Append(unit));
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
    try {
        std::u16string result;
        std::size_t at = 0;
        for (std::size_t hit = 0; (hit = text.find(from, at)) != std::u16string_view::npos;
             at = hit + from.size())
            result.append(text.substr(at, hit - at)).append(toText.view());
        result.append(text.substr(at));
        return Assign(std::u16string_view(result));
    } catch (const std::bad_alloc&) {
        return false;
    }
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

bool CTulStringW::FormatList(std::u16string_view format,
                             std::initializer_list<FormatArgument> arguments) try {
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
} catch (const std::bad_alloc&) {
    return false;
}

std::ostream& operator<<(std::ostream& out, const CTulStringW& text) {
    return out << text.utf8();
}
