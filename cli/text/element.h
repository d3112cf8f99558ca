#pragma once

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/string.h>

#include <algorithm>
#include <deque>
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

/// For a table of strings that is searched without making one.
struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept {
        return std::hash<std::string_view>()(name);
    }
};

/// Names of elements by namespace and local name.
class ElementNames {
public:
    Element find(const unsigned short* uri, const unsigned short* localName);

private:
    struct Key {
        std::u16string_view uri;
        std::u16string_view local;
        bool operator==(const Key&) const = default;
    };
    /// By the local name and the last units of the URI, in which namespaces differ.
    struct KeyHash {
        std::size_t operator()(const Key& key) const noexcept {
            constexpr std::size_t kUnits = 8;
            const std::hash<std::u16string_view> hash;
            const std::size_t skipped = key.uri.size() - std::min(key.uri.size(), kUnits);
            return hash(key.local) * 31 + hash(key.uri.substr(skipped)) + key.uri.size();
        }
    };
    std::unordered_map<Key, Element, KeyHash> known_;
    std::deque<std::u16string> names_; ///< what the keys view
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
