#include "document/sheet/cell_text.h"

#include "core/object_access.h"
#include "document/sheet/tree_edit.h"
#include "document/text/paragraph_text.h"

#include <odfmodel/document/text.h>
#include <odfmodel/elements/table/structure.h>
#include <odfmodel/elements/text/blocks.h>
#include <odfmodel/elements/text/paragraph.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ODF {
namespace {

/// Holds paragraphs, at whatever depth.
bool IsBlock(unsigned id) noexcept {
    return id == CTextList::kId || id == CTextListItem::kId || id == CTextListHeader::kId ||
           id == CTextSection::kId || id == CTextNumberedParagraph::kId;
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

} // namespace

bool IsCellText(const CSDObject& child) noexcept {
    return IsParagraph(child) || IsBlock(child.GetID());
}

std::string CellText(const CSDObject& cell) {
    if (const CSDObject* const run = OnlyRun(cell)) {
        const std::u16string_view text = ObjectAccess::text(*run).view();
        if (IsPlain(text)) return ToUtf8(text);
    }
    std::string text;
    bool isFirst = true;
    WalkBelow(cell, false, [&](const CSDObject& object, bool) -> std::optional<bool> {
        if (!IsParagraph(object)) return IsBlock(object.GetID()) ? std::optional(false) : std::nullopt;
        if (!std::exchange(isFirst, false)) text += '\n';
        text += Text(object);
        return std::nullopt;
    });
    return text;
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
        SetText(*AddParagraph(cell), text.substr(0, end));
        if (end == text.size()) return;
        text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
    }
}

} // namespace ODF
