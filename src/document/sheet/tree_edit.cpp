#include "document/sheet/tree_edit.h"

#include "core/object_access.h"

#include <odfmodel/elements/table/structure.h>

#include "classes.h"

#include <algorithm>
#include <utility>

namespace ODF {
namespace {

/// A copy for other places of the sheet. An id is unique in a document, so the copy has none.
std::unique_ptr<CSDObject> CopyOf(const CSDObject& original) {
    std::unique_ptr<CSDObject> copy = ObjectAccess::clone(original, true);
    copy->Unset("xml:id");
    for (CSDObject& object : copy->Descendants())
        object.Unset("xml:id");
    return copy;
}

/// The table of rows, cells and columns, and in it the row of their repeat.
struct Repeat {
    const ClassDescriptor& table;
    unsigned row;
    Repeat(const ClassDescriptor& of, std::string_view name) noexcept
        : table(of), row(static_cast<unsigned>(of.findAttribute(of.nameSpace, name))) {}
};

const Repeat& RepeatOfClass(unsigned id) noexcept {
    struct All {
        Repeat row{tables::CTableTableRow, "number-rows-repeated"};
        Repeat cell{tables::CTableTableCell, "number-columns-repeated"};
        Repeat coveredCell{tables::CTableCoveredTableCell, "number-columns-repeated"};
        Repeat column{tables::CTableTableColumn, "number-columns-repeated"};
    };
    static const All all;
    if (id == CTableTableCell::kId) return all.cell;
    if (id == CTableTableRow::kId) return all.row;
    return id == CTableTableColumn::kId ? all.column : all.coveredCell;
}

} // namespace

const std::vector<CSDObject*>& ChildrenOf(const CSDObject& object) noexcept {
    static const std::vector<CSDObject*> none;
    const std::vector<CSDObject*>* const list = object.GetObjectList();
    return list ? *list : none;
}

CSDObject* Insert(CSDExtObject& parent, std::size_t position, std::unique_ptr<CSDObject> child) {
    ObjectAccess::insert(parent, position, child.get()); // new, so nothing speaks against it
    return child.release();
}

bool IsCell(const CSDObject& object) noexcept {
    return object.GetID() == CTableTableCell::kId || object.GetID() == CTableCoveredTableCell::kId;
}

std::uint32_t RepeatOf(const CSDObject& object) noexcept {
    const Repeat& repeat = RepeatOfClass(object.GetID());
    const std::uint64_t* const slot =
        AttributeSlots::find(ObjectAccess::slots(object), repeat.table.words(), repeat.row);
    return slot ? std::max(static_cast<std::uint32_t>(*slot), 1U) : 1;
}

void SetRepeat(CSDObject& object, std::uint32_t repeat) {
    if (repeat <= 1) return ObjectAccess::unset(object, RepeatOfClass(object.GetID()).row);
    switch (object.GetID()) {
    case CTableTableRow::kId:
        return static_cast<CTableTableRow&>(object).SetTableNumberRowsRepeated(repeat);
    case CTableTableCell::kId:
        return static_cast<CTableTableCell&>(object).SetTableNumberColumnsRepeated(repeat);
    case CTableCoveredTableCell::kId:
        return static_cast<CTableCoveredTableCell&>(object).SetTableNumberColumnsRepeated(repeat);
    default:
        return static_cast<CTableTableColumn&>(object).SetTableNumberColumnsRepeated(repeat);
    }
}

Pieces Isolate(CSDExtObject& parent, std::size_t position, std::uint32_t offset) {
    CSDObject& object = *ChildrenOf(parent)[position];
    const std::uint32_t repeat = RepeatOf(object);
    const std::uint32_t following = repeat - 1 - offset;
    std::unique_ptr<CSDObject> before = offset > 0 ? CopyOf(object) : nullptr;
    std::unique_ptr<CSDObject> after = following > 0 ? CopyOf(object) : nullptr;
    const Pieces pieces{before != nullptr, after != nullptr};
    if (before) SetRepeat(*before, offset);
    if (after) SetRepeat(*after, following);
    // With room for both nothing below fails.
    std::vector<CSDObject*>& list = *parent.GetObjectList();
    if (list.capacity() < list.size() + 2) list.reserve(std::max(list.size() * 2, list.size() + 2));
    if (after) Insert(parent, position + 1, std::move(after));
    if (before) Insert(parent, position, std::move(before));
    SetRepeat(object, 1);
    return pieces;
}

} // namespace ODF
