#include <odfmodel/core/reflection.h>

#include "core/object_access.h"

#include <odfmodel/core/date_time.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace ODF {
namespace {

AttributeType TypeOf(ValueKind kind) noexcept {
    switch (kind) {
    case ValueKind::String:
        return AttributeType::Text;
    case ValueKind::Bool:
    case ValueKind::BoolWord:
        return AttributeType::Bool;
    case ValueKind::Unsigned:
        return AttributeType::Unsigned;
    case ValueKind::Signed:
        return AttributeType::Signed;
    case ValueKind::Double:
    case ValueKind::Float:
        return AttributeType::Number;
    case ValueKind::Enumeration:
        return AttributeType::Enumeration;
    }
    return AttributeType::Text;
}

} // namespace

std::string_view ClassInfo::className() const noexcept {
    return table_->className;
}
std::string_view ClassInfo::elementName() const noexcept {
    return table_->elementName;
}
unsigned ClassInfo::id() const noexcept {
    return table_->id;
}
FormatVersion ClassInfo::since() const noexcept {
    return table_->since;
}
bool ClassInfo::isInMaps() const noexcept {
    return table_->inMaps;
}

std::vector<AttributeInfo> ClassInfo::attributes() const {
    std::vector<AttributeInfo> result;
    result.reserve(table_->attributeCount);
    for (const AttributeRow& row : table_->rows())
        result.push_back({row.qualifiedName(), TypeOf(row.kind), row.has(AttributeRow::kOptional), row.since,
                          result.size() < table_->listedAttributes});
    return result;
}

std::vector<std::string> ClassInfo::keys(std::string_view attribute) const {
    std::vector<std::string> result;
    const int row = table_->findAttribute(attribute);
    if (row < 0) return result;
    if (const EnumerationTable* const enumeration = table_->attributes[row].enumeration)
        for (int value = 0; value < enumeration->count; ++value)
            result.push_back(ToUtf8(std::u16string_view(enumeration->key(value))));
    return result;
}

std::vector<ChildInfo> ClassInfo::children() const {
    std::vector<ChildInfo> result;
    if (const ChildMap* const map = table_->children)
        for (unsigned i = 0; i < map->count; ++i)
            result.push_back({map->rows[i].utf8Name, map->rows[i].id, map->rows[i].since, i < map->listed});
    return result;
}

CSDObject* ClassInfo::create() const {
    return ObjectAccess::makeLoose(*table_);
}

std::vector<ClassInfo> AllClasses() {
    std::vector<ClassInfo> result;
    for (const ClassDescriptor* const table : Classes())
        result.push_back(ObjectAccess::info(*table));
    return result;
}

std::optional<ClassInfo> ClassOf(const CSDObject& object) {
    const ClassDescriptor* const table = ObjectAccess::descriptor(object);
    return table ? std::optional(ObjectAccess::info(*table)) : std::nullopt;
}

std::optional<ClassInfo> ClassOfElement(std::string_view elementName) {
    const ClassDescriptor* const table = FindClass(elementName);
    return table ? std::optional(ObjectAccess::info(*table)) : std::nullopt;
}

std::string_view PrefixOfNamespace(std::string_view uri) noexcept {
    const NamespaceIndex index = FindNamespaceByUri(uri);
    return index == kUnknownNamespace ? std::string_view() : Namespace(index).prefix;
}

std::string_view NamespaceOfPrefix(std::string_view prefix) noexcept {
    const NamespaceIndex index = FindNamespaceByPrefix(prefix);
    return index == kUnknownNamespace ? std::string_view() : Namespace(index).uri;
}

bool IsTextRun(const CSDObject& object) noexcept {
    return ObjectAccess::isTextRun(object);
}

std::string TextOf(const CSDObject& object) {
    if (ObjectAccess::isComment(object) || ObjectAccess::isInstruction(object)) return {};
    const bool isKept = ObjectAccess::keepsValue(object);
    if (ObjectAccess::holdsText(object)) return isKept ? std::string() : ObjectAccess::text(object).utf8();
    if (!ObjectAccess::isDate(object) || (isKept && object.HasChildList())) return {};
    const auto& date = static_cast<const CSDDateTimeValueObject&>(object);
    return (isKept ? date.GetRawText() : date.GetText()).utf8();
}

std::vector<AttributeText> AttributesOf(const CSDObject& object) {
    std::vector<AttributeText> result;
    const ClassDescriptor* const table = ObjectAccess::table(object);
    if (!table) return result;
    for (unsigned i = 0; i < table->attributeCount; ++i) {
        const unsigned row = table->writeOrder ? table->writeOrder[i] : i;
        if (ObjectAccess::isWritten(object, *table, row))
            result.push_back({table->attributes[row].qualifiedName(),
                              ObjectAccess::attributeText(object, *table, row).utf8()});
    }
    return result;
}

bool GetAttributeText(const CSDObject& object, std::string_view name, CTulStringW& out) {
    const ClassDescriptor* const table = ObjectAccess::table(object);
    const int row = table ? table->findAttribute(name) : -1;
    if (row < 0) return false;
    if (const Extras* const extras = ObjectAccess::extras(object))
        if (const KeptAttribute* const kept = extras->find(static_cast<unsigned>(row))) {
            out = kept->value;
            return true;
        }
    const std::uint64_t* const slot =
        AttributeSlots::find(ObjectAccess::slots(object), table->words(), static_cast<unsigned>(row));
    if (!slot) return false;
    const AttributeValue value{table->attributes[row], slot};
    if (value.isText())
        out = AttributeSlots::text(slot);
    else if (value.isKey())
        out = CTulStringW(value.key());
    else
        out = CTulStringW(value.spelled().view());
    return true;
}

std::string AttributeOf(const CSDObject& object, std::string_view name) {
    CTulStringW value;
    return GetAttributeText(object, name, value) ? value.utf8() : std::string();
}

bool SetAttributeText(CSDObject& object, std::string_view name, std::string_view value) {
    const ClassDescriptor* const table = ObjectAccess::table(object);
    const int row = table ? table->findAttribute(name) : -1;
    if (row < 0) return false;
    ValuePool pool;
    ReadValue read{static_cast<std::uint16_t>(row), value};
    std::vector<ValuePool::Usage> usage(table->attributeCount);
    std::vector<KeptAttribute> kept;
    const auto index = static_cast<unsigned>(row);
    // The words that the file has for the old value go, but come back when there is no memory for the new
    // one; their place is still there then.
    Extras* const extras = ObjectAccess::extras(object);
    std::optional<KeptAttribute> old;
    if (const KeptAttribute* const found = extras ? extras->find(index) : nullptr) {
        old = *found;
        extras->forget(index);
    }
    try {
        ObjectAccess::readAttributes(object, *table, {&read, 1}, {pool, usage.data(), nullptr, &kept});
    } catch (...) {
        if (old) extras->attributes.push_back(std::move(*old));
        throw;
    }
    return true;
}

} // namespace ODF
