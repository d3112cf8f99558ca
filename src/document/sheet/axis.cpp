#include "document/sheet/axis.h"

#include "core/object_access.h"
#include "document/sheet/tree_edit.h"

#include <odfmodel/elements/table/spreadsheet.h>
#include <odfmodel/elements/table/structure.h>
#include <odfmodel/elements/text/paragraph.h>

#include <algorithm>
#include <utility>

namespace ODF {

void CellIndex::build(const CSDObject& row) {
    const std::vector<CSDObject*>& children = ChildrenOf(row);
    std::uint32_t position = 0;
    while (position < children.size() && children[position] && IsCell(*children[position]) &&
           RepeatOf(*children[position]) == 1)
        ++position;
    plain_ = position;
    rest_.reset();
    if (position == children.size()) return;
    auto rest = std::make_unique<std::vector<CellEntry>>();
    std::uint64_t column = position;
    for (; position < children.size(); ++position) {
        CSDObject* const child = children[position];
        if (!child || !IsCell(*child)) continue;
        const std::uint32_t repeat = RepeatOf(*child);
        rest->push_back({column, child, repeat, position});
        column += repeat;
    }
    rest_ = std::move(rest);
}

std::size_t CellIndex::indexOf(std::uint64_t column) const noexcept {
    const auto after =
        std::upper_bound(rest_->begin(), rest_->end(), column,
                         [](std::uint64_t at, const CellEntry& entry) { return at < entry.start; });
    return static_cast<std::size_t>(after - rest_->begin()) - 1;
}

CellEntry CellIndex::find(const CSDObject& row, std::uint64_t column) {
    if (plain_ == kUnknown) build(row);
    if (column < plain_) {
        const std::vector<CSDObject*>& children = ChildrenOf(row);
        const auto position = static_cast<std::uint32_t>(column);
        return {column, position < children.size() ? children[position] : nullptr, 1, position};
    }
    if (column >= end()) return {column, nullptr, 1, 0};
    return (*rest_)[indexOf(column)];
}

void CellIndex::append(CSDExtObject& row, std::uint32_t repeat) {
    const bool isPlain = !rest_ || rest_->empty();
    const std::uint32_t position = isPlain ? plain_ : rest_->back().position + 1;
    const std::uint64_t start = end();
    if (rest_) rest_->reserve(rest_->size() + 1);
    std::unique_ptr<CSDObject> cell(CTableTableCell::Create());
    if (repeat > 1) SetRepeat(*cell, repeat);
    if (isPlain && repeat == 1) {
        Insert(row, position, std::move(cell));
        ++plain_;
        return;
    }
    if (!rest_) rest_ = std::make_unique<std::vector<CellEntry>>(0);
    rest_->push_back({start, cell.get(), repeat, position});
    Insert(row, position, std::move(cell));
}

CSDObject* CellIndex::make(CSDExtObject& row, std::uint64_t column) {
    if (plain_ == kUnknown) build(row);
    if (column < plain_) return ChildrenOf(row)[static_cast<std::size_t>(column)];
    if (column >= end()) {
        if (const std::uint64_t gap = column - end(); gap > 0) append(row, static_cast<std::uint32_t>(gap));
        append(row, 1);
        return find(row, column).cell;
    }
    std::vector<CellEntry>& rest = *rest_;
    std::size_t at = indexOf(column);
    CSDObject* const cell = rest[at].cell;
    if (rest[at].repeat == 1) return cell;
    const CellEntry old = rest[at];
    rest.reserve(rest.size() + 2);
    const auto offset = static_cast<std::uint32_t>(column - old.start);
    const Pieces pieces = Isolate(row, old.position, offset);
    const std::uint32_t added = (pieces.hasBefore ? 1U : 0U) + (pieces.hasAfter ? 1U : 0U);
    for (std::size_t i = at + 1; i < rest.size(); ++i)
        rest[i].position += added;
    const std::vector<CSDObject*>& children = ChildrenOf(row);
    const auto place = [&rest](std::size_t index) {
        return rest.begin() + static_cast<std::ptrdiff_t>(index);
    };
    std::uint32_t position = old.position;
    if (pieces.hasBefore) {
        rest[at] = {old.start, children[position], offset, position};
        ++position;
        rest.insert(place(++at), {column, cell, 1, position});
    } else {
        rest[at] = {column, cell, 1, position};
    }
    if (pieces.hasAfter)
        rest.insert(place(at + 1),
                    {column + 1, children[position + 1], old.repeat - 1 - offset, position + 1});
    // What is plain now needs no entry any more.
    std::size_t plain = 0;
    while (plain < rest.size() && rest[plain].repeat == 1 && rest[plain].position == plain_) {
        ++plain_;
        ++plain;
    }
    rest.erase(rest.begin(), place(plain));
    return cell;
}

Axis::Axis(CTableTable& table, Kind kind) : table_(table), kind_(kind) {
    using Parent = CSDExtObject*;
    WalkBelow(table, Parent(&table), [&](CSDObject& object, Parent parent) -> std::optional<Parent> {
        if (isGroup(object)) return static_cast<Parent>(&object);
        if (isLine(object))
            lines_.push_back({end(), static_cast<Parent>(&object), parent, RepeatOf(object), {}});
        return std::nullopt;
    });
}

bool Axis::isLine(const CSDObject& object) const noexcept {
    return object.GetID() == (kind_ == Kind::Rows ? CTableTableRow::kId : CTableTableColumn::kId);
}

bool Axis::isGroup(const CSDObject& object) const noexcept {
    const unsigned id = object.GetID();
    if (kind_ == Kind::Rows)
        return id == CTableTableRowGroup::kId || id == CTableTableRows::kId ||
               id == CTableTableHeaderRows::kId;
    return id == CTableTableColumnGroup::kId || id == CTableTableColumns::kId ||
           id == CTableTableHeaderColumns::kId;
}

std::size_t Axis::find(std::uint64_t index) noexcept {
    if (index >= end()) return kNone;
    const auto has = [&](std::size_t i) {
        return i < lines_.size() && lines_[i].start <= index && index < lines_[i].end();
    };
    if (!has(last_) && !has(++last_)) {
        const auto after =
            std::upper_bound(lines_.begin(), lines_.end(), index,
                             [](std::uint64_t at, const Line& line) { return at < line.start; });
        last_ = static_cast<std::size_t>(after - lines_.begin()) - 1;
    }
    return last_;
}

/// Where in the table the next line belongs: after the last one, which may be in a group.
std::size_t Axis::placeAfterLast() const noexcept {
    const std::vector<CSDObject*>& children = ChildrenOf(table_);
    if (!lines_.empty() && lines_.back().parent == &table_)
        return ObjectAccess::placeOf(children, *lines_.back().element) + 1;
    const Axis* const self = this;
    const auto last = std::find_if(children.rbegin(), children.rend(), [self](const CSDObject* child) {
        return child && (self->isLine(*child) || self->isGroup(*child));
    });
    if (last != children.rend()) return static_cast<std::size_t>(children.rend() - last);
    // The first line: a column goes before the rows, a row after all else that comes first.
    const auto first = std::find_if(children.begin(), children.end(), [](const CSDObject* child) {
        const unsigned id = child ? child->GetID() : 0;
        return id == CTableTableRow::kId || id == CTableTableRowGroup::kId || id == CTableTableRows::kId ||
               id == CTableTableHeaderRows::kId || id == CTextSoftPageBreak::kId ||
               id == CTableNamedExpressions::kId;
    });
    return static_cast<std::size_t>(first - children.begin());
}

void Axis::append(std::uint32_t count) {
    if (lines_.size() == lines_.capacity()) lines_.reserve(std::max<std::size_t>(lines_.size() * 2, 16));
    std::unique_ptr<CSDObject> element(kind_ == Kind::Rows ? CTableTableRow::Create()
                                                           : CTableTableColumn::Create());
    if (count > 1) SetRepeat(*element, count);
    auto* const added = static_cast<CSDExtObject*>(Insert(table_, placeAfterLast(), std::move(element)));
    lines_.push_back({end(), added, &table_, count, {}});
}

Line& Axis::make(std::uint64_t index) {
    const std::size_t at = find(index);
    if (at == kNone) {
        if (const std::uint64_t gap = index - end(); gap > 0) {
            append(static_cast<std::uint32_t>(gap));
            if (kind_ == Kind::Rows) lines_.back().cells.make(*lines_.back().element, 0);
        }
        append(1);
        last_ = lines_.size() - 1;
        return lines_.back();
    }
    if (lines_[at].repeat == 1) return lines_[at];
    if (lines_.capacity() < lines_.size() + 2) lines_.reserve(lines_.size() * 2 + 2);
    CSDExtObject* const parent = lines_[at].parent;
    const std::uint64_t start = lines_[at].start;
    const std::uint32_t repeat = lines_[at].repeat;
    const auto offset = static_cast<std::uint32_t>(index - start);
    const std::vector<CSDObject*>& siblings = ChildrenOf(*parent);
    const std::size_t position = ObjectAccess::placeOf(siblings, *lines_[at].element);
    const Pieces pieces = Isolate(*parent, position, offset);
    const auto place = [&](std::size_t i) { return lines_.begin() + static_cast<std::ptrdiff_t>(i); };
    const auto sibling = [&](std::size_t i) { return static_cast<CSDExtObject*>(siblings[position + i]); };
    lines_[at].start = index;
    lines_[at].repeat = 1;
    last_ = at;
    if (pieces.hasAfter)
        lines_.insert(place(at + 1),
                      Line{index + 1, sibling(pieces.hasBefore ? 2 : 1), parent, repeat - 1 - offset, {}});
    if (pieces.hasBefore) {
        lines_.insert(place(at), Line{start, sibling(0), parent, offset, {}});
        ++last_;
    }
    return lines_[last_];
}

} // namespace ODF
