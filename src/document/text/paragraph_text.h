#pragma once

#include <odfmodel/core/object.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

/// The blanks of one element that are read or written: a file of a few bytes may ask for any number.
inline constexpr unsigned kMaxBlanks = 4096;

/// The part of a paragraph's text that one object holds.
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
    bool isCut = false;  ///< begins with white space that follows other white space, so it is dropped
};

/// Whether the object is a paragraph or heading.
bool IsParagraph(const CSDObject& object) noexcept;
/// Whether the text of the object belongs to the paragraph that contains it: spans, links, foreign elements.
bool IsInline(const CSDObject& object) noexcept;
/// Whether the object, with all below it, is a comment or deleted text.
bool IsApart(const CSDObject& object) noexcept;

/// Divides the text of a paragraph or inline object into the pieces that objects hold, in reading order.
std::vector<TextPiece> PiecesOf(CSDObject& paragraph);
/// Makes the objects that `text` is written as. With `afterBlank` a reader would drop a blank at its start,
/// with `beforeBlank` one at its end.
std::vector<std::unique_ptr<CSDObject>> EncodeText(std::u16string_view text, bool afterBlank,
                                                   bool beforeBlank);

} // namespace ODF
