#include "document/flat/links.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

#include <algorithm>

namespace ODF::flat {

std::string HrefOf(const CSDObject& object) {
    return AttributeOf(object, "xlink:href");
}

bool IsRelative(std::string_view href) {
    if (href.empty() || href.front() == '#' || href.front() == '/') return false;
    const std::size_t colon = href.find(':');
    return colon == std::string_view::npos || colon > href.find_first_of("/?#");
}

std::string MemberOf(std::string_view href, std::string_view folder) {
    while (href.starts_with("./"))
        href.remove_prefix(2);
    while (href.ends_with('/'))
        href.remove_suffix(1);
    const bool isInside = IsRelative(href) && !href.starts_with("../") && href != "..";
    return isInside ? std::string(folder).append(href) : std::string();
}

std::string Unescaped(std::string_view href) {
    const auto digit = [](char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    };
    std::string text;
    for (std::size_t i = 0; i < href.size(); ++i) {
        if (href[i] == '%' && i + 2 < href.size() && digit(href[i + 1]) >= 0 && digit(href[i + 2]) >= 0) {
            text += static_cast<char>(digit(href[i + 1]) * 16 + digit(href[i + 2]));
            i += 2;
        } else {
            text += href[i];
        }
    }
    return text;
}

bool MayHoldData(const CSDObject& object) {
    switch (object.GetID()) {
    case CDrawImage::kId:
    case CDrawFillImage::kId:
    case CDrawObjectOle::kId:
    case CStyleBackgroundImage::kId:
    case CTextListLevelStyleImage::kId:
    case CSvgFontFaceUri::kId:
        return true;
    default:
        return false;
    }
}

} // namespace ODF::flat
