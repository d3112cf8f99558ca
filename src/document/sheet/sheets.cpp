#include <odfmodel/document/sheet.h>

#include "core/object_access.h"
#include "document/sheet/tree_edit.h"

#include <odfmodel/document/open_document.h>
#include <odfmodel/elements/office/document.h>
#include <odfmodel/elements/table/spreadsheet.h>
#include <odfmodel/elements/table/structure.h>

#include <algorithm>

namespace ODF {
namespace {

CSDObject* SpreadsheetBelow(CSDObject& root) {
    if (root.GetID() == COfficeSpreadsheet::kId) return &root;
    CSDObject* const body = root.GetID() == COfficeBody::kId ? &root : root.GetObjectByID(COfficeBody::kId);
    return body ? body->GetObjectByID(COfficeSpreadsheet::kId) : nullptr;
}

/// The sheet of a reference such as "$'My sheet'.$A$1", which is taken off with its dot; quotes in the name
/// are doubled. Empty for a reference without a sheet.
std::optional<std::string> TakeSheet(std::string_view& text) {
    std::string_view rest = text;
    if (rest.starts_with('$')) rest.remove_prefix(1);
    std::string name;
    if (rest.starts_with('\'')) {
        for (rest.remove_prefix(1);; rest.remove_prefix(1)) {
            if (rest.empty()) return std::nullopt;
            if (rest.front() == '\'' && !rest.substr(1).starts_with('\'')) break;
            if (rest.front() == '\'') rest.remove_prefix(1);
            name += rest.front();
        }
        rest.remove_prefix(1);
    } else {
        const std::size_t dot = rest.find('.');
        if (dot == std::string_view::npos) return name;
        name = rest.substr(0, dot);
        rest.remove_prefix(dot);
    }
    if (!rest.starts_with('.')) return std::nullopt;
    text = rest.substr(1);
    return name;
}

/// A cell at the end of an address, or its range when `text` has a second corner.
std::optional<NamedRange> ParseAddress(std::string_view text) {
    NamedRange result;
    const auto sheet = TakeSheet(text);
    if (!sheet) return std::nullopt;
    result.sheet = *sheet;
    const std::size_t colon = text.find(':');
    std::string corners(text.substr(0, colon));
    if (colon != std::string_view::npos) {
        std::string_view second = text.substr(colon + 1);
        const auto other = TakeSheet(second);
        if (!other || (!other->empty() && *other != *sheet)) return std::nullopt;
        corners += ':';
        corners += second;
    }
    const auto range = ParseRange(corners);
    if (!range) return std::nullopt;
    result.range = *range;
    return result;
}

void CollectRanges(const CSDObject& owner, const std::string& scope, std::vector<NamedRange>& ranges) {
    for (const CSDObject* const list : ChildrenOf(owner)) {
        if (!list || list->GetID() != CTableNamedExpressions::kId) continue;
        for (const CSDObject* const child : ChildrenOf(*list)) {
            if (!child || child->GetID() != CTableNamedRange::kId) continue;
            const auto& named = static_cast<const CTableNamedRange&>(*child);
            auto range = ParseAddress(named.GetTableCellRangeAddress().utf8());
            if (!range) continue;
            range->name = named.GetTableName().utf8();
            range->scope = scope;
            ranges.push_back(std::move(*range));
        }
    }
}

} // namespace

Sheets::Sheets(Document& document) : Sheets(static_cast<CSDObject*>(document.Spreadsheet())) {}

Sheets::Sheets(CSDObject& root) : Sheets(SpreadsheetBelow(root)) {}

Sheets::Sheets(CSDObject* spreadsheet) : spreadsheet_(spreadsheet) {
    if (!spreadsheet) return;
    for (CSDObject* const child : ChildrenOf(*spreadsheet))
        if (child && child->GetID() == CTableTable::kId)
            sheets_.emplace_back(static_cast<CTableTable&>(*child));
}

Sheet* Sheets::Find(std::string_view name) {
    const auto at = std::find_if(sheets_.begin(), sheets_.end(),
                                 [name](const Sheet& sheet) { return sheet.Name() == name; });
    return at == sheets_.end() ? nullptr : &*at;
}

Sheet* Sheets::Add(std::string_view name) {
    if (!spreadsheet_ || name.empty() || Find(name)) return nullptr;
    std::unique_ptr<CSDObject> made(CTableTable::Create());
    auto& table = static_cast<CTableTable&>(*made);
    table.SetTableName(CTulStringW(name));
    table.SetTableTableColumn();
    table.SetTableTableRow()->SetTableTableCell();
    // Names, ranges and the like come after the tables.
    const std::vector<CSDObject*>& children = ChildrenOf(*spreadsheet_);
    const auto comesAfter = [](const CSDObject* child) {
        const unsigned id = child ? child->GetID() : 0;
        return id == CTableNamedExpressions::kId || id == CTableDatabaseRanges::kId;
    };
    const std::size_t place =
        sheets_.empty() ? static_cast<std::size_t>(
                              std::find_if(children.begin(), children.end(), comesAfter) - children.begin())
                        : ObjectAccess::placeOf(children, sheets_.back().Table()) + 1;
    sheets_.reserve(sheets_.size() + 1);
    Sheet added(table);
    Insert(static_cast<CSDExtObject&>(*spreadsheet_), place, std::move(made));
    return &sheets_.emplace_back(std::move(added));
}

std::vector<NamedRange> Sheets::NamedRanges() const {
    std::vector<NamedRange> ranges;
    if (!spreadsheet_) return ranges;
    CollectRanges(*spreadsheet_, {}, ranges);
    for (const Sheet& sheet : sheets_)
        CollectRanges(sheet.Table(), sheet.Name(), ranges);
    return ranges;
}

} // namespace ODF
