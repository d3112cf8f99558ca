#pragma once

#include "core/namespaces.h"

#include <odfmodel/core/format_version.h>
#include <odfmodel/core/object.h>

#include <cstdint>
#include <span>
#include <string_view>

namespace ODF {

class Arena;

/// How a value looks as text, see codecs.h.
enum class ValueKind : std::uint8_t { String, Bool, BoolWord, Unsigned, Signed, Double, Float, Enumeration };

// Tables tell what the format has, and which of it the classes have always listed: the rest is typed in a
// tree of full fidelity alone, and unknown to any other. What is listed comes first in each table.

/// One enumeration: its keys in value order from 0, and the values in the order of their keys.
struct EnumerationTable {
    const char16_t* typeName;
    const char16_t* const* keys;
    const std::uint16_t* byKey;
    std::uint16_t count;
    std::uint16_t listed;       ///< keys; the others came later
    const FormatVersion* added; ///< the versions of those others; null when there are none

    FormatVersion since(int value) const noexcept {
        return value >= listed && value < count ? added[value - listed] : FormatVersion::Base;
    }
    /// The value of `key`, or -1. Keys are compared exactly.
    int find(std::u16string_view key) const noexcept;
    int find(std::string_view key) const noexcept;
    /// The key of `value`, or null.
    const char16_t* key(int value) const noexcept {
        return value >= 0 && value < count ? keys[value] : nullptr;
    }
};

/// One attribute of a class.
struct AttributeRow {
    enum Flag : std::uint8_t {
        kOptional = 1,    ///< absent until it is set or read; a required one is written always
        kNonEmpty = 2,    ///< a required text that is written only when it isn't empty
        kFirstFont = 4,   ///< only what is before the first comma is kept
        kNonNegative = 8, ///< a text that begins with "-" leaves the attribute absent
        kTruthy = 16,     ///< a bool that every text but "", "0" and "false" makes true
        kGiven = 32,      ///< the default of a required attribute is one that the format itself gives
    };

    const char* name; ///< qualified, with the customary prefix
    const char16_t* localName;
    const EnumerationTable* enumeration; ///< for enumerations, else null
    std::uint32_t defaultValue;          ///< of a required number, bool or enumeration
    std::uint16_t nameLength;
    NamespaceIndex nameSpace;
    ValueKind kind;
    std::uint8_t flags;
    FormatVersion since;

    bool has(Flag flag) const noexcept { return (flags & flag) != 0; }
    std::string_view qualifiedName() const noexcept { return {name, nameLength}; }
    std::string_view local() const noexcept {
        const std::size_t prefix = Namespace(nameSpace).prefix.size();
        return prefix ? qualifiedName().substr(prefix + 1) : qualifiedName();
    }
};

struct ClassDescriptor;

/// One child that a class may have.
struct ChildRow {
    unsigned id;
    const char16_t* name;
    const char* utf8Name;
    const ClassDescriptor* table; ///< of the class of the child
    NamespaceIndex nameSpace;
    FormatVersion since;
};

/// The children of a class, shared by all classes with the same list, in table order and both search orders.
struct ChildMap {
    const ChildRow* rows;
    const std::uint16_t* byName;
    const std::uint16_t* byId;
    std::uint16_t count;
    std::uint16_t listed; ///< rows; the others came later

    bool isListed(const ChildRow& row) const noexcept { return &row - rows < listed; }
    const ChildRow* find(std::u16string_view name) const noexcept;
    const ChildRow* find(std::string_view name) const noexcept;
    /// The first row, in table order, with that id.
    const ChildRow* find(unsigned id) const noexcept;
};

/// The constant table of one element class. Nothing in it changes, so documents on different threads share
/// it.
struct ClassDescriptor {
    const char* className;
    const char* elementName;
    const char16_t* elementName16;
    unsigned id;
    const AttributeRow* attributes;
    const std::uint16_t* byName;                   ///< rows by namespace and local name
    const std::uint16_t* writeOrder;               ///< null for table order
    const ChildMap* children;                      ///< null for a class without children
    CSDObject* (*make)(unsigned id, Arena* arena); ///< a new object; from the heap with a null arena
    std::uint64_t requiredNamespaces; ///< a bit for each namespace of an attribute that is always written
    std::uint16_t attributeCount;
    std::uint16_t listedAttributes; ///< rows; the others came later
    NamespaceIndex nameSpace;       ///< of the element
    bool allOptional;               ///< nothing is written but what is set
    bool inMaps;                    ///< false for a class that no child map lists
    FormatVersion since;

    std::span<const AttributeRow> rows() const noexcept { return {attributes, attributeCount}; }
    /// The children that the class has always listed; null when it has none.
    const ChildMap* listedChildren() const noexcept {
        return children && children->listed > 0 ? children : nullptr;
    }
    /// Row of the attribute, or -1.
    int findAttribute(NamespaceIndex owner, std::string_view localName) const noexcept;
    /// The same by the name with its customary prefix.
    int findAttribute(std::string_view qualifiedName) const noexcept;
    /// Words of presence bits before the values; one bit more than attributes, for the rarely used
    /// extras.
    unsigned words() const noexcept { return attributeCount / 64U + 1U; }
};

/// Every enumeration, in the order of the type names, and every class, in the order of the ids. The element
/// tables define them; the core only names them.
std::span<const EnumerationTable* const> Enumerations() noexcept;
std::span<const ClassDescriptor* const> Classes() noexcept;
/// The class of that id; null when there is none.
const ClassDescriptor* FindClass(unsigned id) noexcept;
/// The class of the element of that name, with its customary prefix; null when there is none.
const ClassDescriptor* FindClass(std::string_view elementName) noexcept;
/// The classes in the order of their element names; of several for one name only the first.
std::span<const ClassDescriptor* const> ClassesByName() noexcept;

/// The enumeration of that type name in the group that the high byte of `id` tells; null when there is none.
/// All element classes are of one group.
const EnumerationTable* FindEnumeration(unsigned id, std::u16string_view typeName) noexcept;

} // namespace ODF
