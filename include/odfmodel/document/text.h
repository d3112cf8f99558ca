#pragma once

#include <odfmodel/export.h>

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// The text of elements as people read it. In a file several blanks, tabs and line ends are elements of their
/// own (text:s, text:tab, text:line-break), and a paragraph is in pieces wherever its formatting changes;
/// these functions hide that. They work on trees of both fidelities.

class CSDObject;

namespace ODF {

/// What is read of `element`, in UTF-8. Of a paragraph, heading, span or link it is its own text with blanks,
/// tabs and line ends ("\n"), without the notes, text boxes and comments that hang on it; fields count with
/// the value that they show. Of an element with one value, such as a title, it is the value. Of any other
/// element it is the text of all paragraphs and headings below, each in a line of its own, those of notes and
/// text boxes behind the one that they hang on; comments and deleted text don't count. Of one text:s at most
/// 4,096 blanks are given.
ODFMODEL_API std::string Text(const CSDObject& element);
/// The same in UTF-16.
ODFMODEL_API std::u16string Text16(const CSDObject& element);

/// Makes `text`, in UTF-8, all that a paragraph, heading, span, link or element with one value holds. What
/// was in it is destroyed, also notes and pictures; attributes stay. "\n", "\r\n" and "\r" are line ends.
/// False, and nothing changes, for an element of any other class. Throws std::bad_alloc without memory.
ODFMODEL_API bool SetText(CSDObject& element, std::string_view text);

/// Adds text, in UTF-8, behind all that such an element holds, or in front of `before`, a child of it. "\n"
/// is a line end. False, and nothing changes, for an element of any other class and when `before` is no
/// child. Throws std::bad_alloc without memory.
ODFMODEL_API bool AddText(CSDObject& element, std::string_view text, const CSDObject* before = nullptr);

/// Replaces each `from` by `to`, both in UTF-8, in the paragraphs and headings at and below `root`, and
/// returns how many were replaced. A match may go across spans; what is put in stands where its first
/// character was and is formatted like it. Notes, pictures and bookmarks inside a match stay. A match never
/// takes part of a field, and comments and deleted text are left alone. What was put in isn't searched. An
/// empty `from` is found nowhere. Throws std::bad_alloc without memory; a part is done then.
ODFMODEL_API std::size_t ReplaceText(CSDObject& root, std::string_view from, std::string_view to);

} // namespace ODF
