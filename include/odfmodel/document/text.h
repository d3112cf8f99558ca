#pragma once

#include <odfmodel/export.h>

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// Reads and changes the text of elements as people see it. In a file, repeated blanks, tabs and line ends
/// are elements of their own (text:s, text:tab, text:line-break), and a paragraph is divided wherever its
/// formatting changes; these functions hide that. They work on trees of both fidelities.

class CSDObject;

namespace ODF {

/// Returns the text of `element` in UTF-8:
/// - of a paragraph, heading, span or link: its own text with blanks, tabs and line ends ("\n"), without its
///   notes, text boxes and comments; a field counts with the value that it shows;
/// - of an element with one value, such as a title: the value;
/// - of any other element: the text of all paragraphs and headings below it, one a line, with those of notes
///   and text boxes after the paragraph that contains them. Comments and deleted text don't count.
///
/// One text:s gives at most 4,096 blanks.
ODFMODEL_API std::string Text(const CSDObject& element);
/// The same in UTF-16.
ODFMODEL_API std::u16string Text16(const CSDObject& element);

/// Makes `text`, in UTF-8, the whole content of a paragraph, heading, span, link or element with one value.
/// Its old content is destroyed, notes and pictures included; attributes stay. "\n", "\r\n" and "\r" are line
/// ends. False, and nothing changes, for an element of any other class. Throws std::bad_alloc without memory.
ODFMODEL_API bool SetText(CSDObject& element, std::string_view text);

/// Adds text, in UTF-8, after all that such an element holds, or before `before`, a child of it. "\n"
/// is a line end. False, and nothing changes, for an element of any other class and when `before` is no
/// child. Throws std::bad_alloc without memory.
ODFMODEL_API bool AddText(CSDObject& element, std::string_view text, const CSDObject* before = nullptr);

/// Replaces each `from` by `to`, both in UTF-8, in the paragraphs and headings at and below `root`, and
/// returns how many were replaced. A match may go across spans; its replacement has the place and
/// the formatting of its first character. Notes, pictures and bookmarks inside a match stay. A match never
/// takes part of a field, and comments and deleted text are left alone. Replacements aren't searched again.
/// An empty `from` is found nowhere. Throws std::bad_alloc without memory, when some may be replaced already.
ODFMODEL_API std::size_t ReplaceText(CSDObject& root, std::string_view from, std::string_view to);

} // namespace ODF
