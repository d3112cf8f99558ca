#include "document/sheet/cell_text.h"

#include "core/object_access.h"
#include "document/sheet/tree_edit.h"
#include "document/text/paragraph_text.h"

#include <odfmodel/elements/table/structure.h>
#include <odfmodel/elements/text/blocks.h>
#include <odfmodel/elements/text/paragraph.h>

#include <algorithm>
#include <cstdint>

namespace ODF {
namespace {

/// Holds paragraphs, at whatever depth.
bool IsBlock(unsigned id) noexcept {
    return id == CTextList::kId || id == CTextListItem::kId || id == CTextListHeader::kId ||
           id == CTextSection::kId || id == CTextNumberedParagraph::kId;
}

/// Within a paragraph, but no part of its text: shapes, notes, what is read apart from the line.
bool IsBeside(const CSDObject& object) noexcept {
    const ClassDescriptor* const table = ObjectAccess::descriptor(object);
    if (!table) return !ObjectAccess::isTextRun(object);
    const std::string_view name = table->elementName;
    return (name.starts_with("draw:") && name != "draw:a") || name.starts_with("dr3d:") ||
           name == "office:annotation" || name == "text:note" || name == "text:ruby-text";
}

bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Puts lines together; blanks and line ends of the file count as one blank, none at the start of a
/// paragraph.
class Lines {
public:
    void startParagraph() {
        if (hasParagraph_) text_ += '\n';
        hasParagraph_ = isAfterBlank_ = true;
    }
    void add(std::u16string_view text) {
        for (const char c : ToUtf8(text)) {
            const bool isBlank = IsBlank(c);
            if (!isBlank)
                text_ += c;
            else if (!isAfterBlank_)
                text_ += ' ';
            isAfterBlank_ = isBlank;
        }
    }
    void add(std::size_t count, char c) {
        text_.append(count, c);
        isAfterBlank_ = false;
    }
    std::string take() noexcept { return std::move(text_); }

private:
    std::string text_;
    bool hasParagraph_ = false;
    bool isAfterBlank_ = true;
};

/// Takes what the object itself says; true when what lies below it is to be read too.
bool Enter(const CSDObject& object, bool isInParagraph, Lines& lines) {
    const unsigned id = object.GetID();
    if (!isInParagraph) {
        if (!IsParagraph(object)) return IsBlock(id);
        lines.startParagraph();
    } else if (IsBeside(object)) {
        return false;
    }
    unsigned count = 1;
    switch (id) {
    case CTextS::kId:
        static_cast<const CTextS&>(object).GetTextC(count);
        lines.add(std::min(count, kMaxBlanks), ' ');
        return false;
    case CTextTab::kId:
        lines.add(1, '\t');
        return false;
    case CTextLineBreak::kId:
        lines.add(1, '\n');
        return false;
    default:
        break;
    }
    if (ObjectAccess::holdsText(object) && !ObjectAccess::keepsValue(object))
        lines.add(ObjectAccess::text(object).view());
    return true;
}

/// The one run of a cell with one plain paragraph, which nearly all are; null for any other.
const CSDObject* OnlyRun(const CSDObject& cell) noexcept {
    const std::vector<CSDObject*>& paragraphs = ChildrenOf(cell);
    if (paragraphs.size() != 1 || !paragraphs[0] || paragraphs[0]->GetID() != CTextP::kId) return nullptr;
    const std::vector<CSDObject*>& runs = ObjectAccess::children(*paragraphs[0]);
    return runs.size() == 1 && runs[0] && ObjectAccess::isTextRun(*runs[0]) &&
                   ObjectAccess::text(*paragraphs[0]).IsEmpty()
               ? runs[0]
               : nullptr;
}

/// Whether XML keeps the text as it is: no blank but single ones between other characters.
template<typename Unit>
bool IsPlain(std::basic_string_view<Unit> text) noexcept {
    bool isAfterBlank = true;
    for (const Unit unit : text) {
        const auto c = static_cast<std::uint32_t>(unit) & (sizeof(Unit) == 1 ? 0xFFU : 0xFFFFU);
        if (c > ' ') {
            isAfterBlank = false;
            continue;
        }
        if (isAfterBlank || c != ' ') return false;
        isAfterBlank = true;
    }
    return text.empty() || text.back() != Unit(' ');
}

CTextP* AddParagraph(CSDExtObject& cell) {
    return cell.GetID() == CTableTableCell::kId ? static_cast<CTableTableCell&>(cell).SetTextP()
                                                : static_cast<CTableCoveredTableCell&>(cell).SetTextP();
}

void AddLine(CTextP& paragraph, std::string_view line) {
    std::size_t at = 0;
    while (at < line.size()) {
        if (line[at] == '\t') {
            paragraph.SetTextTab();
            ++at;
            continue;
        }
        // Blanks that XML would lose: at the start, after a tab or another blank, at the end.
        std::size_t blanks = std::min(line.find_first_not_of(' ', at), line.size()) - at;
        if (blanks > 0) {
            at += blanks;
            for (; blanks > 0; blanks -= std::min<std::size_t>(blanks, kMaxBlanks))
                paragraph.SetTextS()->SetTextC(
                    static_cast<unsigned>(std::min<std::size_t>(blanks, kMaxBlanks)));
            continue;
        }
        std::size_t end = at;
        while (end < line.size() && line[end] != '\t') {
            if (line[end] == ' ' && (end + 1 == line.size() || line[end + 1] == ' ' || line[end + 1] == '\t'))
                break;
            ++end;
        }
        paragraph.SetText(CTulStringW(line.substr(at, end - at)));
        at = end;
    }
}

} // namespace

bool IsCellText(const CSDObject& child) noexcept {
    return IsParagraph(child) || IsBlock(child.GetID());
}

std::string CellText(const CSDObject& cell) {
    if (const CSDObject* const run = OnlyRun(cell)) {
        const std::u16string_view text = ObjectAccess::text(*run).view();
        if (IsPlain(text)) return ToUtf8(text);
    }
    Lines lines;
    WalkBelow(cell, false, [&](const CSDObject& object, bool isInParagraph) -> std::optional<bool> {
        if (!Enter(object, isInParagraph, lines)) return std::nullopt;
        return isInParagraph || IsParagraph(object);
    });
    return lines.take();
}

void DropCellText(CSDExtObject& cell) noexcept {
    std::vector<CSDObject*>* const list = cell.GetObjectList();
    if (!list) return;
    std::erase_if(*list, [](CSDObject* child) {
        const bool isText = child && IsCellText(*child);
        if (isText) CSDObject::Delete(child);
        return isText;
    });
}

void AddCellParagraph(CSDExtObject& cell, const CTulStringW& text) {
    AddParagraph(cell)->SetText(text);
}

void AddCellText(CSDExtObject& cell, std::string_view text) {
    if (text.empty()) return;
    if (IsPlain(text)) return AddCellParagraph(cell, CTulStringW(text));
    for (;;) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        AddLine(*AddParagraph(cell), text.substr(0, end));
        if (end == text.size()) return;
        text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
    }
}

} // namespace ODF
