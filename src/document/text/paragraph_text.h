#pragma once

#include <odfmodel/core/object.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

/// The blanks of one element that are read or written: a file of a few bytes may ask for any number.
inline constexpr unsigned kMaxBlanks = 4096;

/// A part of a paragraph's text that lies in one object.
struct TextPiece {
    enum class Kind {
        Run,    ///< `object` is a text run among the children of `parent`
        Value,  ///< the value of `parent` itself; there is no `object`
        Blanks, ///< `object` is a text:s, text:tab or text:line-break
        Fixed   ///< a field, whose text its office program makes
    };
    Kind kind;
    CSDObject* parent;
    CSDObject* object;
    std::u16string text; ///< as it is read: runs of white space in a file are one blank
    bool isCut = false;  ///< begins with white space that what stands before has swallowed
};

/// Whether the object begins a text of its own: a paragraph or heading.
bool IsParagraph(const CSDObject& object) noexcept;
/// Whether the text of the object is part of the paragraph around it: spans, links and what no class has.
bool IsInline(const CSDObject& object) noexcept;
/// Whether nothing at and below the object is text of the document: comments and deleted text.
bool IsApart(const CSDObject& object) noexcept;

/// The text of a paragraph or inline object in its pieces, in reading order.
std::vector<TextPiece> PiecesOf(CSDObject& paragraph);
/// The objects that stand for `text`. A blank at the begin or end is one that a reader would drop if
/// `afterBlank` or `beforeBlank`.
std::vector<std::unique_ptr<CSDObject>> EncodeText(std::u16string_view text, bool afterBlank,
                                                   bool beforeBlank);

} // namespace ODF
