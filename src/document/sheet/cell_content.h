#pragma once

#include <odfmodel/core/object.h>
#include <odfmodel/document/cell_value.h>

#include <cstdint>
#include <string>
#include <string_view>

// What one cell element holds. `cell` is a `CTableTableCell` or `CTableCoveredTableCell` in each.
namespace ODF {

CellValue ReadCellValue(const CSDObject& cell);
std::string ReadCellFormula(const CSDObject& cell);
/// Whether the cell has a value, formula, text, shape or note.
bool IsCellUsed(const CSDObject& cell) noexcept;
/// Columns or rows that the cell takes, at least 1.
std::uint32_t ColumnsSpannedBy(const CSDObject& cell) noexcept;
std::uint32_t RowsSpannedBy(const CSDObject& cell) noexcept;

/// Replaces value, formula and text; an empty formula is none. The value must be valid.
void WriteCell(CSDExtObject& cell, const CellValue& value, std::string_view formula);

} // namespace ODF
