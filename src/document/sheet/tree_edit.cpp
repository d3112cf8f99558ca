#include "document/sheet/tree_edit.h"

#include "core/object_access.h"

#include <odfmodel/elements/table/structure.h>

#include "classes.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ODF {
namespace {

bool IsXmlId(const KeptAttribute& kept) noexcept {
    return kept.row == KeptAttribute::kNotListed && kept.name.local() == u"id" &&
           kept.name.uri() == u"http://www.w3.org/XML/1998/namespace";
}

void CopyAttributes(const CSDObject& original, const ClassDescriptor& table, CSDObject& copy,
                    ValuePool& pool) {
    const Extras* const extras = ObjectAccess::extras(original);
    std::vector<std::pair<std::uint16_t, std::string>> texts;
    AttributeSlots::forEach(ObjectAccess::slots(original), table.words(),
                            [&](unsigned row, std::uint64_t* slot) {
                                if (row >= table.attributeCount) return;
                                const AttributeValue value{table.attributes[row], slot};
                                const KeptAttribute* const words = extras ? extras->find(row) : nullptr;
                                std::string text;
                                if (words)
                                    text = words->value.utf8();
                                else if (value.isText())
                                    text = ToUtf8(value.text());
                                else if (value.isKey())
                                    text = ToUtf8(value.key());
                                else
                                    text = value.spelled().view();
                                texts.emplace_back(static_cast<std::uint16_t>(row), std::move(text));
                            });
    std::vector<ReadValue> values;
    values.reserve(texts.size());
    for (const auto& [row, text] : texts)
        values.push_back({row, text});
    std::vector<ValuePool::Usage> usage(table.attributeCount);
    std::vector<KeptAttribute> kept;
    ObjectAccess::readAttributes(copy, table, values, {pool, usage.data(), nullptr, &kept});
    if (!extras) return;
    for (const KeptAttribute& attribute : extras->attributes)
        if (attribute.row == KeptAttribute::kNotListed && !IsXmlId(attribute)) kept.push_back(attribute);
    if (!kept.empty()) ObjectAccess::keep(copy, kept);
}

/// The object alone, without what lies below it.
std::unique_ptr<CSDObject> CopyOne(const CSDObject& original, ValuePool& pool) {
    const ClassDescriptor* const table = ObjectAccess::descriptor(original);
    const bool isPlainText = ObjectAccess::isTextRun(original) || ObjectAccess::isComment(original) ||
                             ObjectAccess::isInstruction(original);
    if (!table && !isPlainText) return nullptr;
    std::unique_ptr<CSDObject> copy(table ? table->make(original.GetID(), nullptr)
                                          : CSDStringValueObject::Create(original.GetID()));
    if (ObjectAccess::isForeign(original)) ObjectAccess::setName(*copy, ObjectAccess::name(original));
    if (table) CopyAttributes(original, *table, *copy, pool);
    if (ObjectAccess::holdsText(original)) ObjectAccess::text(*copy) = ObjectAccess::text(original);
    if (ObjectAccess::isDate(original)) {
        const auto& date = static_cast<const CSDDateTimeValueObject&>(original);
        auto& copied = static_cast<CSDDateTimeValueObject&>(*copy);
        const CTulStringW& words = date.GetRawText();
        if (!words.IsEmpty()) copied.ReadNodeValue(words, static_cast<unsigned>(words.GetLength()));
        copied.Setval(date.Getval());
    }
    if (ObjectAccess::isFromFile(original)) ObjectAccess::setFromFile(*copy);
    if (ObjectAccess::keepsValue(original)) ObjectAccess::setKeepsValue(*copy);
    if (const Extras* const extras = ObjectAccess::extras(original); extras && extras->markup)
        ObjectAccess::requireExtras(*copy).requireMarkup().declarations = extras->markup->declarations;
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

std::unique_ptr<CSDObject> Clone(const CSDObject& original) {
    ValuePool pool;
    std::unique_ptr<CSDObject> root = CopyOne(original, pool);
    if (!root) return nullptr;
    std::vector<std::pair<const CSDObject*, CSDObject*>> open{{&original, root.get()}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        for (const CSDObject* const child : ChildrenOf(*from)) {
            std::unique_ptr<CSDObject> copy = child ? CopyOne(*child, pool) : nullptr;
            if (!copy) continue;
            open.emplace_back(child, copy.get());
            CSDObject* const added = copy.get();
            ObjectAccess::append(*to, {&added, 1});
            copy.release(); // NOLINT(bugprone-unused-return-value): its parent has it
        }
    }
    return root;
}

void Unset(CSDObject& object, unsigned row) noexcept {
    const ClassDescriptor* const table = ObjectAccess::descriptor(object);
    std::uint64_t* const block = ObjectAccess::slots(object);
    std::uint64_t* const slot = AttributeSlots::find(block, table->words(), row);
    if (!slot) return;
    if (Extras* const extras = ObjectAccess::extras(object)) extras->forget(row);
    if (table->attributes[row].kind == ValueKind::String) AttributeSlots::text(slot).~CTulStringW();
    AttributeSlots::erase(block, table->words(), row);
}

CSDObject* Insert(CSDExtObject& parent, std::size_t position, std::unique_ptr<CSDObject> child) {
    child->SetReNewRootPart(parent.GetRootpart());
    CSDObject* const added = child.get();
    if (std::vector<CSDObject*>* const list = parent.GetObjectList())
        list->insert(list->begin() + static_cast<std::ptrdiff_t>(std::min(position, list->size())), added);
    else
        parent.SetObject(added, 1);
    child.release(); // NOLINT(bugprone-unused-return-value): its parent has it
    return added;
}

std::size_t PositionOf(const std::vector<CSDObject*>& list, const CSDObject* child,
                       std::size_t guess) noexcept {
    std::size_t below = std::min(guess, list.size());
    for (std::size_t above = below; above < list.size() || below > 0; ++above) {
        if (above < list.size() && list[above] == child) return above;
        if (below > 0 && list[--below] == child) return below;
    }
    return list.size();
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
    if (repeat <= 1) return Unset(object, RepeatOfClass(object.GetID()).row);
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
    std::unique_ptr<CSDObject> before = offset > 0 ? Clone(object) : nullptr;
    std::unique_ptr<CSDObject> after = following > 0 ? Clone(object) : nullptr;
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
