#include "convert/looks.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

namespace command {
namespace {

constexpr std::size_t kMaxParents = 32; // styles may go in a circle

constexpr bool Look::*kParts[] = {&Look::isBold, &Look::isItalic, &Look::isStruck, &Look::isRaised,
                                  &Look::isLowered};

} // namespace

Look Look::without(const Look& other) const {
    Look rest;
    for (bool Look::*const part : kParts)
        rest.*part = this->*part && !(other.*part);
    return rest;
}

Look Look::with(const Look& other) const {
    Look sum;
    for (bool Look::*const part : kParts)
        sum.*part = this->*part || other.*part;
    return sum;
}

Looks::Looks(ODF::Document& document) {
    const CSDObject* const roots[] = {document.Styles(), document.Flat(), document.Content()};
    for (const CSDObject* const root : roots) {
        if (!root) continue;
        // Automatic styles of styles.xml are of no use to the content.
        const bool isStyles = root->GetID() == ODF::COfficeDocumentStyles::kId;
        if (const auto* const common = root->Child<ODF::COfficeStyles>()) takeStyles(*common);
        if (const auto* const automatic = root->Child<ODF::COfficeAutomaticStyles>(); automatic && !isStyles)
            takeStyles(*automatic);
    }
}

void Looks::takeStyles(const CSDObject& styles) {
    for (const auto& object : styles.Children<ODF::CStyleStyle>()) {
        if (ODF::AttributeOf(object, "style:family") != "text") continue;
        Style style;
        style.parent = ODF::AttributeOf(object, "style:parent-style-name");
        if (const auto* const properties = object.Child<ODF::CStyleTextProperties>()) {
            style.weight = ODF::AttributeOf(*properties, "fo:font-weight");
            style.posture = ODF::AttributeOf(*properties, "fo:font-style");
            style.strike = ODF::AttributeOf(*properties, "style:text-line-through-style");
            style.position = ODF::AttributeOf(*properties, "style:text-position");
        }
        styles_[ODF::AttributeOf(object, "style:name")] = std::move(style);
    }
    for (const auto& list : styles.Children<ODF::CTextListStyle>()) {
        std::set<std::size_t>& levels = numbered_[ODF::AttributeOf(list, "style:name")];
        levels.clear();
        for (const auto& level : list.Children<ODF::CTextListLevelStyleNumber>())
            if (!ODF::AttributeOf(level, "style:num-format").empty())
                levels.insert(
                    static_cast<std::size_t>(std::atoi(ODF::AttributeOf(level, "text:level").c_str())));
    }
}

Look Looks::of(const std::string& textStyle) const {
    Style sum;
    const std::string* name = &textStyle;
    for (std::size_t i = 0; i < kMaxParents; ++i) {
        const auto at = styles_.find(*name);
        if (at == styles_.end()) break;
        const Style& style = at->second;
        for (auto member : {&Style::weight, &Style::posture, &Style::strike, &Style::position})
            if ((sum.*member).empty()) sum.*member = style.*member;
        name = &style.parent;
    }
    Look look;
    look.isBold = sum.weight == "bold" || (sum.weight.size() == 3 && sum.weight >= "600");
    look.isItalic = sum.posture == "italic" || sum.posture == "oblique";
    look.isStruck = !sum.strike.empty() && sum.strike != "none";
    look.isLowered = sum.position.starts_with("sub") || sum.position.starts_with('-');
    look.isRaised = !sum.position.empty() && !look.isLowered && !sum.position.starts_with('0');
    return look;
}

bool Looks::isNumbered(const std::string& listStyle, std::size_t level) const {
    const auto at = numbered_.find(listStyle);
    return at != numbered_.end() && at->second.contains(level);
}

} // namespace command
