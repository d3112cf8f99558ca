#pragma once

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/string.h>

#include <functional>
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

/// For tables that are searched without making a string first.
struct NameHash {
    using is_transparent = void;
    template<typename Unit>
    std::size_t operator()(std::basic_string_view<Unit> name) const noexcept {
        return std::hash<std::basic_string_view<Unit>>()(name);
    }
    std::size_t operator()(const std::string& name) const noexcept { return (*this)(std::string_view(name)); }
    std::size_t operator()(const std::u16string& name) const noexcept {
        return (*this)(std::u16string_view(name));
    }
};

/// Names of elements by namespace and local name.
class ElementNames {
public:
    Element find(const unsigned short* uri, const unsigned short* localName);

private:
    struct Name {
        std::u16string uri;
        Element element;
    };
    /// By local name, which is short and rarely in two namespaces: hashing URIs would take most of the time.
    std::unordered_multimap<std::u16string, Name, NameHash, std::equal_to<>> known_;
};

/// Names of attributes as the reader wants them, made once.
class AttributeNames {
public:
    struct Name {
        CTulStringW uri;
        CTulStringW local;
    };
    /// The parts of a customary name.
    const Name& of(std::string_view name);

private:
    std::unordered_map<std::string, Name, NameHash, std::equal_to<>> known_;
};

/// The attributes of a start tag by their customary names.
class Attributes {
public:
    Attributes(CSDAttribute& list, AttributeNames& names) : list_(list), names_(names) {}

    /// The value of an attribute such as "text:style-name"; nothing when it is absent.
    std::optional<std::string> find(std::string_view name) const;
    std::string get(std::string_view name) const { return find(name).value_or(std::string()); }
    /// The value as a whole number; `otherwise` when it is absent or none.
    unsigned number(std::string_view name, unsigned otherwise) const;
    bool isTrue(std::string_view name) const { return get(name) == "true"; }

private:
    CSDAttribute& list_;
    AttributeNames& names_;
};

} // namespace command
