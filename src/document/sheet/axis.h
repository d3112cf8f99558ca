#pragma once

#include <odfmodel/core/object.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace ODF {

class CTableTable;

/// A cell element of a row and the columns it stands for.
struct CellEntry {
    std::uint64_t start;
    CSDObject* cell;
    std::uint32_t repeat;
    std::uint32_t position; ///< among the children of the row
    std::uint64_t end() const noexcept { return start + repeat; }
};

/// Finds the cells of one row by column. Most rows begin with cells that stand for one column each, so that
/// the column is the position: those cost nothing. The others have a list.
class CellIndex {
public:
    /// The entry with that column; without a cell when the row has none there.
    CellEntry find(const CSDObject& row, std::uint64_t column);
    /// The cell of this column alone, made or divided off.
    CSDObject* make(CSDExtObject& row, std::uint64_t column);

private:
    static constexpr std::uint32_t kUnknown = ~std::uint32_t{0};

    void build(const CSDObject& row);
    std::uint64_t end() const noexcept { return rest_ && !rest_->empty() ? rest_->back().end() : plain_; }
    std::size_t indexOf(std::uint64_t column) const noexcept;
    void append(CSDExtObject& row, std::uint32_t repeat);

    std::uint32_t plain_ = kUnknown; ///< cells at the start for which column and position are the same
    std::unique_ptr<std::vector<CellEntry>> rest_;
};

/// A row or column element and what it stands for.
struct Line {
    std::uint64_t start;
    CSDExtObject* element;
    CSDExtObject* parent;
    std::uint32_t repeat;
    CellIndex cells; ///< of a row
    std::uint64_t end() const noexcept { return start + repeat; }
};

/// The rows or the columns of a table in order, also those in groups, as a list from which any is found by
/// its index.
class Axis {
public:
    enum class Kind { Rows, Columns };
    static constexpr std::size_t kNone = ~std::size_t{0};

    Axis(CTableTable& table, Kind kind);

    std::vector<Line>& lines() noexcept { return lines_; }
    const std::vector<Line>& lines() const noexcept { return lines_; }
    /// Rows or columns in all.
    std::uint64_t end() const noexcept { return lines_.empty() ? 0 : lines_.back().end(); }
    /// The line with that index; `kNone` after the last.
    std::size_t find(std::uint64_t index) noexcept;
    /// The line of this index alone, made or divided off; a new row has no cell.
    Line& make(std::uint64_t index);
    /// Adds `count` lines after the last, as one element.
    void append(std::uint32_t count);

private:
    bool isLine(const CSDObject& object) const noexcept;
    bool isGroup(const CSDObject& object) const noexcept;
    std::size_t placeAfterLast() const noexcept;

    CTableTable& table_;
    Kind kind_;
    std::vector<Line> lines_;
    std::size_t last_ = 0; ///< found last: the next is often near
};

} // namespace ODF
