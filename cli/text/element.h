#pragma once

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/string.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace command {

/// The elements that mean something for the text of a document.
enum class Element {
    Other, ///< transparent: what is inside counts as if it stood there alone
    // Sections of the file.
    Body,
    AutomaticStyles,
    Styles,
    Text,
    Spreadsheet,
    Presentation,
    Drawing,
    // Blocks.
    Paragraph,
    Heading,
    List,
    ListItem,
    ListHeader,
    NumberedParagraph,
    Table,
    Row,
    Cell,
    CoveredCell,
    Page,
    PageNotes,
    // In paragraphs.
    Space,
    Tab,
    LineBreak,
    Change,
    Note,
    NoteCitation,
    NoteBody,
    Field,   ///< may be told not to show
    Shape,   ///< whatever hangs on a paragraph, a cell or a page
    Skipped, ///< never text: annotations, forms, scripts, embedded objects
    // Tracked changes.
    TrackedChanges,
    ChangedRegion,
    Insertion,
    Deletion,
    // Styles.
    Style,
    ListStyle,
    OutlineStyle,
    NumberLevel,
    BulletLevel,
    ImageLevel,
    OutlineLevel,
    // Formulas.
    MathToken,
};

/// Names of elements by namespace and local name.
class ElementNames {
public:
    Element find(const unsigned short* uri, const unsigned short* localName);

private:
    std::unordered_map<std::u16string, Element> known_;
    std::u16string key_;
};

/// The attributes of a start tag by their customary names.
class Attributes {
public:
    explicit Attributes(CSDAttribute& list) : list_(list) {}

    /// The value of an attribute such as "text:style-name"; nothing when it is absent.
    std::optional<std::string> find(std::string_view name) const;
    std::string get(std::string_view name) const { return find(name).value_or(std::string()); }
    /// The value as a whole number; `otherwise` when it is absent or none.
    unsigned number(std::string_view name, unsigned otherwise) const;
    bool isTrue(std::string_view name) const { return get(name) == "true"; }

private:
    CSDAttribute& list_;
};

} // namespace command
