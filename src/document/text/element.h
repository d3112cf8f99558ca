#pragma once

#include <odfmodel/core/object.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ODF::reading {

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

/// What elements mean, by their class; names are looked up once.
class Elements {
public:
    Element find(const CSDObject& object);

private:
    std::unordered_map<unsigned, Element> known_; ///< by class id
};

/// The attributes of an object by their customary names.
class Attributes {
public:
    explicit Attributes(const CSDObject& object) : object_(object) {}

    /// The value of an attribute such as "text:style-name"; nothing when it is absent.
    std::optional<std::string> find(std::string_view name) const;
    std::string get(std::string_view name) const { return find(name).value_or(std::string()); }
    /// The value as a whole number; `otherwise` when it is absent or none.
    unsigned number(std::string_view name, unsigned otherwise) const;
    bool isTrue(std::string_view name) const { return get(name) == "true"; }

private:
    const CSDObject& object_;
};

} // namespace ODF::reading
