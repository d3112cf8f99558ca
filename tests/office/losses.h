#pragma once

#include <string>
#include <string_view>

namespace test {

/// A part of a document in XML as the element classes hold it: what they are known to lose or to write
/// otherwise is lost or written otherwise here, by plain text work that shares nothing with the library but
/// the tables of the classes. The losses, each with its reason:
///
/// - Most booleans are written as 1 and 0 where the office suite writes, and only understands, true and
/// false: such
///   an attribute counts as absent for it. (Lists that continue their numbering start again, a month in
///   letters becomes a number, a sub-table becomes a plain one.)
/// - `text:a` has its own text in one value, which is before its children.
/// - References to marks, notes and sequences have no text; nor has `text:script`.
/// - Elements that their parent doesn't list go with their content: `text:meta`, `text:drop-down`, `draw:a`
/// directly in
///   a page, foreign ones.
/// - `xml:id` isn't listed, so nothing can refer to it.
std::string AsKept(std::string_view xml);

} // namespace test
