#pragma once

#include "text/element.h"
#include "text/line.h"
#include "text/list_labels.h"
#include "text/list_styles.h"
#include "text/sheet_row.h"

#include <odfmodel/serial/default_handler.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace command {

struct TextOptions {
    /// The main flow alone, with tracked deletions in their place: what word processors save as plain text.
    bool isFlow = false;
};

/// A cell while it is read.
struct OpenCell {
    std::string text;
    std::string value; ///< stands in for text
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

/// Prints the text of a document while its content is read. It reads the file itself, not the element tree,
/// so that it needs no class for what stands around the text. A flat file may come as a whole.
class DocumentText final : public CSDDefaultHandler {
public:
    /// `styles` has taken in `styles.xml` and takes in the automatic styles.
    DocumentText(ListStyles& styles, const TextOptions& options, std::ostream& out);

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override;
    void endElement(const unsigned short* uri, const unsigned short* localName,
                    const unsigned short* qName) override;
    void characters(const unsigned short* chars, unsigned length) override;
    /// Prints what is left when the file has come to its end.
    void finish();

    /// True when repeated cells or rows were too many to print them all.
    bool isCut() const noexcept { return budget_.isSpent(); }

private:
    enum class Kind { None, Text, Spreadsheet, Pages };

    struct Level {
        Element element;
        bool isText; ///< characters here are text of the paragraph
    };
    struct Paragraph {
        Line line;
        std::string before;                ///< indent and label
        std::vector<std::string> attached; ///< lines of what hangs on it
    };
    bool isSkipped(Element element, const Attributes& attributes) const;
    void startBody(Element element, const Attributes& attributes);
    void startBlock(Element element, const Attributes& attributes);
    void endBlock(Element element);
    void startSheet(Element element, const Attributes& attributes);
    void endSheet(Element element);
    void startParagraph(Element element, const Attributes& attributes);
    void endParagraph();
    void addInline(Element element, const Attributes& attributes);
    void insertDeleted(const Attributes& attributes);
    void put(std::string line);
    void print(const std::string& line);

    ListStyles& styles_;
    ListLabels labels_;
    TextOptions options_;
    std::ostream& out_;
    ElementNames names_;
    AttributeNames attributes_;
    Kind kind_ = Kind::None;
    std::vector<Level> levels_;
    std::size_t skipped_ = 0; ///< depth of elements whose text doesn't count
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

} // namespace command
