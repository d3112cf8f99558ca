#include "document/sheet/cell_content.h"

#include "core/codecs.h"
#include "core/object_access.h"
#include "document/sheet/cell_text.h"
#include "document/sheet/tree_edit.h"

#include <odfmodel/elements/enumerations.h>
#include <odfmodel/elements/table/structure.h>

#include "classes.h"

#include <algorithm>
#include <optional>

namespace ODF {
namespace {

/// An office suite's own name for the type of a value, which would contradict a new one.
/// The attributes of a class of cells, by the rows of its table.
struct CellRows {
    const ClassDescriptor& table;
    int formula, type, value, currency, date, time, boolean, string;
    int suiteType;                   ///< the type again, as an office suite writes it
    int columnsSpanned, rowsSpanned; ///< -1 for a covered cell

    explicit CellRows(const ClassDescriptor& cells) noexcept
        : table(cells), formula(of("table", "formula")), type(of("office", "value-type")),
          value(of("office", "value")), currency(of("office", "currency")), date(of("office", "date-value")),
          time(of("office", "time-value")), boolean(of("office", "boolean-value")),
          string(of("office", "string-value")), suiteType(of("calcext", "value-type")),
          columnsSpanned(of("table", "number-columns-spanned")),
          rowsSpanned(of("table", "number-rows-spanned")) {}

    int of(std::string_view prefix, std::string_view name) const noexcept {
        return table.findAttribute(FindNamespaceByPrefix(prefix), name);
    }
    std::optional<AttributeValue> find(const CSDObject& cell, int row) const noexcept {
        if (row < 0) return std::nullopt;
        const auto index = static_cast<unsigned>(row);
        const std::uint64_t* const slot =
            AttributeSlots::find(ObjectAccess::slots(cell), table.words(), index);
        if (!slot) return std::nullopt;
        return AttributeValue{table.attributes[index], slot};
    }
};

const CellRows& RowsOf(const CSDObject& cell) noexcept {
    static const CellRows cells(tables::CTableTableCell);
    static const CellRows coveredCells(tables::CTableCoveredTableCell);
    return cell.GetID() == CTableTableCell::kId ? cells : coveredCells;
}

std::string TextOrNone(const std::optional<AttributeValue>& value) {
    return value ? ToUtf8(value->text()) : std::string();
}

/// The text as a value, of a cell that has no other.
CellValue TextValue(const CSDObject& cell) {
    std::string text = CellText(cell);
    return text.empty() ? CellValue() : CellValue(std::move(text));
}

std::uint32_t SpanOf(const std::optional<AttributeValue>& value) noexcept {
    return value ? std::max(value->whole(), 1U) : 1;
}

ST_OfficeValueType TypeOf(CellKind kind) noexcept {
    switch (kind) {
    case CellKind::Number:
        return ST_OfficeValueType::Float;
    case CellKind::Percentage:
        return ST_OfficeValueType::Percentage;
    case CellKind::Currency:
        return ST_OfficeValueType::Currency;
    case CellKind::Date:
        return ST_OfficeValueType::Date;
    case CellKind::Time:
        return ST_OfficeValueType::Time;
    case CellKind::Bool:
        return ST_OfficeValueType::Boolean;
    case CellKind::Empty:
    case CellKind::Text:
        break;
    }
    return ST_OfficeValueType::String;
}

void Clear(CSDExtObject& cell) {
    DropCellText(cell);
    if (!ObjectAccess::slots(cell)) return;
    const CellRows& rows = RowsOf(cell);
    for (const int row : {rows.formula, rows.type, rows.value, rows.currency, rows.date, rows.time,
                          rows.boolean, rows.string, rows.suiteType})
        ObjectAccess::unset(cell, static_cast<unsigned>(row));
}

/// The setters of both classes take the same, but for those of a number and a bool.
template<typename Cell>
void SetValue(Cell& cell, const CellValue& value) {
    const CellKind kind = value.Kind();
    cell.SetOfficeValueType(TypeOf(kind));
    switch (kind) {
    case CellKind::Empty:
        break;
    case CellKind::Text:
        return AddCellText(cell, value.Text());
    case CellKind::Number:
    case CellKind::Currency:
    case CellKind::Percentage: {
        const CTulStringW digits(PrintExactly(value.Number()).view());
        if constexpr (requires { cell.SetOfficeValue(digits); })
            cell.SetOfficeValue(digits);
        else
            cell.SetOfficeValue(value.Number());
        if (kind == CellKind::Number) return AddCellParagraph(cell, digits); // shared by both
        if (!value.Text().empty()) cell.SetOfficeCurrency(CTulStringW(value.Text()));
        break;
    }
    case CellKind::Date:
        cell.SetOfficeDateValue(CTulStringW(value.Text()));
        break;
    case CellKind::Time:
        cell.SetOfficeTimeValue(CTulStringW(value.Text()));
        break;
    case CellKind::Bool:
        cell.SetOfficeBooleanValue(value.Bool());
        break;
    }
    AddCellText(cell, value.Shown());
}

template<typename Cell>
void Write(Cell& cell, const CellValue& value, std::string_view formula) {
    if (!formula.empty())
        cell.SetTableFormula(
            CTulStringW(formula.starts_with('=') ? "of:" + std::string(formula) : std::string(formula)));
    if (!value.IsEmpty()) SetValue(cell, value);
}

} // namespace

CellValue ReadCellValue(const CSDObject& cell) {
    const CellRows& rows = RowsOf(cell);
    const auto type = rows.find(cell, rows.type);
    if (!type) return TextValue(cell);
    const auto number = [&]() -> std::optional<double> {
        const auto value = rows.find(cell, rows.value);
        if (!value) return std::nullopt;
        return value->isText() ? ParseDouble(value->text()) : value->number();
    };
    switch (static_cast<ST_OfficeValueType>(type->whole())) {
    case ST_OfficeValueType::Float:
        if (const auto value = number()) return *value;
        break;
    case ST_OfficeValueType::Percentage:
        if (const auto value = number()) return CellValue::Percentage(*value);
        break;
    case ST_OfficeValueType::Currency:
        if (const auto value = number())
            return CellValue::Currency(*value, TextOrNone(rows.find(cell, rows.currency)));
        break;
    case ST_OfficeValueType::Date:
        if (const auto value = rows.find(cell, rows.date)) return CellValue::Date(ToUtf8(value->text()));
        break;
    case ST_OfficeValueType::Time:
        if (const auto value = rows.find(cell, rows.time)) return CellValue::Time(ToUtf8(value->text()));
        break;
    case ST_OfficeValueType::Boolean:
        if (const auto value = rows.find(cell, rows.boolean))
            return CellValue(value->isText() ? ParseTruth(value->text()) : value->whole() != 0);
        break;
    case ST_OfficeValueType::String:
        if (const auto value = rows.find(cell, rows.string)) return ToUtf8(value->text());
        return CellText(cell);
    case ST_OfficeValueType::Void:
    case ST_OfficeValueType::Error: // its text is the error
        break;
    }
    return TextValue(cell); // a file that tells a type and no value
}

std::string ReadCellFormula(const CSDObject& cell) {
    const CellRows& rows = RowsOf(cell);
    return TextOrNone(rows.find(cell, rows.formula));
}

bool IsCellUsed(const CSDObject& cell) noexcept {
    const CellRows& rows = RowsOf(cell);
    if (rows.find(cell, rows.type) || rows.find(cell, rows.formula)) return true;
    const std::vector<CSDObject*>& children = ObjectAccess::children(cell);
    return std::any_of(children.begin(), children.end(), [](const CSDObject* child) {
        return child && ObjectAccess::descriptor(*child) && !ObjectAccess::isForeign(*child);
    });
}

std::uint32_t ColumnsSpannedBy(const CSDObject& cell) noexcept {
    const CellRows& rows = RowsOf(cell);
    return SpanOf(rows.find(cell, rows.columnsSpanned));
}

std::uint32_t RowsSpannedBy(const CSDObject& cell) noexcept {
    const CellRows& rows = RowsOf(cell);
    return SpanOf(rows.find(cell, rows.rowsSpanned));
}

void WriteCell(CSDExtObject& cell, const CellValue& value, std::string_view formula) {
    Clear(cell);
    if (cell.GetID() == CTableTableCell::kId)
        Write(static_cast<CTableTableCell&>(cell), value, formula);
    else
        Write(static_cast<CTableCoveredTableCell&>(cell), value, formula);
}

} // namespace ODF
