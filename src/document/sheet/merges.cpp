#include "document/sheet/merges.h"

#include <algorithm>

namespace ODF {
namespace {

/// The last index of a span or of the repeats; spans that are repeated themselves count once.
std::uint32_t LastOf(std::uint32_t first, std::uint32_t span, std::uint32_t repeat) noexcept {
    const std::uint64_t last = std::uint64_t{first} + (span > 1 ? span : repeat) - 1;
    return static_cast<std::uint32_t>(std::min(last, std::uint64_t{kMaxSheetIndex}));
}

} // namespace

Merges::Merges(const Sheet& sheet) {
    std::uint32_t reach = 0;
    for (const SheetRow& row : sheet.AllRows())
        for (const SheetCell& cell : row.AllCells()) {
            const std::uint32_t rows = cell.RowsSpanned();
            const std::uint32_t columns = cell.ColumnsSpanned();
            if (rows == 1 && columns == 1) continue;
            const CellAddress last{LastOf(cell.Row(), rows, row.Repeat()),
                                   LastOf(cell.Column(), columns, cell.ColumnRepeat())};
            reach = std::max(reach, last.row);
            merges_.push_back({{{cell.Row(), cell.Column()}, last}, rows == 1, columns == 1, reach});
        }
}

std::optional<CellRange> Merges::find(const CellAddress& cell) const noexcept {
    auto at =
        std::upper_bound(merges_.begin(), merges_.end(), cell.row,
                         [](std::uint32_t row, const Merge& merge) { return row < merge.range.first.row; });
    while (at != merges_.begin() && (--at)->reach >= cell.row) {
        if (!at->range.Contains(cell)) continue;
        CellRange range = at->range;
        if (at->isEachRow) range.first.row = range.last.row = cell.row;
        if (at->isEachColumn) range.first.column = range.last.column = cell.column;
        return range;
    }
    return std::nullopt;
}

} // namespace ODF
