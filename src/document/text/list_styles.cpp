#include "document/text/list_styles.h"

#include <algorithm>

namespace ODF::reading {
namespace {

/// What is around a number comes with every item, so that a long one would swell the output out of
/// proportion.
constexpr std::size_t kMaxAffix = 256;

} // namespace

ListStyles::ListStyles() {
    for (ListLevel& level : outline_)
        level.kind = ListLevel::Kind::Plain;
}

void ListStyles::start(Element element, const Attributes& attributes) {
    switch (element) {
    case Element::AutomaticStyles:
        isAutomatic_ = true;
        break;
    case Element::Styles:
        isCommon_ = true;
        break;
    case Element::Style:
        if (attributes.get("style:family") == "paragraph" && (isAutomatic_ || isCommon_)) {
            ParagraphStyle style{
                attributes.get("style:parent-style-name"), attributes.find("style:list-style-name"), {}};
            if (const auto level = attributes.find("style:default-outline-level"); level && !level->empty())
                style.outlineLevel = attributes.number("style:default-outline-level", 0);
            (isAutomatic_ ? automatic_ : common_)[attributes.get("style:name")] = std::move(style);
        }
        break;
    case Element::ListStyle:
        open_ = &(lists_[attributes.get("style:name")] = ListStyle());
        break;
    case Element::OutlineStyle:
        open_ = &outline_;
        break;
    case Element::NumberLevel:
    case Element::OutlineLevel:
        addLevel(ListLevel::Kind::Number, attributes);
        break;
    case Element::BulletLevel:
    case Element::ImageLevel:
        addLevel(ListLevel::Kind::Bullet, attributes);
        break;
    default:
        break;
    }
}

void ListStyles::end(Element element) {
    if (element == Element::AutomaticStyles) isAutomatic_ = false;
    if (element == Element::Styles) isCommon_ = false;
    if (element == Element::ListStyle || element == Element::OutlineStyle) open_ = nullptr;
}

void ListStyles::addLevel(ListLevel::Kind kind, const Attributes& attributes) {
    const std::size_t level = attributes.number("text:level", 0);
    if (!open_ || level == 0 || level > kListLevels) return;
    ListLevel& row = (*open_)[level - 1];
    row.kind = kind;
    row.format = attributes.get("style:num-format");
    if (kind == ListLevel::Kind::Number && row.format.empty()) row.kind = ListLevel::Kind::Plain;
    row.isLetterSync = attributes.isTrue("style:num-letter-sync");
    row.prefix = attributes.get("style:num-prefix").substr(0, kMaxAffix);
    row.suffix = attributes.get("style:num-suffix").substr(0, kMaxAffix);
    row.start = attributes.number("text:start-value", 1);
    row.shownLevels = std::clamp<unsigned>(attributes.number("text:display-levels", 1), 1, kListLevels);
}

const ListStyle* ListStyles::find(const std::string& name) const {
    const auto at = lists_.find(name);
    return at == lists_.end() ? nullptr : &at->second;
}

const ParagraphStyle* ListStyles::named(const std::string& name) const {
    const auto at = common_.find(name);
    return at == common_.end() ? nullptr : &at->second;
}

unsigned ListStyles::outlineLevelOf(const std::string& paragraphStyle, unsigned level) const {
    const auto automatic = automatic_.find(paragraphStyle);
    const bool isAutomatic = automatic != automatic_.end();
    // A list style of its own takes a paragraph out of the outline.
    if (isAutomatic && automatic->second.listStyle) return 0;
    if (level > 0) return level;
    if (isAutomatic && automatic->second.outlineLevel) return *automatic->second.outlineLevel;
    const ParagraphStyle* const style = named(isAutomatic ? automatic->second.parent : paragraphStyle);
    return style ? style->outlineLevel.value_or(0) : 0;
}

} // namespace ODF::reading
