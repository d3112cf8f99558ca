#include "convert/markup.h"

#include "convert/bounds.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/document/document_text.h>
#include <odfmodel/document/sheet.h>
#include <odfmodel/elements/elements.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace command {
namespace {

/// What the marks of a cell take, about.
constexpr std::size_t kMarkLength = 16;
/// Of one element: no text has more.
constexpr unsigned kMaxBlanks = 4096;
/// Of a merged cell: more columns than a sheet has.
constexpr unsigned kMaxSpan = 1U << 15;

unsigned Number(const CSDObject& object, std::string_view name, unsigned otherwise) {
    const std::string value = ODF::AttributeOf(object, name);
    unsigned number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error == std::errc::result_out_of_range) return std::numeric_limits<unsigned>::max();
    return error == std::errc() ? number : otherwise;
}

/// What gets lines of its own, also when the file has it in a paragraph.
bool IsBlock(const CSDObject& object) {
    const auto id = object.GetID();
    return id == ODF::CTextP::kId || id == ODF::CTextH::kId || id == ODF::CTextList::kId ||
           id == ODF::CTableTable::kId;
}

bool IsShape(const CSDObject& object) {
    const auto info = ODF::ClassOf(object);
    return info && info->elementName().starts_with("draw:");
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
        const CSDObject* object; ///< null for `attached`
        std::vector<const CSDObject*> attached;
        std::size_t next = 0;
        std::function<void()> end; ///< may be empty
    };
    /// Cells of a sheet next to each other that show one text.
    struct CellRun {
        std::size_t count;
        std::string text;
    };

    void walk(const CSDObject& root) {
        std::vector<Level> open;
        std::swap(open, open_);
        enter(root);
        while (!open_.empty()) {
            if (const CSDObject* const child = nextChild(open_.back())) {
                enter(*child);
                continue;
            }
            const std::function<void()> end = std::move(open_.back().end);
            open_.pop_back();
            if (end) end();
        }
        std::swap(open, open_);
    }
    static const CSDObject* nextChild(Level& level) {
        if (!level.object) return level.next < level.attached.size() ? level.attached[level.next++] : nullptr;
        const std::vector<CSDObject*>* const children = level.object->GetObjectList();
        while (children && level.next < children->size())
            if (const CSDObject* const child = (*children)[level.next++]) return child;
        return nullptr;
    }

    void enter(const CSDObject& object);
    bool enterBlock(const CSDObject& object);
    void startParagraph(const CSDObject& object, unsigned level);
    void endParagraph();
    void startInline(const CSDObject& object);
    bool startMarked(const CSDObject& object);
    void startList(const CSDObject& object);
    void startFrame(const CSDObject& image);
    void readCells(const ODF::Sheet& sheet, ODF::CellAddress first);
    std::vector<CellRun> runsOf(const ODF::SheetRow& row, std::uint32_t firstColumn, std::size_t& length);
    void readShapes(const CSDObject& table);
    void descend(const CSDObject& object, std::function<void()> end = {}) {
        open_.push_back({&object, {}, 0, std::move(end)});
    }
    void addText(std::string_view text);
    void addBlanks(std::string_view blanks) {
        sink_.text(blanks);
        isBehindBlank_ = false;
    }
    /// How many of `wanted` copies of `length` bytes are to be made.
    std::size_t copies(std::size_t wanted, std::size_t length) {
        const std::size_t granted = std::min(wanted, left_ / length);
        left_ -= granted * length;
        isCut_ = isCut_ || granted < wanted;
        return granted;
    }

    Looks looks_;
    MarkupSink& sink_;
    std::vector<Level> open_;
    bool isInParagraph_ = false;
    bool isBehindBlank_ = true;
    bool isInLink_ = false;
    bool hasPage_ = false;
    Look look_;                              ///< of the text at hand
    std::vector<std::string> lists_;         ///< styles of the open ones
    std::vector<const CSDObject*> attached_; ///< blocks in the paragraph, which come after it
    std::vector<const CSDObject*> notes_;
    std::size_t left_ = kMaxCopied;
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
    } else if (IsLeftOut(object)) {
        return;
    } else if (!isInParagraph_) {
        if (!enterBlock(object)) descend(object);
    } else if (IsBlock(object)) {
        attached_.push_back(&object);
    } else {
        startInline(object);
    }
}

/// False for what has no marks of its own outside of paragraphs.
bool MarkupWalk::enterBlock(const CSDObject& object) {
    switch (object.GetID()) {
    case ODF::CTextP::kId:
        startParagraph(object, 0);
        return true;
    case ODF::CTextH::kId:
        startParagraph(object, std::clamp(Number(object, "text:outline-level", 1), 1U, 6U));
        return true;
    case ODF::CTextList::kId:
        startList(object);
        return true;
    case ODF::CTextListItem::kId:
    case ODF::CTextListHeader::kId:
        if (lists_.empty()) return false;
        sink_.startItem();
        descend(object, [this] { sink_.endItem(); });
        return true;
    case ODF::CTableTable::kId:
        sink_.startTable();
        descend(object, [this] { sink_.endTable(); });
        return true;
    case ODF::CTableTableRow::kId:
        sink_.startRow();
        descend(object, [this] { sink_.endRow(); });
        return true;
    case ODF::CTableTableCell::kId:
        sink_.startCell(std::clamp(Number(object, "table:number-columns-spanned", 1), 1U, kMaxSpan),
                        std::clamp(Number(object, "table:number-rows-spanned", 1), 1U, kMaxSpan));
        descend(object, [this] { sink_.endCell(); });
        return true;
    case ODF::CTableCoveredTableCell::kId:
        for (std::size_t i = copies(Number(object, "table:number-columns-repeated", 1), kMarkLength); i > 0;
             --i)
            sink_.coveredCell();
        return true;
    case ODF::CDrawPage::kId:
        if (hasPage_) sink_.separate();
        hasPage_ = true;
        return false;
    case ODF::CDrawImage::kId:
        startFrame(object);
        return true;
    default:
        return false;
    }
}

void MarkupWalk::startParagraph(const CSDObject& object, unsigned level) {
    sink_.startParagraph(level);
    isInParagraph_ = isBehindBlank_ = true;
    addText(ODF::TextOf(object));
    descend(object, [this] { endParagraph(); });
}

/// What hung on the paragraph comes before what follows it; lists in it are lists of their own.
void MarkupWalk::endParagraph() {
    isInParagraph_ = false;
    sink_.endParagraph();
    if (attached_.empty()) return;
    open_.push_back({nullptr, std::exchange(attached_, {}), 0,
                     [this, lists = std::exchange(lists_, {})]() mutable { lists_ = std::move(lists); }});
}

void MarkupWalk::startInline(const CSDObject& object) {
    switch (object.GetID()) {
    case ODF::CTextS::kId: {
        const unsigned wanted = Number(object, "text:c", 1);
        isCut_ = isCut_ || wanted > kMaxBlanks;
        return addBlanks(std::string(copies(std::min(wanted, kMaxBlanks), 1), ' '));
    }
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
    case ODF::CDrawImage::kId:
        return startFrame(object);
    case ODF::CTableCoveredTableCell::kId:
        return;
    default:
        break;
    }
    if (startMarked(object)) return;
    // Fields show their text; what else is there counts as if its content stood in its place.
    addText(ODF::TextOf(object));
    descend(object);
}

/// False for what changes neither the look nor leads anywhere.
bool MarkupWalk::startMarked(const CSDObject& object) {
    if (object.GetID() == ODF::CTextSpan::kId) {
        const Look added = looks_.of(ODF::AttributeOf(object, "text:style-name")).without(look_);
        if (added == Look()) return false;
        sink_.startLook(added);
        addText(ODF::TextOf(object));
        descend(object, [this, before = std::exchange(look_, look_.with(added))] {
            look_ = before;
            sink_.endLook();
        });
        return true;
    }
    if (object.GetID() != ODF::CTextA::kId || isInLink_) return false;
    const std::string target = ODF::AttributeOf(object, "xlink:href");
    if (!IsHarmlessLink(target)) return false;
    sink_.startLink(target);
    isInLink_ = true;
    addText(ODF::TextOf(object));
    descend(object, [this] {
        isInLink_ = false;
        sink_.endLink();
    });
    return true;
}

void MarkupWalk::startList(const CSDObject& object) {
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
    if (const auto range = sheet.UsedRange()) readCells(sheet, range->first);
    readShapes(sheet.Table());
}

void MarkupWalk::readCells(const ODF::Sheet& sheet, ODF::CellAddress first) {
    sink_.startTable();
    std::uint32_t nextRow = first.row;
    for (const ODF::SheetRow& row : sheet.UsedRows()) {
        for (std::size_t gap = copies(row.Index() - nextRow, kMarkLength); gap > 0; --gap) {
            sink_.startRow();
            sink_.endRow();
        }
        std::size_t length = kMarkLength; // of a copy of the row
        const std::vector<CellRun> runs = runsOf(row, first.column, length);
        for (std::size_t count = 1 + copies(row.Repeat() - 1, length); count > 0; --count) {
            sink_.startRow();
            for (const CellRun& run : runs)
                for (std::size_t i = 0; i < run.count; ++i) {
                    sink_.startCell(1, 1);
                    sink_.text(run.text);
                    sink_.endCell();
                }
            sink_.endRow();
        }
        nextRow = row.Index() + row.Repeat();
    }
    sink_.endTable();
}

std::vector<MarkupWalk::CellRun> MarkupWalk::runsOf(const ODF::SheetRow& row, std::uint32_t firstColumn,
                                                    std::size_t& length) {
    std::vector<CellRun> runs;
    std::uint32_t nextColumn = firstColumn;
    for (const ODF::SheetCell& cell : row.UsedCells()) {
        runs.push_back({copies(cell.Column() - nextColumn, kMarkLength), {}});
        std::string text = cell.Text();
        runs.push_back({1 + copies(cell.ColumnRepeat() - 1, text.size() + kMarkLength), std::move(text)});
        nextColumn = cell.Column() + cell.ColumnRepeat();
    }
    for (const CellRun& run : runs)
        length += run.count * (run.text.size() + kMarkLength);
    return runs;
}

/// The text of the shapes on a sheet and of those anchored to its cells.
void MarkupWalk::readShapes(const CSDObject& table) {
    std::vector<Level> open;
    open.push_back({&table, {}, 0, {}});
    while (!open.empty()) {
        const CSDObject* const child = nextChild(open.back());
        if (!child)
            open.pop_back();
        else if (IsShape(*child))
            walk(*child);
        else if (!ODF::IsTextRun(*child) && !IsLeftOut(*child))
            open.push_back({child, {}, 0, {}});
    }
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
