#pragma once

#include "convert/looks.h"

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>

namespace command {

/// Writes the text of a document with markup, as `WriteMarkup` calls it in reading order. Each start has an
/// end. A block inside a paragraph, such as the text of a shape, comes after that paragraph.
class MarkupSink {
public:
    MarkupSink() = default;
    MarkupSink(const MarkupSink&) = delete;
    MarkupSink& operator=(const MarkupSink&) = delete;
    virtual ~MarkupSink() = default;

    /// `level` is 0 for a paragraph, 1 to 6 for a heading.
    virtual void startParagraph(unsigned level) = 0;
    virtual void endParagraph() = 0;
    virtual void startList(bool isNumbered) = 0;
    virtual void endList() = 0;
    virtual void startItem() = 0;
    virtual void endItem() = 0;
    virtual void startTable() = 0;
    virtual void endTable() = 0;
    virtual void startRow() = 0;
    virtual void endRow() = 0;
    virtual void startCell(unsigned columns, unsigned rows) = 0;
    virtual void endCell() = 0;
    /// The place of a cell that is merged with one to its left or above.
    virtual void coveredCell() = 0;
    /// A line between slides.
    virtual void separate() = 0;

    virtual void text(std::string_view utf8) = 0;
    virtual void lineBreak() = 0;
    /// `look` is what is new: it isn't told again inside of itself.
    virtual void startLook(const Look& look) = 0;
    virtual void endLook() = 0;
    virtual void startLink(std::string_view target) = 0;
    virtual void endLink() = 0;
    /// `object` is the draw:image, `target` its link.
    virtual void image(const CSDObject& object, std::string_view target, std::string_view about) = 0;
    /// The mark of a note in the text; its paragraphs come at the end of the document, between `startNote`
    /// and `endNote`.
    virtual void noteMark(unsigned number) = 0;
    virtual void startNote(unsigned number) = 0;
    virtual void endNote() = 0;
};

/// Text with markup, made from a document.
struct Markup {
    std::string text;
    bool isCut = false;     ///< repeated cells or blanks were too many: some copies are missing
    ODF::Result pictures{}; ///< why pictures are missing
};

/// Calls `sink` with the text of a document, without comments, deleted text, forms, embedded objects and
/// speaker's notes. Copies of cells and blanks end at 64 MiB: it returns false when some are missing.
bool WriteMarkup(ODF::Document& document, MarkupSink& sink);

/// Whether a link is safe to follow: it goes to the web, to a mail address, or to a file or place by a
/// relative path.
bool IsHarmlessLink(std::string_view target);

} // namespace command
