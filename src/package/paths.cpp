#include "package/paths.h"

#include <odfmodel/package/text.h>

#include <algorithm>
#include <vector>

namespace SDPackage {

bool LessIgnoringCase(Units a, Units b) noexcept {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](char16_t left, char16_t right) { return FoldCase(left) < FoldCase(right); });
}

bool EqualIgnoringCase(Units a, Units b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t left, char16_t right) { return FoldCase(left) == FoldCase(right); });
}

bool IgnoreCaseLess::operator()(const CTulStringW& a, const CTulStringW& b) const noexcept {
    return LessIgnoringCase(a.view(), b.view());
}

Units FileNameOf(Units path) noexcept {
    return path.substr(FolderOf(path).size());
}

Units FolderOf(Units path) noexcept {
    const auto last = path.find_last_of(u"/\\");
    return last == Units::npos ? Units() : path.substr(0, last + 1);
}

Units ExtensionOf(Units path) noexcept {
    const Units name = FileNameOf(path);
    const auto dot = name.rfind(u'.');
    return dot == Units::npos ? Units() : name.substr(dot);
}

Units WithoutLeadingSeparator(Units path) noexcept {
    return !path.empty() && IsSeparator(path.front()) ? path.substr(1) : path;
}

std::u16string WithSlashes(Units path) {
    std::u16string result(path);
    std::replace(result.begin(), result.end(), u'\\', u'/');
    return result;
}

std::u16string WithBackslashes(Units path) {
    std::u16string result(path);
    std::replace(result.begin(), result.end(), u'/', u'\\');
    return result;
}

bool HasParentStep(Units path) noexcept {
    bool found = false;
    ForEachStep(path, [&](Units step) { found = found || step == u".."; });
    return found;
}

std::u16string FoldPath(Units path) {
    std::u16string result;
    ForEachStep(path, [&](Units step) {
        if (step == u".") return;
        if (step == u"..") {
            result.resize(result.empty() ? 0 : result.rfind(u'/'));
            return;
        }
        result += u'/';
        result += step;
    });
    if (result.empty() || IsSeparator(path.back())) result += u'/';
    return result;
}

std::string Unescaped(std::string_view text) {
    const auto digit = [&](std::size_t at) {
        const char c = at < text.size() ? text[at] : '\0';
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    };
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' ? digit(i + 1) : -1;
        const int low = high >= 0 ? digit(i + 2) : -1;
        const int byte = low >= 0 ? high * 16 + low : 0;
        result += byte > 0 ? static_cast<char>(byte) : text[i];
        if (byte > 0) i += 2;
    }
    return result;
}

} // namespace SDPackage
