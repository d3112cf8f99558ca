#pragma once

#include <odfmodel/export.h>

#include <functional>
#include <string>
#include <string_view>

/// @file
/// The whole text of a document in the order in which one reads it: paragraphs with the labels of lists and
/// headings, notes and text boxes after what they hang on, the cells of sheets, slides with their notes.
///
///     ODF::ForEachLine(document, [](std::string_view line) { std::cout << line << '\n'; });

class CSDObject;

namespace ODF {

class Document;

/// What `ForEachLine` and `DocumentText` may be told.
struct ReadingOptions {
    /// The main flow alone, as word processors save plain text: without the text of notes, text boxes, shapes
    /// and speaker's notes, and with tracked deletions in their place.
    bool isMainFlow = false;
};

/// Takes one line in UTF-8, without its end; valid during the call. Line breaks within a paragraph are in it
/// as "\n". What it throws comes out of `ForEachLine`.
using LineSink = std::function<void(std::string_view line)>;

/// Hands the text of a document to `line`, a paragraph, heading, list item or row of a sheet at a time. Cells
/// are separated by tabs, and slides, pages and sheets by an empty line; a sheet begins with its name. Labels
/// are what the list styles make; for bullets there are three signs, by depth. Comments, tracked deletions,
/// ruby texts, covered cells, fields that are told not to show, embedded objects, headers and footers are
/// left out. Fields have the text that the file has stored. The text isn't escaped: it has the control
/// characters of its file.
///
/// False when repeated cells, rows or blanks were too many, and some copies are left out: they end at 64 MiB,
/// and the blanks of one element at 4,096.
ODFMODEL_API bool ForEachLine(Document& document, const LineSink& line, const ReadingOptions& options = {});
/// The same of a tree: the root of a content, with that of the styles that its lists and headings are
/// numbered by (null for none), or the root of a flat document.
ODFMODEL_API bool ForEachLine(const CSDObject& content, const CSDObject* styles, const LineSink& line,
                              const ReadingOptions& options = {});

/// All lines, each with a line end.
ODFMODEL_API std::string DocumentText(Document& document, const ReadingOptions& options = {});
ODFMODEL_API std::string DocumentText(const CSDObject& content, const CSDObject* styles = nullptr,
                                      const ReadingOptions& options = {});

} // namespace ODF
