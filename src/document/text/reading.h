#pragma once

#include "document/text/element.h"
#include "document/text/line.h"
#include "document/text/list_labels.h"
#include "document/text/list_styles.h"
#include "document/text/sheet_row.h"

#include <odfmodel/document/document_text.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ODF::reading {

/// A cell while it is read.
struct OpenCell {
    std::string text;
    unsigned repeat = 1;
    bool hasParagraph = false;
};
/// A sheet while it is read.
struct OpenSheet {
    std::optional<SheetRow> row;
    std::optional<OpenCell> cell;
    unsigned shapes = 0; ///< open shapes in the cell or sheet
    unsigned tables = 0; ///< open tables inside the sheet's own
};

/// Walks the tree of a content and hands out its lines. It goes by the names of elements and needs nothing of
/// their classes.
class Reading {
public:
    /// `styles` has taken in those of `styles.xml` and takes in the automatic styles.
    Reading(ListStyles& styles, const ReadingOptions& options, const LineSink& out);

    /// The root of a content, or of a flat document.
    void read(const CSDObject& root);
    /// True when repeated cells, rows or blanks were too many to hand them all out.
    bool isCut() const noexcept { return budget_.isSpent(); }

private:
    enum class Kind { None, Text, Spreadsheet, Pages };

    struct Level {
        const CSDObject* object;
        std::size_t next; ///< child
        Element element;
        bool isText; ///< characters here are text of the paragraph
    };
    struct Paragraph {
        Line line;
        std::string before;                ///< indent and label
        std::vector<std::string> attached; ///< lines of what hangs on it
    };
    void start(const CSDObject& object);
    void end(const Level& level);
    void addCharacters(std::string_view text);
    void finish();
    bool isSkipped(Element element, const Attributes& attributes) const;
    void startBody(Element element);
    void startBlock(Element element, const Attributes& attributes);
    void endBlock(Element element);
    void startSheet(Element element, const Attributes& attributes);
    void endSheet(const Level& level);
    void startParagraph(Element element, const Attributes& attributes);
    void endParagraph();
    void addInline(Element element, const Attributes& attributes);
    void put(std::string line);

    ListStyles& styles_;
    ListLabels labels_;
    ReadingOptions options_;
    const LineSink& out_;
    Elements elements_;
    Kind kind_ = Kind::None;
    std::vector<Level> levels_;
    std::vector<Paragraph> paragraphs_;
    std::size_t citationStart_ = 0; ///< of the note, in the line of its paragraph
    std::string noteMark_;          ///< goes before the next paragraph, the first of a note
    std::optional<OpenSheet> sheet_;
    CopyBudget budget_;
    std::string changeId_;
    bool isDeleted_ = false;                       ///< inside of what a tracked change deleted
    std::map<std::string, std::string> deletions_; ///< deleted text by the id of its change
    std::string pending_;                          ///< deleted text that goes before the next paragraph
    std::string formula_;
    bool hasPage_ = false; ///< or sheet
};

} // namespace ODF::reading
