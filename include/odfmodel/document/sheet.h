#pragma once

/// @file
/// Sheets as rows, columns and cells. A view finds cells by place or name, whatever repeats the tree has, and
/// divides repeats when it writes.
///
///     for (ODF::Sheet& sheet : ODF::Sheets(document))
///         for (const ODF::SheetRow& row : sheet.UsedRows())
///             for (const ODF::SheetCell& cell : row.UsedCells()) std::cout << cell.Text() << '\n';
///
///     ODF::Sheet& sheet = sheets[0];
///     sheet.Set("B3", 12.5);
///     sheet.AppendRow({"Ada", 36, true});

#include <odfmodel/document/cell_value.h>
#include <odfmodel/export.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class CSDObject;

namespace ODF {

class CTableTable;
class CTableTableColumn;
class CTableTableRow;
class Document;

/// The largest index of a row or column; a file may say that there are more, but those can't be reached.
/// Office suites read 1,048,576 rows and 16,384 columns.
inline constexpr std::uint32_t kMaxSheetIndex = 0x7FFFFFFF;

/// @name References
/// Indexes start at 0, names at "A1". Letters may be small, and `$` is allowed where formulas have it.
/// Nothing comes back for any other text, or a place beyond `kMaxSheetIndex`.
/// @{
struct CellAddress {
    std::uint32_t row = 0;
    std::uint32_t column = 0;
    friend bool operator==(const CellAddress&, const CellAddress&) = default;
};
/// All cells from the upper left one to the lower right one, both included.
struct CellRange {
    CellAddress first;
    CellAddress last;
    friend bool operator==(const CellRange&, const CellRange&) = default;
    bool Contains(const CellAddress& cell) const noexcept {
        return cell.row >= first.row && cell.row <= last.row && cell.column >= first.column &&
               cell.column <= last.column;
    }
};
ODFMODEL_API std::optional<std::uint32_t> ParseColumn(std::string_view name);
ODFMODEL_API std::optional<CellAddress> ParseCell(std::string_view name);
/// Reads "A1:B3". The corners may come in any order, and "A1" is a range of one cell.
ODFMODEL_API std::optional<CellRange> ParseRange(std::string_view name);
ODFMODEL_API std::string PrintColumn(std::uint32_t column);
ODFMODEL_API std::string PrintCell(const CellAddress& cell);
/// A range of one cell is printed as that cell.
ODFMODEL_API std::string PrintRange(const CellRange& range);
/// @}

/// A cell of the tree, or a place that has none. Cheap to copy. Use it until the sheet is
/// written to or the tree changes.
class ODFMODEL_API SheetCell {
public:
    /// The place that was asked for; in an iteration the first that the element stands for.
    std::uint32_t Row() const noexcept { return row_; }
    std::uint32_t Column() const noexcept { return column_; }
    /// How many columns from `Column` on the element stands for, at least 1.
    std::uint32_t ColumnRepeat() const noexcept { return repeat_; }
    /// A `CTableTableCell` or `CTableCoveredTableCell`, borrowed; null where the tree has no cell.
    CSDObject* Element() const noexcept { return element_; }

    /// The value; of a formula its result as it was when the file was written.
    CellValue Value() const;
    /// The text that the cell shows, with line ends between paragraphs. Where the file has a value alone,
    /// that value as `CellValue::Shown` has it.
    std::string Text() const;
    /// Such as "of:=SUM([.A1:.A9])"; empty for none.
    std::string Formula() const;
    /// Whether there is neither a value nor a formula, a text, a shape or a note; a style alone is nothing.
    bool IsEmpty() const;
    /// Whether a merged cell hides this one; `Sheet::MergedRange` tells which.
    bool IsCovered() const noexcept;
    /// Columns and rows that a merged cell takes, itself included; 1 for others.
    std::uint32_t ColumnsSpanned() const;
    std::uint32_t RowsSpanned() const;

private:
    friend class Sheet;
    friend class SheetRow;
    CSDObject* element_ = nullptr;
    std::uint32_t row_ = 0;
    std::uint32_t column_ = 0;
    std::uint32_t repeat_ = 1;
};

/// A row of the tree, or a place that has none. Use it no longer than a `SheetCell`.
class ODFMODEL_API SheetRow {
public:
    /// The place that was asked for; in an iteration the first that the element stands for.
    std::uint32_t Index() const noexcept { return index_; }
    /// How many rows from `Index` on the element stands for, at least 1.
    std::uint32_t Repeat() const noexcept { return repeat_; }
    /// Borrowed; null where the tree has no row.
    CTableTableRow* Element() const noexcept { return element_; }

    class CellIterator;
    class Cells;
    /// All cells that the tree has in this row, from left to right.
    Cells AllCells() const noexcept;
    /// Those of them that aren't empty.
    Cells UsedCells() const noexcept;

private:
    friend class Sheet;
    CTableTableRow* element_ = nullptr;
    std::uint32_t index_ = 0;
    std::uint32_t repeat_ = 1;
};

class ODFMODEL_API SheetRow::CellIterator {
public:
    using iterator_concept = std::forward_iterator_tag;
    using value_type = SheetCell;
    using difference_type = std::ptrdiff_t;

    CellIterator() = default;
    const SheetCell& operator*() const noexcept { return cell_; }
    const SheetCell* operator->() const noexcept { return &cell_; }
    CellIterator& operator++() {
        advance();
        return *this;
    }
    CellIterator operator++(int) {
        const CellIterator before = *this;
        advance();
        return before;
    }
    friend bool operator==(const CellIterator& a, const CellIterator& b) noexcept {
        return a.cell_.Element() == b.cell_.Element();
    }

private:
    friend class Cells;
    CellIterator(const SheetRow& row, bool isUsedOnly);
    void advance();

    const std::vector<CSDObject*>* children_ = nullptr;
    std::size_t next_ = 0;
    std::uint64_t column_ = 0; ///< after the present cell
    bool isUsedOnly_ = false;
    SheetCell cell_;
};

/// The cells of a row, for `for`.
class ODFMODEL_API SheetRow::Cells {
public:
    CellIterator begin() const { return {row_, isUsedOnly_}; }
    CellIterator end() const noexcept { return {}; }

private:
    friend class SheetRow;
    Cells(const SheetRow& row, bool isUsedOnly) noexcept : row_(row), isUsedOnly_(isUsedOnly) {}
    SheetRow row_;
    bool isUsedOnly_;
};

inline SheetRow::Cells SheetRow::AllCells() const noexcept {
    return {*this, false};
}
inline SheetRow::Cells SheetRow::UsedCells() const noexcept {
    return {*this, true};
}

/// Several columns alike, or a place that no column element stands for.
struct SheetColumn {
    std::uint32_t index = 0;
    std::uint32_t repeat = 1;             ///< columns from `index` on that the element stands for
    CTableTableColumn* element = nullptr; ///< borrowed; null where the tree has none
};

/// A view of one table. It changes nothing until it is written to, and costs what is in the tree, not what
/// the repeats add up to.
///
/// The view finds rows by a list that it makes when it is first asked, and cells of a row likewise, so that
/// access by index takes logarithmic time at most. It keeps the lists up with what it writes itself. After
/// any other change of rows, cells or repeats in the tree, make a new view. The table must outlive it; a view
/// belongs to one thread at a time, also for reading.
class ODFMODEL_API Sheet {
public:
    explicit Sheet(CTableTable& table);
    Sheet(Sheet&& other) noexcept;
    Sheet& operator=(Sheet&& other) noexcept;
    ~Sheet();

    CTableTable& Table() const noexcept;
    std::string Name() const;
    /// What the tree has rows and columns for, used or not; most files fill the sheet up.
    std::uint32_t RowCount() const;
    std::uint32_t ColumnCount() const;

    /// @name Reading
    /// A name that is no reference gives a place without a cell.
    /// @{
    SheetCell Cell(std::uint32_t row, std::uint32_t column) const;
    SheetCell Cell(std::string_view name) const;
    SheetRow Row(std::uint32_t row) const;
    SheetColumn Column(std::uint32_t column) const;
    SheetColumn Column(std::string_view name) const;

    class RowIterator;
    class Rows;
    /// All rows that the tree has, from top to bottom.
    Rows AllRows() const;
    /// Those of them that have a cell which isn't empty.
    Rows UsedRows() const;
    /// The smallest range with every cell that isn't empty; nothing for an empty sheet.
    std::optional<CellRange> UsedRange() const;
    /// The range that is merged to one cell and has this one in it; nothing when none is.
    std::optional<CellRange> MergedRange(const CellAddress& cell) const;
    /// @}

    /// @name Writing
    /// What a repeated element stands for is divided first, so that nothing but the one cell changes. Rows,
    /// cells and columns that aren't there yet are made. False or null, with nothing changed, for a name that
    /// is no reference, a place beyond `kMaxSheetIndex` and a value that the format can't hold (infinite
    /// numbers, a date that is none).
    /// @{

    /// Sets value and text as an office suite does; a formula goes. Notes, shapes and the style stay. An
    /// empty value empties the cell.
    bool Set(std::uint32_t row, std::uint32_t column, const CellValue& value);
    bool Set(std::string_view name, const CellValue& value);
    /// A formula with the result that programs show until they calculate again; one without its prefix, such
    /// as "=A1*2", is taken to be OpenFormula with references like `[.A1]`.
    bool SetFormula(std::uint32_t row, std::uint32_t column, std::string_view formula,
                    const CellValue& result = {});
    bool SetFormula(std::string_view name, std::string_view formula, const CellValue& result = {});
    /// Fills the row after the last used one from column 0 on. Returns its index; nothing when it has no
    /// place or a value can't be held. Constant time, on average, for each cell.
    std::optional<std::uint32_t> AppendRow(std::span<const CellValue> values);
    std::optional<std::uint32_t> AppendRow(std::initializer_list<CellValue> values) {
        return AppendRow(std::span(values.begin(), values.size()));
    }
    /// The element of this place alone, to give it a style and more; made or divided off. Borrowed.
    CSDObject* MakeCell(std::uint32_t row, std::uint32_t column);
    CTableTableRow* MakeRow(std::uint32_t row);
    CTableTableColumn* MakeColumn(std::uint32_t column);
    /// @}

private:
    struct State;
    std::unique_ptr<State> state_;
};

class ODFMODEL_API Sheet::RowIterator {
public:
    using iterator_concept = std::forward_iterator_tag;
    using value_type = SheetRow;
    using difference_type = std::ptrdiff_t;

    RowIterator() = default;
    const SheetRow& operator*() const noexcept { return row_; }
    const SheetRow* operator->() const noexcept { return &row_; }
    RowIterator& operator++() {
        advance();
        return *this;
    }
    RowIterator operator++(int) {
        const RowIterator before = *this;
        advance();
        return before;
    }
    friend bool operator==(const RowIterator& a, const RowIterator& b) noexcept {
        return a.row_.Element() == b.row_.Element();
    }

private:
    friend class Rows;
    RowIterator(const State* state, bool isUsedOnly);
    void advance();

    const State* state_ = nullptr;
    std::size_t next_ = 0;
    bool isUsedOnly_ = false;
    SheetRow row_;
};

/// The rows of a sheet, for `for`.
class ODFMODEL_API Sheet::Rows {
public:
    RowIterator begin() const { return {state_, isUsedOnly_}; }
    RowIterator end() const noexcept { return {}; }

private:
    friend class Sheet;
    Rows(const State* state, bool isUsedOnly) noexcept : state_(state), isUsedOnly_(isUsedOnly) {}
    const State* state_;
    bool isUsedOnly_;
};

/// A name for a range of cells.
struct NamedRange {
    std::string name;
    std::string sheet; ///< the sheet of the range
    CellRange range;
    std::string scope; ///< the sheet that alone knows the name; empty for all
};

/// The sheets of a spreadsheet, in order, each with its view.
class ODFMODEL_API Sheets {
public:
    /// None for a document that is no spreadsheet.
    explicit Sheets(Document& document);
    /// The same below the root of a content, of a flat document, or an `office:spreadsheet` itself.
    explicit Sheets(CSDObject& root);

    auto begin() noexcept { return sheets_.begin(); }
    auto end() noexcept { return sheets_.end(); }
    std::size_t size() const noexcept { return sheets_.size(); }
    bool empty() const noexcept { return sheets_.empty(); }
    /// `index` must be less than `size`.
    Sheet& operator[](std::size_t index) noexcept { return sheets_[index]; }
    /// The sheet of that name, or null. Borrowed until a sheet is added.
    Sheet* Find(std::string_view name);
    /// Adds an empty sheet after the last; null when the name is empty or in use, or there is no
    /// spreadsheet.
    Sheet* Add(std::string_view name);
    /// The named ranges of the document and of its sheets, without those that are no single range.
    std::vector<NamedRange> NamedRanges() const;

private:
    explicit Sheets(CSDObject* spreadsheet);

    CSDObject* spreadsheet_;
    std::vector<Sheet> sheets_;
};

} // namespace ODF
