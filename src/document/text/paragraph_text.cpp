#include "document/text/paragraph_text.h"

#include "core/object_access.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

#include <algorithm>

namespace ODF {
namespace {

constexpr bool IsWhite(char16_t unit) noexcept {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

bool IsShown(const CSDObject& field) {
    CTulStringW display;
    return !GetAttributeText(field, "text:display", display) || display != u"none";
}

/// Puts the pieces together, with white space as readers take it.
class PieceMaker {
public:
    void add(TextPiece::Kind kind, CSDObject* parent, CSDObject* object, std::u16string_view raw) {
        std::u16string text;
        const bool isCut = afterBlank_ && !raw.empty() && IsWhite(raw.front());
        for (const char16_t unit : raw) {
            const bool isWhite = IsWhite(unit);
            if (!isWhite || !afterBlank_) text += isWhite ? u' ' : unit;
            afterBlank_ = isWhite;
        }
        put(kind, parent, object, std::move(text), isCut);
    }
    /// Text that is none of the file's character data: it ends a row of white space.
    void addWhole(TextPiece::Kind kind, CSDObject* parent, CSDObject* object, std::u16string text) {
        if (text.empty()) return;
        put(kind, parent, object, std::move(text), false);
        afterBlank_ = false;
    }
    std::vector<TextPiece> take() {
        // A blank at the end of the paragraph is none.
        for (auto at = pieces_.rbegin(); at != pieces_.rend(); ++at) {
            if (at->text.empty()) continue;
            const bool isData = at->kind == TextPiece::Kind::Run || at->kind == TextPiece::Kind::Value;
            if (isData && at->text.back() == u' ') at->text.pop_back();
            break;
        }
        return std::move(pieces_);
    }

private:
    void put(TextPiece::Kind kind, CSDObject* parent, CSDObject* object, std::u16string text, bool isCut) {
        pieces_.push_back({kind, parent, object, std::move(text), isCut});
    }

    std::vector<TextPiece> pieces_;
    bool afterBlank_ = true;
};

/// What a field shows: its value, or its runs where it has them.
std::u16string ShownBy(const CSDObject& field) {
    if (!ObjectAccess::holdsText(field) || ObjectAccess::isMarkup(field) || !IsShown(field)) return {};
    std::u16string text;
    if (!ObjectAccess::keepsValue(field)) text = ObjectAccess::text(field).view();
    for (const CSDObject& child : field.Children())
        if (ObjectAccess::isTextRun(child)) text += ObjectAccess::text(child).view();
    return text;
}

} // namespace

bool IsParagraph(const CSDObject& object) noexcept {
    return object.GetID() == CTextP::kId || object.GetID() == CTextH::kId;
}

bool IsInline(const CSDObject& object) noexcept {
    switch (object.GetID()) {
    case CTextSpan::kId:
    case CTextA::kId:
    case CTextRuby::kId:
    case CTextRubyBase::kId:
    case kForeignElementId:
        return true;
    default:
        return false;
    }
}

bool IsApart(const CSDObject& object) noexcept {
    return object.GetID() == COfficeAnnotation::kId || object.GetID() == CTextTrackedChanges::kId;
}

std::vector<TextPiece> PiecesOf(CSDObject& paragraph) {
    using Kind = TextPiece::Kind;
    struct Level {
        CSDObject* object;
        std::size_t next;
    };
    PieceMaker maker;
    std::vector<Level> open;
    const auto enter = [&](CSDObject& object) {
        if (ObjectAccess::holdsText(object) && !ObjectAccess::keepsValue(object) &&
            !ObjectAccess::text(object).IsEmpty())
            maker.add(Kind::Value, &object, nullptr, ObjectAccess::text(object).view());
        open.push_back({&object, 0});
    };
    enter(paragraph);
    while (!open.empty()) {
        CSDObject* const parent = open.back().object;
        const std::vector<CSDObject*>* const list = parent->GetObjectList();
        if (!list || open.back().next >= list->size()) {
            open.pop_back();
            continue;
        }
        CSDObject* const child = (*list)[open.back().next++];
        if (!child) continue;
        if (ObjectAccess::isTextRun(*child)) {
            maker.add(Kind::Run, parent, child, ObjectAccess::text(*child).view());
            continue;
        }
        switch (child->GetID()) {
        case CTextS::kId: {
            unsigned count = 1;
            static_cast<const CTextS*>(child)->GetTextC(count);
            maker.addWhole(Kind::Blanks, parent, child, std::u16string(std::min(count, kMaxBlanks), u' '));
            break;
        }
        case CTextTab::kId:
            maker.addWhole(Kind::Blanks, parent, child, u"\t");
            break;
        case CTextLineBreak::kId:
            maker.addWhole(Kind::Blanks, parent, child, u"\n");
            break;
        case CTextNumber::kId:
        case CTextRubyText::kId:
        case CTextScript::kId:
            break; // labels, glosses and programs
        default:
            if (IsInline(*child))
                enter(*child);
            else if (!IsParagraph(*child))
                maker.addWhole(Kind::Fixed, parent, child, ShownBy(*child));
        }
    }
    return maker.take();
}

std::vector<std::unique_ptr<CSDObject>> EncodeText(std::u16string_view text, bool afterBlank,
                                                   bool beforeBlank) {
    std::vector<std::unique_ptr<CSDObject>> made;
    std::u16string run;
    const auto add = [&](CSDObject* object) { made.emplace_back(object); };
    const auto endRun = [&] {
        if (run.empty()) return;
        std::unique_ptr<CSDObject> object(CSDStringValueObject::Create(kTextRunId));
        ObjectAccess::text(*object) = CTulStringW(run);
        made.push_back(std::move(object));
        run.clear();
    };
    for (std::size_t at = 0; at < text.size();) {
        const char16_t unit = text[at];
        if (unit == u' ') {
            const std::size_t end = std::min(text.find_first_not_of(u' ', at), text.size());
            std::size_t count = end - at;
            // One that stands after a character is a character itself, all others are counted.
            if (!afterBlank && !(end == text.size() && beforeBlank)) {
                run += u' ';
                --count;
            }
            if (count > 0) endRun();
            while (count > 0) {
                const auto now = static_cast<unsigned>(std::min<std::size_t>(count, kMaxBlanks));
                add(CTextS::Create());
                if (now > 1) static_cast<CTextS&>(*made.back()).SetTextC(now);
                count -= now;
            }
            at = end;
            afterBlank = true;
        } else if (unit == u'\t' || unit == u'\n' || unit == u'\r') {
            endRun();
            add(unit == u'\t' ? CTextTab::Create() : CTextLineBreak::Create());
            at += unit == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n' ? 2U : 1U;
            afterBlank = true;
        } else {
            run += unit;
            ++at;
            afterBlank = false;
        }
    }
    endRun();
    return made;
}

} // namespace ODF
