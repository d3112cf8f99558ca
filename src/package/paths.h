#pragma once

#include <odfmodel/core/string.h>

#include <string>
#include <string_view>

/// Package paths: member names in the interface's text, with `/` or `\` between their steps.
namespace SDPackage {

using Units = std::u16string_view;

constexpr bool IsSeparator(char16_t unit) noexcept {
    return unit == u'/' || unit == u'\\';
}

/// One unit as names without regard to case compare it. ASCII alone, so that no locale decides and no two
/// names become one that a file system keeps apart.
constexpr char16_t FoldCase(char16_t unit) noexcept {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

bool LessIgnoringCase(Units a, Units b) noexcept;
bool EqualIgnoringCase(Units a, Units b) noexcept;

/// The part after the last separator.
Units FileNameOf(Units path) noexcept;
/// The part up to the last separator, which it includes; empty without one.
Units FolderOf(Units path) noexcept;
/// The extension of the file name with its dot; empty when there is none.
Units ExtensionOf(Units path) noexcept;
/// `path` without one leading separator.
Units WithoutLeadingSeparator(Units path) noexcept;

std::u16string WithSlashes(Units path);
std::u16string WithBackslashes(Units path);

/// Calls `visit` with each step of `path`, empty ones left out.
template<typename Visit>
void ForEachStep(Units path, Visit visit) {
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = start;
        while (end < path.size() && !IsSeparator(path[end]))
            ++end;
        if (end > start) visit(path.substr(start, end - start));
        start = end + 1;
    }
}

/// Whether a step of `path` is "..".
bool HasParentStep(Units path) noexcept;
/// `path` from "/" on with `/` between its steps, "." and ".." folded by text alone; a ".." at the top stays
/// at the top. A separator at the end stays.
std::u16string FoldPath(Units path);
/// A name or link in UTF-8 with its percent escapes resolved; "%00" stays.
std::string Unescaped(std::string_view text);

} // namespace SDPackage
