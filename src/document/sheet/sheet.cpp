#include <odfmodel/document/sheet.h>

#include "core/object_access.h"
#include "document/sheet/axis.h"
#include "document/sheet/cell_content.h"
#include "document/sheet/cell_text.h"
#include "document/sheet/merges.h"
#include "document/sheet/tree_edit.h"

#include <odfmodel/elements/table/structure.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace ODF {
namespace {

std::uint32_t Bounded(std::uint64_t count) noexcept {
    return static_cast<std::uint32_t>(std::min(count, std::uint64_t{kMaxSheetIndex} + 1));
}

bool IsRowUsed(const CSDObject& row) noexcept {
    const std::vector<CSDObject*>& children = ChildrenOf(row);
    return std::any_of(children.begin(), children.end(),
                       [](const CSDObject* child) { return child && IsCell(*child) && IsCellUsed(*child); });
}

} // namespace

CellValue SheetCell::Value() const {
    return element_ ? ReadCellValue(*element_) : CellValue();
}
std::string SheetCell::Text() const {
    if (!element_) return {};
    std::string text = CellText(*element_);
    return text.empty() ? ReadCellValue(*element_).Shown() : text;
}
std::string SheetCell::Formula() const {
    return element_ ? ReadCellFormula(*element_) : std::string();
}
bool SheetCell::IsEmpty() const {
    return !element_ || !IsCellUsed(*element_);
}
bool SheetCell::IsCovered() const noexcept {
    return element_ && element_->GetID() == CTableCoveredTableCell::kId;
}
std::uint32_t SheetCell::ColumnsSpanned() const {
    return element_ ? ColumnsSpannedBy(*element_) : 1;
}
std::uint32_t SheetCell::RowsSpanned() const {
    return element_ ? RowsSpannedBy(*element_) : 1;
}

SheetRow::CellIterator::CellIterator(const SheetRow& row, bool isUsedOnly) : isUsedOnly_(isUsedOnly) {
    if (!row.Element()) return;
    children_ = &ChildrenOf(*row.Element());
    cell_.row_ = row.Index();
    advance();
}

void SheetRow::CellIterator::advance() {
    while (children_ && next_ < children_->size() && column_ <= kMaxSheetIndex) {
        CSDObject* const child = (*children_)[next_++];
        if (!child || !IsCell(*child)) continue;
        cell_.column_ = static_cast<std::uint32_t>(column_);
        cell_.repeat_ = std::min(RepeatOf(*child), kMaxSheetIndex + 1 - cell_.column_);
        column_ += cell_.repeat_;
        if (isUsedOnly_ && !IsCellUsed(*child)) continue;
        cell_.element_ = child;
        return;
    }
    cell_.element_ = nullptr;
}

/// The lists of rows and columns, made when they are first needed.
struct Sheet::State {
    explicit State(CTableTable& sheet) noexcept : table(&sheet) {}

    CTableTable* table;
    std::optional<Axis> rowAxis;
    std::optional<Axis> columnAxis;
    std::optional<Merges> merges;
    /// The row after the last used one, while it is known.
    std::optional<std::uint64_t> nextRow;

    Axis& rows() {
        if (!rowAxis) rowAxis.emplace(*table, Axis::Kind::Rows);
        return *rowAxis;
    }
    Axis& columns() {
        if (!columnAxis) columnAxis.emplace(*table, Axis::Kind::Columns);
        return *columnAxis;
    }
    CellEntry find(std::uint32_t row, std::uint32_t column);
    std::uint64_t afterLastUsed();
    void requireColumns(std::uint64_t count);
    CSDExtObject* makeCell(std::uint32_t row, std::uint32_t column);
    bool write(std::uint32_t row, std::uint32_t column, const CellValue& value, std::string_view formula);
};

CellEntry Sheet::State::find(std::uint32_t row, std::uint32_t column) {
    const std::size_t at = rows().find(row);
    if (at == Axis::kNone) return {column, nullptr, 1, 0};
    Line& line = rows().lines()[at];
    return line.cells.find(*line.element, column);
}

std::uint64_t Sheet::State::afterLastUsed() {
    if (!nextRow) {
        const std::vector<Line>& lines = rows().lines();
        const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                       [](const Line& line) { return IsRowUsed(*line.element); });
        nextRow = last == lines.rend() ? 0 : last->end();
    }
    return *nextRow;
}

/// Makes column elements for that many columns. A last one without a style of its own grows.
void Sheet::State::requireColumns(std::uint64_t count) {
    if (columns().end() >= count) return;
    const auto missing = static_cast<std::uint32_t>(count - columns().end());
    if (!columns().lines().empty()) {
        Line& last = columns().lines().back();
        const auto& column = static_cast<const CTableTableColumn&>(*last.element);
        CTulStringW style;
        ST_TableVisibility visibility{};
        if (!column.GetTableStyleName(style) && !column.GetTableDefaultCellStyleName(style) &&
            !column.GetTableVisibility(visibility)) {
            SetRepeat(*last.element, last.repeat + missing);
            last.repeat += missing;
            return;
        }
    }
    columns().append(missing);
}

CSDExtObject* Sheet::State::makeCell(std::uint32_t row, std::uint32_t column) {
    requireColumns(std::uint64_t{column} + 1);
    Line& line = rows().make(row);
    return static_cast<CSDExtObject*>(line.cells.make(*line.element, column));
}

bool Sheet::State::write(std::uint32_t row, std::uint32_t column, const CellValue& value,
                         std::string_view formula) {
    if (row > kMaxSheetIndex || column > kMaxSheetIndex || !value.IsValid()) return false;
    if (value.IsEmpty() && formula.empty()) {
        const CSDObject* const cell = find(row, column).cell;
        if (!cell || !IsCellUsed(*cell)) return true;
        nextRow.reset();
    }
    CSDExtObject* const cell = makeCell(row, column);
    WriteCell(*cell, value, formula);
    if (nextRow) nextRow = std::max(*nextRow, std::uint64_t{row} + 1);
    return true;
}

Sheet::Sheet(CTableTable& table) : state_(std::make_unique<State>(table)) {}
Sheet::Sheet(Sheet&& other) noexcept = default;
Sheet& Sheet::operator=(Sheet&& other) noexcept = default;
Sheet::~Sheet() = default;

CTableTable& Sheet::Table() const noexcept {
    return *state_->table;
}
std::string Sheet::Name() const {
    CTulStringW name;
    state_->table->GetTableName(name);
    return name.utf8();
}
std::uint32_t Sheet::RowCount() const {
    return Bounded(state_->rows().end());
}
std::uint32_t Sheet::ColumnCount() const {
    return Bounded(state_->columns().end());
}

SheetCell Sheet::Cell(std::uint32_t row, std::uint32_t column) const {
    SheetCell cell;
    cell.row_ = row;
    cell.column_ = column;
    if (row > kMaxSheetIndex || column > kMaxSheetIndex) return cell;
    const CellEntry entry = state_->find(row, column);
    cell.element_ = entry.cell;
    cell.repeat_ =
        static_cast<std::uint32_t>(std::min(entry.end(), std::uint64_t{kMaxSheetIndex} + 1) - column);
    return cell;
}

SheetCell Sheet::Cell(std::string_view name) const {
    const auto at = ParseCell(name);
    return at ? Cell(at->row, at->column) : SheetCell();
}

SheetRow Sheet::Row(std::uint32_t row) const {
    SheetRow result;
    result.index_ = row;
    const std::size_t at = row <= kMaxSheetIndex ? state_->rows().find(row) : Axis::kNone;
    if (at == Axis::kNone) return result;
    const Line& line = state_->rows().lines()[at];
    result.element_ = static_cast<CTableTableRow*>(line.element);
    result.repeat_ = Bounded(line.end()) - row;
    return result;
}

SheetColumn Sheet::Column(std::uint32_t column) const {
    const std::size_t at = column <= kMaxSheetIndex ? state_->columns().find(column) : Axis::kNone;
    if (at == Axis::kNone) return {column, 1, nullptr};
    const Line& line = state_->columns().lines()[at];
    return {column, Bounded(line.end()) - column, static_cast<CTableTableColumn*>(line.element)};
}

SheetColumn Sheet::Column(std::string_view name) const {
    const auto column = ParseColumn(name);
    return column ? Column(*column) : SheetColumn();
}

Sheet::RowIterator::RowIterator(const State* state, bool isUsedOnly)
    : state_(state), isUsedOnly_(isUsedOnly) {
    advance();
}

void Sheet::RowIterator::advance() {
    row_.element_ = nullptr;
    const std::vector<Line>& lines = std::as_const(*state_).rowAxis->lines();
    while (next_ < lines.size() && lines[next_].start <= kMaxSheetIndex) {
        const Line& line = lines[next_++];
        if (isUsedOnly_ && !IsRowUsed(*line.element)) continue;
        row_.element_ = static_cast<CTableTableRow*>(line.element);
        row_.index_ = static_cast<std::uint32_t>(line.start);
        row_.repeat_ = Bounded(line.end()) - row_.index_;
        return;
    }
}

Sheet::Rows Sheet::AllRows() const {
    state_->rows();
    return {state_.get(), false};
}
Sheet::Rows Sheet::UsedRows() const {
    state_->rows();
    return {state_.get(), true};
}

std::optional<CellRange> Sheet::UsedRange() const {
    constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();
    CellRange range{{kMax, kMax}, {0, 0}};
    for (const SheetRow& row : UsedRows()) {
        range.first.row = std::min(range.first.row, row.Index());
        range.last.row = row.Index() + (row.Repeat() - 1);
        for (const SheetCell& cell : row.UsedCells()) {
            range.first.column = std::min(range.first.column, cell.Column());
            range.last.column = std::max(range.last.column, cell.Column() + (cell.ColumnRepeat() - 1));
        }
    }
    return range.first.row == kMax ? std::nullopt : std::optional(range);
}

std::optional<CellRange> Sheet::MergedRange(const CellAddress& cell) const {
    if (!state_->merges) state_->merges.emplace(*this);
    return state_->merges->find(cell);
}

bool Sheet::Set(std::uint32_t row, std::uint32_t column, const CellValue& value) {
    return state_->write(row, column, value, {});
}
bool Sheet::Set(std::string_view name, const CellValue& value) {
    const auto at = ParseCell(name);
    return at && Set(at->row, at->column, value);
}
bool Sheet::SetFormula(std::uint32_t row, std::uint32_t column, std::string_view formula,
                       const CellValue& result) {
    return state_->write(row, column, result, formula);
}
bool Sheet::SetFormula(std::string_view name, std::string_view formula, const CellValue& result) {
    const auto at = ParseCell(name);
    return at && SetFormula(at->row, at->column, formula, result);
}

std::optional<std::uint32_t> Sheet::AppendRow(std::span<const CellValue> values) {
    const std::uint64_t index = state_->afterLastUsed();
    if (index > kMaxSheetIndex || values.size() > kMaxSheetIndex) return std::nullopt;
    if (!std::all_of(values.begin(), values.end(), [](const CellValue& value) { return value.IsValid(); }))
        return std::nullopt;
    state_->requireColumns(values.size());
    Line& line = state_->rows().make(index);
    auto& row = static_cast<CTableTableRow&>(*line.element);
    if (ChildrenOf(row).empty()) { // new: nothing is there to be divided
        for (const CellValue& value : values) {
            CTableTableCell* const cell = row.SetTableTableCell();
            if (!value.IsEmpty()) WriteCell(*cell, value, {});
        }
        if (values.empty()) row.SetTableTableCell();
    } else {
        for (std::size_t column = 0; column < values.size(); ++column)
            if (!values[column].IsEmpty())
                WriteCell(static_cast<CSDExtObject&>(*line.cells.make(row, column)), values[column], {});
    }
    state_->nextRow = index + 1;
    return static_cast<std::uint32_t>(index);
}

CSDObject* Sheet::MakeCell(std::uint32_t row, std::uint32_t column) {
    if (row > kMaxSheetIndex || column > kMaxSheetIndex) return nullptr;
    state_->nextRow.reset(); // the caller may fill it
    state_->merges.reset();
    return state_->makeCell(row, column);
}

CTableTableRow* Sheet::MakeRow(std::uint32_t row) {
    if (row > kMaxSheetIndex) return nullptr;
    state_->nextRow.reset();
    Line& line = state_->rows().make(row);
    if (ChildrenOf(*line.element).empty()) line.cells.make(*line.element, 0); // a row has a cell
    return static_cast<CTableTableRow*>(line.element);
}

CTableTableColumn* Sheet::MakeColumn(std::uint32_t column) {
    if (column > kMaxSheetIndex) return nullptr;
    return static_cast<CTableTableColumn*>(state_->columns().make(column).element);
}

} // namespace ODF
