#include "convert/markup.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/document/document_text.h>
#include <odfmodel/document/sheet.h>
#include <odfmodel/elements/elements.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

namespace command {
namespace {

/// What repeated cells and rows may add.
constexpr std::size_t kMaxCopies = 1U << 18;
constexpr unsigned kMaxBlanks = 4096;

unsigned Number(const CSDObject& object, std::string_view name, unsigned otherwise) {
    const std::string value = ODF::AttributeOf(object, name);
    const long number = std::atol(value.c_str());
    return number > 0 && number < kMaxBlanks ? static_cast<unsigned>(number) : otherwise;
}

/// Elements whose text is none of the document, or not in this place.
bool IsLeftOut(const CSDObject& object) {
    switch (object.GetID()) {
    case ODF::COfficeAnnotation::kId:
    case ODF::CTextTrackedChanges::kId:
    case ODF::COfficeForms::kId:
    case ODF::COfficeEventListeners::kId:
    case ODF::CDrawObject::kId:
    case ODF::CDrawObjectOle::kId:
    case ODF::CSvgTitle::kId:
    case ODF::CSvgDesc::kId:
    case ODF::CTextRubyText::kId:
    case ODF::CTextScript::kId:
    case ODF::CTextNumber::kId:
    case ODF::CPresentationNotes::kId:
    case ODF::CTableCoveredTableCell::kId:
    case ODF::COfficeBinaryData::kId:
    case ODF::kCommentId:
    case ODF::kProcessingInstructionId:
        return true;
    default:
        return ODF::AttributeOf(object, "text:display") == "none";
    }
}

class MarkupWalk {
public:
    MarkupWalk(ODF::Document& document, MarkupSink& sink) : looks_(document), sink_(sink) {}

    void read(const CSDObject& root) {
        walk(root);
        for (std::size_t i = 0; i < notes_.size(); ++i) { // a note may have notes
            sink_.startNote(static_cast<unsigned>(i + 1));
            walk(*notes_[i]);
            sink_.endNote();
        }
    }
    bool isCut() const { return isCut_; }

    void readSheet(const ODF::Sheet& sheet);

private:
    struct Level {
        const CSDObject* object;
        std::size_t next = 0;
        std::function<void()> end; ///< may be empty
    };

    void walk(const CSDObject& root) {
        std::vector<Level> open;
        std::swap(open, open_);
        enter(root);
        while (!open_.empty()) {
            Level& level = open_.back();
            const std::vector<CSDObject*>* const children = level.object->GetObjectList();
            if (children && level.next < children->size()) {
                if (const CSDObject* const child = (*children)[level.next++]) enter(*child);
                continue;
            }
            const std::function<void()> end = std::move(level.end);
            open_.pop_back();
            if (end) end();
        }
        std::swap(open, open_);
    }

    void enter(const CSDObject& object);
    void startParagraph(const CSDObject& object, unsigned level);
    void startInline(const CSDObject& object);
    void startList(const CSDObject& object);
    void startFrame(const CSDObject& image);
    void descend(const CSDObject& object, std::function<void()> end = {}) {
        open_.push_back({&object, 0, std::move(end)});
    }
    void addText(std::string_view text);
    void addBlanks(std::string_view blanks) {
        sink_.text(blanks);
        isBehindBlank_ = false;
    }

    Looks looks_;
    MarkupSink& sink_;
    std::vector<Level> open_;
    bool isInParagraph_ = false;
    bool isBehindBlank_ = true;
    bool hasPage_ = false;
    std::vector<std::string> lists_;         ///< styles of the open ones
    std::vector<const CSDObject*> attached_; ///< what hangs on the paragraph
    std::vector<const CSDObject*> notes_;
    std::size_t copies_ = kMaxCopies;
    bool isCut_ = false;
};

/// Blanks and line ends of the file count as one blank, none at the start.
void MarkupWalk::addText(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        if (!isBlank)
            line += c;
        else if (!isBehindBlank_)
            line += ' ';
        isBehindBlank_ = isBlank;
    }
    if (!line.empty()) sink_.text(line);
}

void MarkupWalk::enter(const CSDObject& object) {
    if (ODF::IsTextRun(object)) {
        if (isInParagraph_) addText(ODF::TextOf(object));
        return;
    }
    if (IsLeftOut(object)) return;
    switch (object.GetID()) {
    case ODF::CTextP::kId:
        return startParagraph(object, 0);
    case ODF::CTextH::kId:
        return startParagraph(object, std::clamp(Number(object, "text:outline-level", 1), 1U, 6U));
    case ODF::CTextList::kId:
        return startList(object);
    case ODF::CTextListItem::kId:
    case ODF::CTextListHeader::kId:
        sink_.startItem();
        return descend(object, [this] { sink_.endItem(); });
    case ODF::CTableTable::kId:
        if (isInParagraph_) break;
        sink_.startTable();
        return descend(object, [this] { sink_.endTable(); });
    case ODF::CTableTableRow::kId:
        sink_.startRow();
        return descend(object, [this] { sink_.endRow(); });
    case ODF::CTableTableCell::kId:
        sink_.startCell(Number(object, "table:number-columns-spanned", 1),
                        Number(object, "table:number-rows-spanned", 1));
        return descend(object, [this] { sink_.endCell(); });
    case ODF::CDrawPage::kId:
        if (hasPage_) sink_.separate();
        hasPage_ = true;
        return descend(object);
    default:
        break;
    }
    if (isInParagraph_)
        startInline(object);
    else if (object.GetID() == ODF::CDrawImage::kId)
        startFrame(object);
    else
        descend(object);
}

void MarkupWalk::startParagraph(const CSDObject& object, unsigned level) {
    if (isInParagraph_) return attached_.push_back(&object);
    sink_.startParagraph(level);
    isInParagraph_ = isBehindBlank_ = true;
    addText(ODF::TextOf(object));
    descend(object, [this] {
        isInParagraph_ = false;
        sink_.endParagraph();
        std::vector<const CSDObject*> attached;
        std::swap(attached, attached_);
        // They are walked before what follows the paragraph. A frame of a paragraph in a frame waits in turn.
        for (auto at = attached.rbegin(); at != attached.rend(); ++at)
            descend(**at);
    });
}

void MarkupWalk::startInline(const CSDObject& object) {
    switch (object.GetID()) {
    case ODF::CTextS::kId:
        return addBlanks(std::string(Number(object, "text:c", 1), ' '));
    case ODF::CTextTab::kId:
        return addBlanks("\t");
    case ODF::CTextLineBreak::kId:
        sink_.lineBreak();
        isBehindBlank_ = false;
        return;
    case ODF::CTextNote::kId:
        if (const CSDObject* const body = object.Child<ODF::CTextNoteBody>()) {
            notes_.push_back(body);
            sink_.noteMark(static_cast<unsigned>(notes_.size()));
            isBehindBlank_ = false;
        }
        return;
    case ODF::CTextSpan::kId: {
        const Look look = looks_.of(ODF::AttributeOf(object, "text:style-name"));
        if (look == Look()) break;
        sink_.startLook(look);
        addText(ODF::TextOf(object));
        return descend(object, [this] { sink_.endLook(); });
    }
    case ODF::CTextA::kId: {
        const std::string target = ODF::AttributeOf(object, "xlink:href");
        if (!IsHarmlessLink(target)) break;
        sink_.startLink(target);
        addText(ODF::TextOf(object));
        return descend(object, [this] { sink_.endLink(); });
    }
    case ODF::CDrawImage::kId:
        return startFrame(object);
    case ODF::CDrawTextBox::kId:
        attached_.push_back(&object);
        return;
    default:
        break;
    }
    // Fields show their text; what else is there counts as if its content stood in its place.
    addText(ODF::TextOf(object));
    descend(object);
}

void MarkupWalk::startList(const CSDObject& object) {
    if (isInParagraph_) return;
    std::string style = ODF::AttributeOf(object, "text:style-name");
    if (style.empty() && !lists_.empty()) style = lists_.back();
    lists_.push_back(style);
    sink_.startList(looks_.isNumbered(style, lists_.size()));
    descend(object, [this] {
        lists_.pop_back();
        sink_.endList();
    });
}

void MarkupWalk::startFrame(const CSDObject& image) {
    const CSDObject* const frame = image.Parent();
    std::string about;
    if (frame) {
        if (const auto* const title = frame->Child<ODF::CSvgTitle>()) about = ODF::TextOf(*title);
        if (const auto* const text = frame->Child<ODF::CSvgDesc>(); about.empty() && text)
            about = ODF::TextOf(*text);
        // What stands for an object that can't be shown is no picture of the text.
        if (frame->Child<ODF::CDrawObjectOle>() && about.empty())
            about = ODF::AttributeOf(*frame, "draw:name");
    }
    const bool isOwnParagraph = !isInParagraph_;
    if (isOwnParagraph) sink_.startParagraph(0);
    sink_.image(image, ODF::AttributeOf(image, "xlink:href"), about);
    isBehindBlank_ = false;
    if (isOwnParagraph) sink_.endParagraph();
}

void MarkupWalk::readSheet(const ODF::Sheet& sheet) {
    sink_.startParagraph(2);
    sink_.text(sheet.Name());
    sink_.endParagraph();
    const auto range = sheet.UsedRange();
    if (!range) return;
    const auto copies = [this](std::uint32_t wanted) {
        const std::size_t granted = std::min<std::size_t>(wanted, copies_);
        copies_ -= granted;
        isCut_ = isCut_ || granted < wanted;
        return granted;
    };
    sink_.startTable();
    std::uint32_t nextRow = range->first.row;
    for (const ODF::SheetRow& row : sheet.UsedRows()) {
        for (std::size_t gap = copies(row.Index() - nextRow); gap > 0; --gap) {
            sink_.startRow();
            sink_.endRow();
        }
        // A copy of a row is one of each of its cells.
        const ODF::SheetRow::Cells cells = row.UsedCells();
        const auto cellCount = static_cast<std::size_t>(std::distance(cells.begin(), cells.end()));
        const std::size_t fitting = copies_ / std::max<std::size_t>(cellCount, 1);
        const std::size_t times = 1 + std::min<std::size_t>(row.Repeat() - 1, fitting);
        copies_ -= (times - 1) * std::max<std::size_t>(cellCount, 1);
        isCut_ = isCut_ || times < row.Repeat();
        for (std::size_t i = 0; i < times; ++i) {
            sink_.startRow();
            std::uint32_t nextColumn = range->first.column;
            for (const ODF::SheetCell& cell : cells) {
                for (std::size_t gap = copies(cell.Column() - nextColumn); gap > 0; --gap) {
                    sink_.startCell(1, 1);
                    sink_.endCell();
                }
                const std::string text = cell.Text();
                for (std::size_t count = 1 + copies(cell.ColumnRepeat() - 1); count > 0; --count) {
                    sink_.startCell(1, 1);
                    sink_.text(text);
                    sink_.endCell();
                }
                nextColumn = cell.Column() + cell.ColumnRepeat();
            }
            sink_.endRow();
        }
        nextRow = row.Index() + row.Repeat();
    }
    sink_.endTable();
}

} // namespace

bool IsHarmlessLink(std::string_view target) {
    if (target.empty()) return false;
    const std::size_t colon = target.find(':');
    if (colon == std::string_view::npos || colon > target.find_first_of("/?#")) return true;
    std::string scheme(target.substr(0, colon));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return scheme == "http" || scheme == "https" || scheme == "mailto" || scheme == "ftp";
}

bool WriteMarkup(ODF::Document& document, MarkupSink& sink) {
    MarkupWalk walk(document, sink);
    if (document.Spreadsheet()) {
        for (const ODF::Sheet& sheet : ODF::Sheets(document))
            walk.readSheet(sheet);
    } else if (const CSDObject* const body = document.Body()) {
        walk.read(*body);
    } else { // a formula
        ODF::ForEachLine(document, [&](std::string_view line) {
            sink.startParagraph(0);
            sink.text(line);
            sink.endParagraph();
        });
    }
    return !walk.isCut();
}

} // namespace command
