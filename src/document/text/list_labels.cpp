#include "document/text/list_labels.h"

#include "document/text/numbers.h"

#include <algorithm>

namespace ODF::reading {
namespace {

constexpr std::string_view kOutlineStyle = "Outline";
/// Plain text has no fonts to show the list's own bullets with, so that the depth decides.
constexpr std::array<std::string_view, 3> kBullets{"\u2022", "\u25E6", "\u25AA"};

const ListStyle& DefaultStyle() {
    static const ListStyle kBulletStyle;
    return kBulletStyle;
}

} // namespace

ListLabels::ListLabels(const ListStyles& styles) : styles_(styles), blocks_(1) {}

void ListLabels::startBlock() {
    blocks_.emplace_back();
}

void ListLabels::endBlock() {
    blocks_.pop_back();
}

std::shared_ptr<ListLabels::Numbers> ListLabels::continued(const Attributes& attributes,
                                                           const std::string& style) {
    if (style == kOutlineStyle) return outline_;
    if (const auto known = byId_.find(attributes.get("text:continue-list")); known != byId_.end())
        return known->second;
    if (const auto known = byStyle_.find(style);
        known != byStyle_.end() && attributes.isTrue("text:continue-numbering"))
        return known->second;
    return std::make_shared<Numbers>();
}

void ListLabels::startList(const Attributes& attributes) {
    std::vector<List>& lists = blocks_.back();
    std::string style = attributes.get("text:style-name");
    if (lists.empty()) {
        const auto numbers = continued(attributes, style);
        if (const std::string id = attributes.get("xml:id"); !id.empty()) byId_[id] = numbers;
        byStyle_[style] = numbers;
        const bool isContinued =
            attributes.isTrue("text:continue-numbering") || attributes.find("text:continue-list");
        lists.push_back({std::move(style), numbers, isContinued, {}});
        return;
    }
    // A list inside counts on its own level of the same numbers.
    const List& outer = lists.back();
    if (style.empty()) style = outer.style;
    const std::size_t level = std::min(lists.size(), kListLevels - 1);
    const bool isContinued = outer.isContinued || attributes.isTrue("text:continue-numbering");
    if (!isContinued)
        std::fill(outer.numbers->levels.begin() + static_cast<std::ptrdiff_t>(level),
                  outer.numbers->levels.end(), std::nullopt);
    lists.push_back({std::move(style), outer.numbers, isContinued, {}});
}

void ListLabels::endList() {
    if (!blocks_.back().empty()) blocks_.back().pop_back();
}

void ListLabels::startItem(bool isCounted, const Attributes& attributes) {
    if (blocks_.back().empty()) return;
    Item& item = blocks_.back().back().item;
    item = {true, isCounted, {}};
    if (attributes.find("text:start-value")) item.start = attributes.number("text:start-value", 1);
}

void ListLabels::endItem() {
    if (!blocks_.back().empty()) blocks_.back().back().item = {};
}

void ListLabels::startNumberedParagraph(const Attributes& attributes) {
    startBlock();
    const std::string style = attributes.get("text:style-name");
    std::shared_ptr<Numbers>& numbers = numbered_[style];
    if (!numbers) numbers = std::make_shared<Numbers>();
    const std::size_t level = std::clamp<std::size_t>(attributes.number("text:level", 1), 1, kListLevels);
    blocks_.back().assign(level, {style, numbers, false, {}});
    startItem(true, attributes);
}

void ListLabels::endNumberedParagraph() {
    endBlock();
}

Label ListLabels::next(unsigned outlineLevel, const Attributes& attributes) {
    std::vector<List>& lists = blocks_.back();
    if (lists.empty()) return nextOfOutline(outlineLevel, attributes);
    for (List& list : lists)
        list.isContinued = false;
    Label label{std::min(lists.size(), kListLevels), {}};
    List& list = lists.back();
    if (!list.item.isOpen || !list.item.isCounted) return label;
    const bool isOutline = list.numbers == outline_;
    const ListStyle* const found = isOutline ? &styles_.outline() : styles_.find(list.style);
    const ListStyle& style = found ? *found : DefaultStyle();
    count(*list.numbers, style, label.level - 1, list.item.start);
    label.text = textOf(*list.numbers, style, label.level - 1);
    list.item.isCounted = false; // the paragraphs that follow in the item have no label
    if (isOutline) label.level = 0;
    return label;
}

Label ListLabels::nextOfOutline(unsigned level, const Attributes& attributes) {
    level = styles_.outlineLevelOf(attributes.get("text:style-name"), level);
    if (level == 0 || level > kListLevels || attributes.isTrue("text:is-list-header")) return {};
    std::optional<unsigned> start;
    if (attributes.isTrue("text:restart-numbering"))
        start = attributes.number("text:start-value", styles_.outline()[level - 1].start);
    count(*outline_, styles_.outline(), level - 1, start);
    return {0, textOf(*outline_, styles_.outline(), level - 1)};
}

void ListLabels::count(Numbers& numbers, const ListStyle& style, std::size_t level,
                       std::optional<unsigned> start) {
    for (std::size_t i = 0; i < level; ++i) // levels that were passed over count as begun
        if (!numbers.levels[i]) numbers.levels[i] = style[i].start;
    std::optional<unsigned>& number = numbers.levels[level];
    number = start ? *start : number ? *number + 1 : style[level].start;
    std::fill(numbers.levels.begin() + static_cast<std::ptrdiff_t>(level) + 1, numbers.levels.end(),
              std::nullopt);
}

std::string ListLabels::textOf(const Numbers& numbers, const ListStyle& style, std::size_t level) {
    const ListLevel& own = style[level];
    if (own.kind == ListLevel::Kind::Plain) return {};
    if (own.kind == ListLevel::Kind::Bullet) return std::string(kBullets[level % kBullets.size()]);
    std::string text = own.prefix;
    const std::size_t first = level + 1 - std::min<std::size_t>(own.shownLevels, level + 1);
    for (std::size_t i = first; i <= level; ++i) {
        const ListLevel& shown = style[i];
        if (shown.kind == ListLevel::Kind::Plain) continue;
        if (shown.kind == ListLevel::Kind::Number)
            text += FormatNumber(numbers.levels[i].value_or(shown.start), shown.format, shown.isLetterSync);
        if (i < level) text += '.';
    }
    return text + own.suffix;
}

} // namespace ODF::reading
