#pragma once

#include <odfmodel/core/string.h>

#include <string>
#include <string_view>
#include <utility>

namespace ODF::platform {

/// A file name on its way to the system: UTF-8 with `/` between folders. A name that comes from outside is
/// taken as it is; only `operator/`, which builds the library's own paths, reads `\` as a separator too.
class Path {
public:
    Path() = default;
    Path(const unsigned short* text) : utf8_(ToUtf8(text)) {}     // NOLINT(google-explicit-constructor)
    Path(const char16_t* text) : utf8_(ToUtf8(ToUnits(text))) {}  // NOLINT(google-explicit-constructor)
    Path(std::u16string_view text) : utf8_(ToUtf8(text)) {}       // NOLINT(google-explicit-constructor)
    Path(const CTulStringW& text) : utf8_(ToUtf8(text.view())) {} // NOLINT(google-explicit-constructor)
    Path(std::string utf8) noexcept : utf8_(std::move(utf8)) {}   // NOLINT(google-explicit-constructor)
    Path(std::string_view utf8) : utf8_(utf8) {}                  // NOLINT(google-explicit-constructor)
    Path(const char* utf8) : utf8_(utf8 ? utf8 : "") {}           // NOLINT(google-explicit-constructor)

    bool empty() const noexcept { return utf8_.empty(); }
    const std::string& utf8() const& noexcept { return utf8_; }
    std::string utf8() && noexcept { return std::move(utf8_); }
    /// The path in the interface's own text type.
    CTulStringW text() const { return CTulStringW(std::string_view(utf8_)); }

    /// The part after the last `/` or `\`.
    std::string name() const;
    /// The name without its extension.
    std::string stem() const;
    /// The extension with its dot; empty when there is none.
    std::string extension() const;
    /// The folder that holds the file, as the system sees it: "." for a bare name, "/" for the root.
    Path parent() const;

    friend bool operator==(const Path&, const Path&) = default;

private:
    std::string utf8_;
};

/// `relative` below `folder`: its `\` become `/`, and separators at the seam are folded into one.
Path operator/(const Path& folder, const Path& relative);

/// `path` from the root on, with "." and ".." steps folded by text alone; nothing need be there.
Path Absolute(const Path& path);

} // namespace ODF::platform
