#pragma once

#include <odfmodel/export.h>

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

/// Text in the interface is null-terminated UTF-16 in 16-bit units of type `unsigned short`. These two
/// helpers cross between that unit and the language's own `char16_t`; both have the same size and
/// representation.
inline const char16_t* ToChar16(const unsigned short* text) noexcept {
    return reinterpret_cast<const char16_t*>(text);
}
inline const unsigned short* ToUnits(const char16_t* text) noexcept {
    return reinterpret_cast<const unsigned short*>(text);
}

/// The units of a null-terminated text as a view; empty for a null pointer.
inline std::u16string_view ToView(const unsigned short* text) noexcept {
    return text ? std::u16string_view(ToChar16(text)) : std::u16string_view();
}

namespace ODF {

/// UTF-8 to UTF-16. Every ill-formed sequence becomes U+FFFD.
ODFMODEL_API std::u16string ToUtf16(std::string_view utf8);
/// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD.
ODFMODEL_API std::string ToUtf8(std::u16string_view utf16);
/// The same for a null-terminated text in the interface's units; empty for null.
inline std::string ToUtf8(const unsigned short* text) {
    return ToUtf8(ToView(text));
}

class TextMaker;

/// A file name of the standard library, told by what it can do, so that nobody pays for its header.
template<typename T>
concept FilePath = requires(const T& path) {
    path.native();
    path.u8string();
    path.lexically_normal();
};
/// What `CTulStringW` compares and concatenates with.
template<typename T>
concept TextLike =
    std::convertible_to<const T&, std::string_view> || std::convertible_to<const T&, std::u16string_view> ||
    std::convertible_to<const T&, const unsigned short*>;

/// Stands before the units of every buffer of a `CTulStringW`.
struct StringHeader {
    std::int32_t references; ///< strings that share the buffer; -2 marks the shared empty one
    std::uint32_t length;    ///< units in use, without the terminator
    std::uint32_t capacity;  ///< units that fit, without the terminator
};

} // namespace ODF

/// Reference-counted UTF-16 string with copy on write: the value of nearly all attributes.
///
/// A copy shares the buffer and costs one atomic addition. The buffer is left before any change while another
/// string shares it, so two strings that share one may be used on two threads; one string object may not be
/// changed on one thread while another reads that same object. All empty strings share one static buffer.
/// Operations that need memory report `false` when there is none and leave the string as it was. Constructors
/// and operators, which have no such result, throw std::bad_alloc.
class ODFMODEL_API CTulStringW {
public:
    CTulStringW() noexcept;
    CTulStringW(std::nullptr_t) noexcept;                        // NOLINT(google-explicit-constructor)
    CTulStringW(const unsigned short* text);                     // NOLINT(google-explicit-constructor)
    CTulStringW(const unsigned short* text, std::size_t length); ///< Stops at a 0 unit within `length`.
    CTulStringW(const char16_t* text);                           // NOLINT(google-explicit-constructor)
    CTulStringW(std::u16string_view text);                       // NOLINT(google-explicit-constructor)
    CTulStringW(const std::u16string& text);                     // NOLINT(google-explicit-constructor)
    CTulStringW(const char* utf8);                               // NOLINT(google-explicit-constructor)
    CTulStringW(std::string_view utf8);                          // NOLINT(google-explicit-constructor)
    CTulStringW(const std::string& utf8);                        // NOLINT(google-explicit-constructor)
    template<ODF::FilePath Path>
    CTulStringW(const Path& path) : CTulStringW(FromPath(path)) {} // NOLINT(google-explicit-constructor)
    CTulStringW(const CTulStringW& other) noexcept;
    CTulStringW(CTulStringW&& other) noexcept;
    ~CTulStringW();

    CTulStringW& operator=(const CTulStringW& other) noexcept;
    CTulStringW& operator=(CTulStringW&& other) noexcept;
    CTulStringW& operator=(const unsigned short* text);

    /// The units with their 0 terminator; never null. Valid until the string changes or goes.
    operator const unsigned short*() const noexcept { return units_; } // NOLINT(google-explicit-constructor)
    const unsigned short* c_str() const noexcept { return units_; }
    std::u16string_view view() const noexcept { return {ToChar16(units_), GetLength()}; }
    std::string utf8() const { return ODF::ToUtf8(view()); }

    /// Length in 16-bit units, without the terminator.
    std::size_t GetLength() const noexcept { return header().length; }
    /// Units that fit without a new buffer; 0 for the shared empty buffer.
    std::size_t GetCapacity() const noexcept { return header().capacity; }
    bool IsEmpty() const noexcept { return *units_ == 0; }

    void Clear() noexcept;
    /// Takes the first `length` units of `text`, stopping at a 0 unit. A null `text` gives the empty string.
    bool Assign(const unsigned short* text, std::size_t length);
    bool Assign(std::u16string_view text);
    bool Append(const unsigned short* text, std::size_t length);
    bool Append(std::u16string_view text);
    bool Append(unsigned short unit);
    CTulStringW& operator+=(const CTulStringW& text);
    CTulStringW& operator+=(unsigned short unit);

    /// Replaces every `from` unit by `to`. `to` may not be 0.
    bool Replace(unsigned short from, unsigned short to);
    /// Replaces every occurrence of `from`, left to right and without overlap; what was put in is not
    /// searched.
    bool Replace(const CTulStringW& from, const CTulStringW& to);

    /// The first or last `count` units, or all when there are fewer.
    CTulStringW Left(std::size_t count) const;
    CTulStringW Right(std::size_t count) const;
    /// The units from `start` on, at most `count` of them.
    CTulStringW Mid(std::size_t start, std::size_t count = std::u16string_view::npos) const;

    /// An argument of `Format`: a text, a whole number or a floating point number.
    class FormatArgument {
    public:
        FormatArgument(const CTulStringW& text) : value_(text.view()) {}            // NOLINT
        FormatArgument(const unsigned short* text) : value_(ToView(text)) {}        // NOLINT
        FormatArgument(std::u16string_view text) : value_(text) {}                  // NOLINT
        FormatArgument(const char16_t* text) : value_(std::u16string_view(text)) {} // NOLINT
        template<typename T>
        requires std::integral<T> FormatArgument(T number) : value_(widen(number)) {} // NOLINT
        FormatArgument(double number) : value_(number) {}                             // NOLINT

    private:
        friend class CTulStringW;
        using Value = std::variant<std::u16string_view, long long, unsigned long long, double>;
        template<typename T>
        static Value widen(T number) {
            if constexpr (std::is_signed_v<T>)
                return Value(static_cast<long long>(number));
            else
                return Value(static_cast<unsigned long long>(number));
        }
        Value value_;
    };

    /// Fills the string from a `printf`-style format: %s takes a text, %c a unit, %d %i %u %x %X %o a whole
    /// number, %f %e %g a floating point number, each with the usual flags, width and precision. A conversion
    /// without a matching argument gives nothing. Returns false when memory or the format fails.
    template<typename... Arguments>
    bool Format(std::u16string_view format, const Arguments&... arguments) {
        return FormatList(format, {FormatArgument(arguments)...});
    }

    void swap(CTulStringW& other) noexcept {
        unsigned short* const mine = units_;
        units_ = other.units_;
        other.units_ = mine;
    }

    friend bool operator==(const CTulStringW& a, const CTulStringW& b) noexcept {
        return a.view() == b.view();
    }
    friend bool operator==(const CTulStringW& a, const unsigned short* b) noexcept {
        return a.view() == ToView(b);
    }
    friend bool operator==(const CTulStringW& a, const char16_t* b) noexcept { return a.view() == b; }
    friend bool operator==(const CTulStringW& a, std::u16string_view b) noexcept { return a.view() == b; }
    friend bool operator==(const CTulStringW& a, const std::u16string& b) noexcept { return a.view() == b; }
    friend bool operator==(const CTulStringW& a, std::string_view b) { return a.utf8() == b; }
    friend bool operator==(const CTulStringW& a, const std::string& b) { return a.utf8() == b; }
    friend bool operator==(const CTulStringW& a, const char* b) { return a.utf8() == b; }
    /// Texts of any kind after or before one; numbers don't count as texts.
    template<ODF::TextLike T>
    friend CTulStringW operator+(const CTulStringW& a, const T& b) {
        CTulStringW sum(a);
        sum += CTulStringW(b);
        return sum;
    }
    template<ODF::TextLike T>
    requires(!std::same_as<T, CTulStringW>) friend CTulStringW operator+(const T& a, const CTulStringW& b) {
        CTulStringW sum(a);
        sum += b;
        return sum;
    }
    /// Binary order: the units compared as unsigned numbers.
    friend std::strong_ordering operator<=>(const CTulStringW& a, const CTulStringW& b) noexcept {
        return a.view() <=> b.view();
    }

private:
    friend class ODF::TextMaker;

    template<typename Path>
    static CTulStringW FromPath(const Path& path) {
        if constexpr (sizeof(path.native()[0]) == 1) // no exception for bytes that aren't UTF-8
            return CTulStringW(std::string_view(path.native()));
        else
            return CTulStringW(std::u16string_view(path.u16string()));
    }
    const ODF::StringHeader& header() const noexcept {
        return reinterpret_cast<const ODF::StringHeader*>(units_)[-1];
    }
    bool FormatList(std::u16string_view format, std::initializer_list<FormatArgument> arguments);

    unsigned short* units_;
};

inline void swap(CTulStringW& a, CTulStringW& b) noexcept {
    a.swap(b);
}

/// Writes the text in UTF-8.
ODFMODEL_API std::ostream& operator<<(std::ostream& out, const CTulStringW& text);

/// Texts that are equal have the same hash, which is that of their view.
template<>
struct std::hash<CTulStringW> {
    std::size_t operator()(const CTulStringW& text) const noexcept {
        return std::hash<std::u16string_view>()(text.view());
    }
};
