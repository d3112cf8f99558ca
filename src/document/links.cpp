#include "document/links.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

namespace ODF {

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

void SetLink(CSDObject& object, std::string_view href) {
    SetAttributeText(object, "xlink:href", href);
    SetAttributeText(object, "xlink:type", "simple");
    SetAttributeText(object, "xlink:show", "embed");
    SetAttributeText(object, "xlink:actuate", "onLoad");
}

void UnsetLink(CSDObject& object) {
    for (const char* const name : {"xlink:href", "xlink:type", "xlink:show", "xlink:actuate"})
        object.Unset(name);
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

} // namespace ODF
