#include "document/flat/style_names.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

namespace ODF::flat {
namespace {

/// What an attribute of that name refers to.
StyleSpace SpaceOfReference(const CSDObject& object, std::string_view attribute) {
    const std::string_view local = attribute.substr(attribute.find(':') + 1);
    if (local == "page-layout-name") return StyleSpace::PageLayout;
    if (local.ends_with("data-style-name")) return StyleSpace::Data;
    if (local == "list-style-name") return StyleSpace::List;
    if (!local.ends_with("style-name")) return StyleSpace::None;
    const unsigned id = object.GetID();
    if (local == "style-name" && (id == CTextList::kId || id == CTextNumberedParagraph::kId))
        return StyleSpace::List;
    // A condition applies a style of its own kind.
    const CSDObject* const parent = object.Parent();
    if (id == CStyleMap::kId && parent && SpaceOf(*parent) == StyleSpace::Data) return StyleSpace::Data;
    return StyleSpace::Style;
}

} // namespace

StyleSpace SpaceOf(const CSDObject& style) {
    switch (style.GetID()) {
    case CStyleStyle::kId:
        return StyleSpace::Style;
    case CTextListStyle::kId:
        return StyleSpace::List;
    case CStylePageLayout::kId:
        return StyleSpace::PageLayout;
    default:
        break;
    }
    const auto info = ClassOf(style);
    const bool isData =
        info && info->elementName().starts_with("number:") && info->elementName().ends_with("-style");
    return isData ? StyleSpace::Data : StyleSpace::None;
}

std::string NameOfStyle(const CSDObject& style) {
    return AttributeOf(style, "style:name");
}

std::string KeyOfStyle(const CSDObject& style) {
    std::string key = std::to_string(static_cast<int>(SpaceOf(style)));
    return key.append(" ").append(AttributeOf(style, "style:family")).append(" ").append(NameOfStyle(style));
}

void ForEachReference(CSDObject& root, const VisitReference& visit) {
    const auto look = [&](CSDObject& object) {
        for (const AttributeText& attribute : AttributesOf(object)) {
            if (!attribute.name.ends_with("-name")) continue;
            const StyleSpace space = SpaceOfReference(object, attribute.name);
            if (space == StyleSpace::None) continue;
            if (const auto renamed = visit(space, attribute.value))
                SetAttributeText(object, attribute.name, *renamed);
        }
    };
    look(root);
    for (CSDObject& object : root.Descendants())
        look(object);
}

} // namespace ODF::flat
