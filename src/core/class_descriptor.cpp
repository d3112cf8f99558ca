#include "core/class_descriptor.h"

#include <algorithm>

namespace ODF {
namespace {

/// ASCII bytes against the 16-bit units of a table name, as unsigned numbers.
int Compare(const char16_t* name, std::string_view text) noexcept {
    for (const char c : text) {
        const unsigned unit = *name;
        const unsigned byte = static_cast<unsigned char>(c);
        if (unit != byte) return unit < byte ? -1 : 1;
        ++name;
    }
    return *name == 0 ? 0 : 1;
}

int Compare(const char16_t* name, std::u16string_view text) noexcept {
    return std::u16string_view(name).compare(text);
}

/// Binary search over an index of rows. `compare(row)` is below, at or above 0 as the row is before, at or
/// after what is looked for. Returns the first row at it, or -1.
template<typename Comparison>
int Search(const std::uint16_t* index, unsigned count, Comparison compare) noexcept {
    const std::uint16_t* const end = index + count;
    const std::uint16_t* const at =
        std::partition_point(index, end, [&](std::uint16_t row) { return compare(row) < 0; });
    return at != end && compare(*at) == 0 ? *at : -1;
}

} // namespace

int EnumerationTable::find(std::u16string_view key) const noexcept {
    return Search(byKey, count, [&](std::uint16_t value) { return Compare(keys[value], key); });
}

int EnumerationTable::find(std::string_view key) const noexcept {
    return Search(byKey, count, [&](std::uint16_t value) { return Compare(keys[value], key); });
}

const ChildRow* ChildMap::find(std::u16string_view name) const noexcept {
    const int row = Search(byName, count, [&](std::uint16_t i) { return Compare(rows[i].name, name); });
    return row < 0 ? nullptr : rows + row;
}

const ChildRow* ChildMap::find(std::string_view name) const noexcept {
    const int row = Search(byName, count,
                           [&](std::uint16_t i) { return std::string_view(rows[i].utf8Name).compare(name); });
    return row < 0 ? nullptr : rows + row;
}

const ChildRow* ChildMap::find(unsigned id) const noexcept {
    const int row = Search(byId, count, [&](std::uint16_t i) {
        if (rows[i].id == id) return 0;
        return rows[i].id < id ? -1 : 1;
    });
    return row < 0 ? nullptr : rows + row;
}

const EnumerationTable* FindEnumeration(unsigned id, std::u16string_view typeName) noexcept {
    constexpr unsigned kElementGroup = 0x80;
    if (id >> 24 != kElementGroup) return nullptr;
    const auto tables = Enumerations();
    const auto at = std::partition_point(tables.begin(), tables.end(), [&](const EnumerationTable* table) {
        return Compare(table->typeName, typeName) < 0;
    });
    return at != tables.end() && typeName == (*at)->typeName ? *at : nullptr;
}

const ClassDescriptor* FindClass(unsigned id) noexcept {
    const auto classes = Classes();
    const auto at = std::partition_point(classes.begin(), classes.end(),
                                         [&](const ClassDescriptor* table) { return table->id < id; });
    return at != classes.end() && (*at)->id == id ? *at : nullptr;
}

const ClassDescriptor* FindClass(std::string_view elementName) noexcept {
    const auto tables = ClassesByName();
    const auto at = std::partition_point(tables.begin(), tables.end(), [&](const ClassDescriptor* table) {
        return std::string_view(table->elementName) < elementName;
    });
    return at != tables.end() && elementName == (*at)->elementName ? *at : nullptr;
}

int ClassDescriptor::findAttribute(NamespaceIndex owner, std::string_view localName) const noexcept {
    return Search(byName, attributeCount, [&](std::uint16_t i) {
        const AttributeRow& row = attributes[i];
        if (row.nameSpace != owner) return row.nameSpace < owner ? -1 : 1;
        return row.local().compare(localName);
    });
}

int ClassDescriptor::findAttribute(std::string_view qualifiedName) const noexcept {
    const std::size_t colon = qualifiedName.find(':');
    if (colon == std::string_view::npos) return findAttribute(kNoNamespace, qualifiedName);
    return findAttribute(FindNamespaceByPrefix(qualifiedName.substr(0, colon)),
                         qualifiedName.substr(colon + 1));
}

} // namespace ODF
