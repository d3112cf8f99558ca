#include <odfmodel/document/text.h>

#include "core/object_access.h"
#include "document/text/paragraph_text.h"

#include <odfmodel/core/reflection.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace ODF {
namespace {

using PieceKind = TextPiece::Kind;
constexpr char16_t kFixed = 0xFFFF; ///< a field; no XML contains this character
using Objects = std::vector<std::unique_ptr<CSDObject>>;

/// Calls `visit` for each paragraph and heading at and below `root` in document order.
template<typename Visit>
void ForEachParagraph(CSDObject& root, Visit visit) {
    std::vector<CSDObject*> open{&root};
    while (!open.empty()) {
        CSDObject* const object = open.back();
        open.pop_back();
        if (IsApart(*object) && object != &root) continue;
        if (IsParagraph(*object)) visit(*object);
        // What `visit` changes is inside the paragraph, so its list is taken only now.
        if (const std::vector<CSDObject*>* const list = object->GetObjectList())
            std::copy_if(list->rbegin(), list->rend(), std::back_inserter(open),
                         [](const CSDObject* child) { return child != nullptr; });
    }
}

void AppendPieces(CSDObject& paragraph, std::u16string& out) {
    for (const TextPiece& piece : PiecesOf(paragraph))
        out += piece.text;
}

bool HoldsOneValue(const CSDObject& object) noexcept {
    return ObjectAccess::holdsText(object) && !ObjectAccess::isMarkup(object);
}

/// Whether the value of the object is plain text, not that of a paragraph.
bool IsPlainValue(const CSDObject& object) noexcept {
    return HoldsOneValue(object) && !IsParagraph(object) && !IsInline(object);
}

bool IsSingleRun(const Objects& objects) noexcept {
    return objects.size() == 1 && ObjectAccess::isTextRun(*objects.front());
}

/// Sets the value of an element to what the text runs among its children say together.
void FollowRuns(CSDObject& object) {
    if (ObjectAccess::keepsRuns(object)) return;
    ObjectAccess::setKeepsValue(object);
    ObjectAccess::joinRuns(object);
}

void Give(CSDObject& parent, std::vector<CSDObject*>& list, Objects& objects) {
    for (std::unique_ptr<CSDObject>& object : objects) {
        object->SetRootpart(parent.GetRootpart());
        ObjectAccess::setParent(*object, parent, list.size());
        list.push_back(object.release());
    }
}

/// Collects what replaces the pieces of a paragraph. Each list of children is rebuilt once, however many of
/// its objects are replaced.
class Edit {
public:
    void replace(const TextPiece& piece, std::u16string_view text, bool afterBlank, bool beforeBlank) {
        Objects made = EncodeText(text, afterBlank, beforeBlank);
        Parent& parent = parents_[piece.parent];
        if (piece.kind == PieceKind::Value) {
            parent.hasValue = true;
            parent.front = std::move(made);
        } else if (piece.kind == PieceKind::Run && IsSingleRun(made)) {
            ObjectAccess::text(*piece.object) = ObjectAccess::text(*made.front());
        } else {
            parent.replaced.emplace(piece.object, std::move(made));
        }
    }

    void apply() {
        for (auto& [object, parent] : parents_)
            rebuild(*object, parent);
    }

private:
    struct Parent {
        bool hasValue = false;
        Objects front; ///< instead of the value
        std::unordered_map<const CSDObject*, Objects> replaced;
    };

    /// Whether runs are coming among the children of an element whose class has one value.
    static bool mixes(const CSDObject& object, const Parent& parent) {
        if (!ObjectAccess::holdsText(object) || ObjectAccess::keepsRuns(object)) return false;
        return parent.front.size() > 1 ||
               std::any_of(parent.replaced.begin(), parent.replaced.end(), [](const auto& replaced) {
                   return std::any_of(replaced.second.begin(), replaced.second.end(),
                                      [](const auto& made) { return ObjectAccess::isTextRun(*made); });
               });
    }

    static void rebuild(CSDObject& object, Parent& parent) {
        const bool isMixed = mixes(object, parent);
        const bool keepsValue = ObjectAccess::holdsText(object) && ObjectAccess::keepsValue(object);
        if (isMixed && !keepsValue && !parent.hasValue && !ObjectAccess::text(object).IsEmpty()) {
            parent.hasValue = true;
            std::unique_ptr<CSDObject> run(CSDStringValueObject::Create(kTextRunId));
            ObjectAccess::text(*run) = ObjectAccess::text(object);
            parent.front.push_back(std::move(run));
        }
        CTulStringW value;
        if (parent.hasValue && !isMixed && IsSingleRun(parent.front)) {
            value = ObjectAccess::text(*parent.front.front());
            parent.front.clear();
        }
        if (!parent.front.empty() || !parent.replaced.empty()) {
            std::vector<CSDObject*>& list = *ObjectAccess::list(object);
            std::size_t count = list.size() + parent.front.size();
            for (const auto& [old, made] : parent.replaced)
                count += made.size();
            std::vector<CSDObject*> next;
            next.reserve(count); // the list can't be left half made
            Give(object, next, parent.front);
            for (CSDObject* const child : list) {
                const auto at = parent.replaced.find(child);
                if (at == parent.replaced.end()) {
                    next.push_back(child);
                    continue;
                }
                Give(object, next, at->second);
                CSDObject::Delete(child);
            }
            list.swap(next);
        }
        if (parent.hasValue) ObjectAccess::text(object) = std::move(value);
        if (isMixed || keepsValue) FollowRuns(object);
    }

    std::unordered_map<CSDObject*, Parent> parents_;
};

/// The pieces of a paragraph with each `from` replaced.
class Replacement {
public:
    Replacement(std::vector<TextPiece> pieces, std::u16string_view from, std::u16string_view to)
        : pieces_(std::move(pieces)), from_(from), to_(to) {}

    std::size_t run() {
        find();
        if (matches_.empty()) return 0;
        replace();
        findNext();
        Edit edit;
        char16_t before = u'\n';   // the start of a paragraph counts as one
        bool isBlankBefore = true; // a blank in the file would be dropped here
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const TextPiece& piece = pieces_[i];
            const std::u16string& text = textOf(i);
            const bool losesBlank =
                isData(i) && !text.empty() &&
                ((text.front() == u' ' && isBlankBefore) || (text.back() == u' ' && isAtEnd(i)));
            const bool isMade = isChanged_[i] || losesBlank || (piece.isCut && !isBlankBefore);
            if (isMade)
                edit.replace(piece, text, before == u' ' || before == u'\t' || before == u'\n',
                             isBlankAfter(i));
            if (text.empty()) continue;
            before = piece.kind == PieceKind::Fixed ? u'x' : text.back();
            isBlankBefore = isData(i) && !isMade && before == u' ';
        }
        edit.apply();
        return matches_.size();
    }

private:
    void find() {
        std::u16string whole;
        for (const TextPiece& piece : pieces_) {
            if (piece.kind == PieceKind::Fixed)
                whole += kFixed;
            else
                whole += piece.text;
        }
        for (std::size_t at = 0; (at = whole.find(from_, at)) != std::u16string::npos; at += from_.size())
            matches_.push_back(at);
    }

    void replace() {
        texts_.resize(pieces_.size());
        isChanged_.resize(pieces_.size());
        std::size_t first = 0; // of the piece
        std::size_t match = 0; // the first that ends after `first`
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const std::u16string& old = pieces_[i].text;
            const std::size_t end = first + (pieces_[i].kind == PieceKind::Fixed ? 1 : old.size());
            std::size_t at = first;
            while (match < matches_.size() && matches_[match] < end) {
                const std::size_t begin = matches_[match];
                const std::size_t last = begin + from_.size();
                isChanged_[i] = isChanged_[i] || !old.empty();
                if (begin >= first) {
                    texts_[i].append(old, at - first, begin - at);
                    texts_[i] += to_;
                }
                at = std::min(last, end);
                if (last > end) break;
                ++match;
            }
            if (isChanged_[i]) texts_[i].append(old, at - first, end - at);
            first = end;
        }
    }

    const std::u16string& textOf(std::size_t i) const { return isChanged_[i] ? texts_[i] : pieces_[i].text; }
    /// For each piece the next one that says something; their number for the last.
    void findNext() {
        next_.resize(pieces_.size());
        std::size_t next = pieces_.size();
        for (std::size_t i = pieces_.size(); i-- > 0;) {
            next_[i] = next;
            if (!textOf(i).empty()) next = i;
        }
    }
    bool isAtEnd(std::size_t i) const { return next_[i] == pieces_.size(); }
    /// Whether a blank at the end of the piece would be dropped, or swallow the one that comes next.
    bool isBlankAfter(std::size_t i) const {
        return isAtEnd(i) || (isData(next_[i]) && textOf(next_[i]).front() == u' ');
    }
    /// Whether the piece is character data, where a file can't have all blanks.
    bool isData(std::size_t i) const {
        return pieces_[i].kind == PieceKind::Run || pieces_[i].kind == PieceKind::Value;
    }

    std::vector<TextPiece> pieces_;
    std::u16string_view from_;
    std::u16string_view to_;
    std::vector<std::size_t> matches_;
    std::vector<std::u16string> texts_; ///< what the changed pieces say
    std::vector<bool> isChanged_;
    std::vector<std::size_t> next_;
};

/// Line ends as a line feed.
std::u16string WithLineFeeds(std::string_view utf8) {
    std::u16string text;
    bool afterReturn = false;
    for (const char16_t unit : ToUtf16(utf8)) {
        if (unit != u'\n' || !afterReturn) text += unit == u'\r' ? u'\n' : unit;
        afterReturn = unit == u'\r';
    }
    return text;
}

} // namespace

std::u16string Text16(const CSDObject& element) {
    auto& object = const_cast<CSDObject&>(element); // NOLINT: nothing is changed
    std::u16string text;
    if (IsParagraph(object) || IsInline(object)) {
        AppendPieces(object, text);
    } else if (HoldsOneValue(object) || ObjectAccess::isDate(object)) {
        text = ToUtf16(TextOf(object));
        for (const CSDObject& child : object.Children())
            if (ObjectAccess::isTextRun(child)) text += ObjectAccess::text(child).view();
    } else {
        bool isFirst = true;
        ForEachParagraph(object, [&](CSDObject& paragraph) {
            if (!std::exchange(isFirst, false)) text += u'\n';
            AppendPieces(paragraph, text);
        });
    }
    return text;
}

std::string Text(const CSDObject& element) {
    return ToUtf8(Text16(element));
}

bool SetText(CSDObject& element, std::string_view text) {
    if (!HoldsOneValue(element)) return false;
    Objects made;
    CTulStringW value;
    if (IsPlainValue(element)) {
        if (!value.Assign(ToUtf16(text))) throw std::bad_alloc();
    } else {
        made = EncodeText(WithLineFeeds(text), true, true);
        if (!ObjectAccess::keepsRuns(element) && IsSingleRun(made)) {
            value = ObjectAccess::text(*made.front());
            made.clear();
        }
    }
    std::vector<CSDObject*> next;
    next.reserve(made.size()); // nothing fails from here on
    Give(element, next, made);
    std::vector<CSDObject*>& list = *ObjectAccess::list(element);
    for (CSDObject* const old : std::exchange(list, {}))
        CSDObject::Delete(old);
    static_cast<CSDStringValueObject&>(element).Setval(value);
    list = std::move(next);
    if (!list.empty()) FollowRuns(element);
    return true;
}

std::size_t ReplaceText(CSDObject& root, std::string_view from, std::string_view to) {
    const std::u16string sought = WithLineFeeds(from);
    const std::u16string put = WithLineFeeds(to);
    if (sought.empty() || sought.find(kFixed) != std::u16string::npos) return 0;
    std::size_t count = 0;
    const auto visit = [&](CSDObject& paragraph) {
        count += Replacement(PiecesOf(paragraph), sought, put).run();
    };
    if (IsInline(root)) visit(root);
    ForEachParagraph(root, visit);
    return count;
}

} // namespace ODF
