#include "document/text/reading.h"

#include <odfmodel/core/reflection.h>

namespace ODF::reading {
namespace {

constexpr std::size_t kIndent = 4;     ///< blanks for each level of lists
constexpr std::size_t kLabelWidth = 3; ///< blanks in place of a label
constexpr unsigned kMaxRepeat = 1U << 24;

std::string Indent(const Label& label) {
    std::string indent(label.level * kIndent, ' ');
    if (!label.text.empty()) return indent + label.text + ' ';
    return label.level > 0 ? indent + std::string(kLabelWidth, ' ') : indent;
}

/// What a cell holds that has no text of its own.
std::string ValueOf(const Attributes& attributes) {
    for (const std::string_view name : {"office:string-value", "office:date-value", "office:time-value",
                                        "office:boolean-value", "office:value"})
        if (auto value = attributes.find(name)) return *value;
    return {};
}

} // namespace

Reading::Reading(ListStyles& styles, const ReadingOptions& options, const LineSink& out)
    : styles_(styles), labels_(styles), options_(options), out_(out) {}

void Reading::read(const CSDObject& root) {
    start(root);
    while (!levels_.empty()) {
        Level& level = levels_.back();
        const std::vector<CSDObject*>* const children = level.object->GetObjectList();
        if (!children || level.next >= children->size()) {
            const Level ended = level;
            levels_.pop_back();
            end(ended);
        } else if (const CSDObject* const child = (*children)[level.next++]) {
            if (IsTextRun(*child))
                addCharacters(TextOf(*child));
            else
                start(*child);
        }
    }
    finish();
}

bool Reading::isSkipped(Element element, const Attributes& attributes) const {
    const bool isMainFlow = options_.isMainFlow;
    switch (element) {
    case Element::Skipped:
    case Element::CoveredCell:
    case Element::Insertion:
        return true;
    case Element::Field:
        return attributes.get("text:display") == "none";
    case Element::TrackedChanges:
        return !isMainFlow;
    case Element::NoteBody:
    case Element::PageNotes:
        return isMainFlow;
    case Element::Shape:
        return isMainFlow && kind_ != Kind::Pages;
    default:
        return false;
    }
}

void Reading::start(const CSDObject& object) {
    const Element element = elements_.find(object);
    const Attributes attributes(object);
    if (isSkipped(element, attributes)) return;
    bool isText = !levels_.empty() && levels_.back().isText;
    switch (element) {
    case Element::Paragraph:
    case Element::Heading:
        isText = kind_ != Kind::None;
        if (isText) startParagraph(element, attributes);
        break;
    case Element::NoteCitation:
        isText = !paragraphs_.empty();
        if (isText) citationStart_ = paragraphs_.back().line.length();
        break;
    case Element::MathToken:
        isText = kind_ == Kind::None;
        break;
    case Element::Note:
    case Element::NoteBody:
    case Element::Shape:
        isText = false;
        break;
    default:
        break;
    }
    if (kind_ == Kind::None) {
        styles_.start(element, attributes);
        startBody(element);
    } else {
        startSheet(element, attributes);
        startBlock(element, attributes);
        addInline(element, attributes);
    }
    levels_.push_back({&object, 0, element, isText});
    if (isText) addCharacters(TextOf(object));
}

void Reading::end(const Level& level) {
    styles_.end(level.element);
    const bool isParagraph = level.element == Element::Paragraph || level.element == Element::Heading;
    if (isParagraph && level.isText) endParagraph();
    if (level.element == Element::MathToken && level.isText) formula_ += ' ';
    if (level.element == Element::NoteCitation && level.isText && !options_.isMainFlow)
        noteMark_ = paragraphs_.back().line.text().substr(citationStart_);
    if (kind_ == Kind::None) return;
    endBlock(level.element);
    endSheet(level);
}

void Reading::addCharacters(std::string_view text) {
    if (!levels_.back().isText) return;
    if (paragraphs_.empty())
        formula_ += text;
    else
        paragraphs_.back().line.add(text);
}

void Reading::finish() {
    if (!formula_.empty()) out_(formula_.substr(0, formula_.find_last_not_of(' ') + 1));
}

void Reading::startBody(Element element) {
    if (element == Element::Text) kind_ = Kind::Text;
    if (element == Element::Spreadsheet) kind_ = Kind::Spreadsheet;
    if (element == Element::Presentation || element == Element::Drawing) kind_ = Kind::Pages;
}

void Reading::startBlock(Element element, const Attributes& attributes) {
    switch (element) {
    case Element::List:
        labels_.startList(attributes);
        break;
    case Element::ListItem:
        labels_.startItem(true, attributes);
        break;
    case Element::ListHeader:
        labels_.startItem(false, attributes);
        break;
    case Element::NumberedParagraph:
        labels_.startNumberedParagraph(attributes);
        break;
    case Element::Cell:
    case Element::NoteBody:
    case Element::Shape:
        labels_.startBlock();
        break;
    case Element::ChangedRegion:
        changeId_ = attributes.find("text:id") ? attributes.get("text:id") : attributes.get("xml:id");
        break;
    case Element::Deletion:
        isDeleted_ = true;
        break;
    case Element::Page:
        if (hasPage_) out_({});
        hasPage_ = true;
        break;
    default:
        break;
    }
}

void Reading::endBlock(Element element) {
    switch (element) {
    case Element::List:
        labels_.endList();
        break;
    case Element::ListItem:
    case Element::ListHeader:
        labels_.endItem();
        break;
    case Element::NumberedParagraph:
        labels_.endNumberedParagraph();
        break;
    case Element::Cell:
    case Element::NoteBody:
    case Element::Shape:
        labels_.endBlock();
        break;
    case Element::Deletion:
        isDeleted_ = false;
        break;
    default:
        break;
    }
}

void Reading::startSheet(Element element, const Attributes& attributes) {
    if (kind_ != Kind::Spreadsheet) return;
    const auto repeat = [&](std::string_view name) {
        return std::min(attributes.number(name, 1), kMaxRepeat);
    };
    if (!sheet_) {
        if (element != Element::Table) return;
        if (hasPage_) out_({});
        hasPage_ = true;
        out_(attributes.get("table:name"));
        sheet_.emplace();
        return;
    }
    if (element == Element::Table) ++sheet_->tables;
    if (element == Element::Shape) ++sheet_->shapes;
    if (sheet_->tables > 0 || sheet_->shapes > 0) return;
    if (element == Element::Row) sheet_->row.emplace(repeat("table:number-rows-repeated"));
    if (element == Element::Cell) sheet_->cell = OpenCell{{}, repeat("table:number-columns-repeated"), false};
}

void Reading::endSheet(const Level& level) {
    const Element element = level.element;
    if (!sheet_) return;
    if (element == Element::Shape && sheet_->shapes > 0) --sheet_->shapes;
    if (element == Element::Table) {
        if (sheet_->tables == 0)
            sheet_.reset();
        else
            --sheet_->tables;
        return;
    }
    if (sheet_->tables > 0 || sheet_->shapes > 0) return;
    if (element == Element::Cell && sheet_->cell) {
        const OpenCell& cell = *sheet_->cell;
        if (sheet_->row)
            sheet_->row->addCell(cell.hasParagraph ? cell.text : ValueOf(Attributes(*level.object)),
                                 cell.repeat, budget_);
        sheet_->cell.reset();
    }
    if (element == Element::Row && sheet_->row) {
        sheet_->row->print(out_, budget_);
        sheet_->row.reset();
    }
}

void Reading::startParagraph(Element element, const Attributes& attributes) {
    const unsigned outlineLevel =
        element == Element::Heading ? std::max(attributes.number("text:outline-level", 1), 1U) : 0;
    Paragraph paragraph;
    if (!isDeleted_) paragraph.before = Indent(labels_.next(outlineLevel, attributes));
    if (!noteMark_.empty()) paragraph.before += "[" + noteMark_ + "] ";
    noteMark_.clear();
    if (!pending_.empty()) paragraph.line.addVerbatim(pending_);
    pending_.clear();
    paragraphs_.push_back(std::move(paragraph));
}

void Reading::endParagraph() {
    Paragraph paragraph = std::move(paragraphs_.back());
    paragraphs_.pop_back();
    put(paragraph.before + paragraph.line.text());
    for (std::string& line : paragraph.attached)
        put(std::move(line));
}

void Reading::put(std::string line) {
    if (!paragraphs_.empty()) {
        paragraphs_.back().attached.push_back(std::move(line));
    } else if (isDeleted_) {
        const auto [deletion, isNew] = deletions_.try_emplace(changeId_, line);
        if (!isNew) deletion->second += "\n" + line;
    } else if (sheet_ && sheet_->cell && sheet_->shapes == 0) {
        OpenCell& cell = *sheet_->cell;
        if (!cell.text.empty()) cell.text += ' '; // a row is one line
        cell.text += line;
        cell.hasParagraph = true;
    } else if (sheet_ && sheet_->row) {
        sheet_->row->attach(std::move(line));
    } else {
        out_(line);
    }
}

void Reading::addInline(Element element, const Attributes& attributes) {
    if (element == Element::Change) {
        const auto deletion = deletions_.find(attributes.get("text:change-id"));
        if (deletion == deletions_.end()) return;
        if (paragraphs_.empty())
            pending_ += deletion->second;
        else
            paragraphs_.back().line.addVerbatim(deletion->second);
        deletions_.erase(deletion); // is in one place only
        return;
    }
    if (paragraphs_.empty()) return;
    Line& line = paragraphs_.back().line;
    // A cell is part of a line, where tabs and line ends have a meaning of their own.
    const bool isInCell = sheet_.has_value();
    if (element == Element::Space) line.addBlanks(budget_.takeBlanks(attributes.number("text:c", 1)));
    if (element == Element::Tab) line.addVerbatim(isInCell ? " " : "\t");
    if (element == Element::LineBreak) line.addVerbatim(isInCell ? " " : "\n");
}

} // namespace ODF::reading
