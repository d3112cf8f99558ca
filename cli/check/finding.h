#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace command {

/// What a round trip does to a member.
enum class FindingKind {
    // Something is lost, or is there that wasn't.
    MemberLost,       ///< the member isn't in the saved package
    MemberAdded,      ///< a member that the package hasn't
    MemberChanged,    ///< its bytes differ
    MemberDamaged,    ///< it can't be read to its end
    EntryLost,        ///< the manifest no longer lists a member or folder
    EntryAdded,       ///< the manifest lists one that it didn't
    EntryChanged,     ///< the manifest says something else of it, but for its size and encryption
    MediaTypeChanged, ///< the manifest gives another media type
    Decrypted,        ///< the package was encrypted and is saved in clear
    XmlFault,         ///< the XML isn't well formed; what follows the fault is lost
    EntityLost,       ///< a reference to an entity that isn't declared, or whose text is elsewhere
    UnknownElement,   ///< the parent's class lists no such child
    UnknownAttribute, ///< the class lists no such attribute
    ElementLost,      ///< listed, but not written
    ElementAdded,     ///< an element that the file hasn't
    AttributeLost,    ///< listed, but not written
    AttributeAdded,   ///< written, though the file has none
    EnumerationValue, ///< a word that is no key of the enumeration
    NumberValue,      ///< another number
    NumberSpelling,   ///< the same in other words, such as "0.50" and "0.5"
    BooleanValue,     ///< another truth value
    BooleanSpelling,  ///< such as "true" and "1"
    TextValue,        ///< another text
    DateValue,        ///< another date or time
    DateSpelling,     ///< such as "2001-02-03" and "2001-02-03T00:00:00.000"
    PrefixLost,       ///< the prefix that a value begins with is bound to nothing, or to something else
    TextDropped,      ///< character content of an element whose class keeps none
    TextChanged,      ///< other character content
    TextMoved,        ///< character content between children now is elsewhere
    MarkupLost,       ///< a comment or processing instruction, or its place in the text
    MarkupAdded,      ///< one that the file hasn't there
    // Nothing is lost.
    DoctypeDropped, ///< what it declares is in the text already
};

/// True for the kinds that tell of a loss.
constexpr bool IsLoss(FindingKind kind) noexcept {
    return kind != FindingKind::DoctypeDropped;
}
/// The kind for machines, such as "unknown-attribute".
std::string_view KeyOf(FindingKind kind);
/// The kind for people, such as "unknown attribute".
std::string TextOf(FindingKind kind);

/// One kind of thing that happened to one name, as often as it did.
struct Finding {
    FindingKind kind;
    std::string name; ///< "element", "parent/element" or "element@attribute"; may be empty
    std::size_t count = 0;
    std::size_t below = 0; ///< for elements: the elements that went with them
    std::string example;   ///< what the first one was and became
};

/// The findings about one member, in the order of their kinds and names.
class Findings {
public:
    void add(FindingKind kind, std::string_view name, std::string_view example = {}, std::size_t below = 0);
    std::vector<Finding> list() const;
    bool hasLoss() const;
    bool isEmpty() const { return findings_.empty(); }

private:
    std::map<std::pair<FindingKind, std::string>, Finding, std::less<>> findings_;
};

/// A text in quotation marks, cut to a length that fits a line.
std::string Example(std::string_view text);
/// "<before> -> <after>", both so.
std::string Change(std::string_view before, std::string_view after);

} // namespace command
