#pragma once

#include "convert/looks.h"

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>

namespace command {

/// What a document consists of, in reading order, for writers of marked-up text. Every start has its end, and
/// blocks within a paragraph come after it.
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
    /// A line between slides.
    virtual void separate() = 0;

    virtual void text(std::string_view utf8) = 0;
    virtual void lineBreak() = 0;
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

/// Tells `sink` what is in a document. Comments, deleted text, forms, embedded objects and speaker's notes
/// are left out. False when repeated cells were too many, and some copies are left out.
bool WriteMarkup(ODF::Document& document, MarkupSink& sink);

/// Whether a link may be followed by whoever reads the converted text: to the web, by mail, or in the
/// document.
bool IsHarmlessLink(std::string_view target);

} // namespace command
