#pragma once

#include <odfmodel/core/object.h>

#include <string>
#include <string_view>

namespace ODF {

/// The text of a cell: its paragraphs, also those in lists, one a line. The elements for blanks, tabs and
/// line ends become these characters. Notes and shapes aren't part of it.
std::string CellText(const CSDObject& cell);
/// Whether the child of a cell is part of its text.
bool IsCellText(const CSDObject& child) noexcept;
/// Deletes the paragraphs and whatever else `CellText` would tell.
void DropCellText(CSDExtObject& cell) noexcept;
/// Appends one paragraph; the text has no blanks but single ones between other characters.
void AddCellParagraph(CSDExtObject& cell, const CTulStringW& text);
/// Appends any text as paragraphs; an empty one adds nothing.
void AddCellText(CSDExtObject& cell, std::string_view text);

} // namespace ODF
