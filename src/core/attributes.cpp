// The driver that reads and writes the attributes of every element class by its table.
#include "core/codecs.h"
#include "core/object_access.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/part.h>
#include <odfmodel/core/serializer.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

using ODF::AttributeRow;
using ODF::AttributeSlots;
using ODF::ClassDescriptor;
using ODF::ValueKind;

namespace ODF {
namespace {

std::uint64_t FromDouble(double value) noexcept {
    return std::bit_cast<std::uint64_t>(value);
}

void StoreText(std::uint64_t* slot, CTulStringW value) noexcept {
    // A fresh slot is 0, which is no string yet.
    if (*slot == 0)
        new (slot) CTulStringW(std::move(value));
    else
        AttributeSlots::text(slot) = std::move(value);
}

/// The slot's content for every kind but a text. Keys that came later count where `takesAdded`.
template<typename View>
std::uint64_t ParseValue(const AttributeRow& row, View text, bool takesAdded) noexcept {
    switch (row.kind) {
    case ValueKind::Bool:
    case ValueKind::BoolWord:
        return row.has(AttributeRow::kTruthy) ? ParseTruth(text) : ParseBool(text);
    case ValueKind::Unsigned:
        return ParseUnsigned(text);
    case ValueKind::Signed:
        return static_cast<std::uint32_t>(ParseSigned(text));
    case ValueKind::Double:
        return FromDouble(ParseDouble(text));
    case ValueKind::Float:
        return FromDouble(static_cast<float>(ParseDouble(text)));
    case ValueKind::Enumeration: {
        const int key = row.enumeration->find(text);
        const bool isKnown = key >= 0 && (takesAdded || key < row.enumeration->listed);
        return isKnown ? static_cast<std::uint64_t>(key) : 0;
    }
    case ValueKind::String:
        break;
    }
    return 0;
}

/// Few values, often in order already, and the order of equal rows has to stay.
void SortByRow(std::span<ReadValue> values) noexcept {
    for (std::size_t i = 1; i < values.size(); ++i) {
        const ReadValue value = values[i];
        std::size_t at = i;
        for (; at > 0 && values[at - 1].row > value.row; --at)
            values[at] = values[at - 1];
        values[at] = value;
    }
}

bool StaysAbsent(const AttributeRow& row, char first) noexcept {
    return row.has(AttributeRow::kNonNegative) && first == '-';
}

} // namespace

NumberText AttributeValue::plain() const noexcept {
    switch (row.kind) {
    case ValueKind::Unsigned:
        return PrintUnsigned(whole());
    case ValueKind::Signed:
        return PrintSigned(static_cast<std::int32_t>(whole()));
    case ValueKind::Double:
    case ValueKind::Float:
        return PrintDouble(number());
    case ValueKind::Bool:
    case ValueKind::BoolWord: {
        const bool word = row.kind == ValueKind::BoolWord;
        const std::string_view text = whole() ? (word ? "true" : "1") : (word ? "false" : "0");
        NumberText result;
        result.length = text.copy(result.text, text.size());
        return result;
    }
    case ValueKind::String:
    case ValueKind::Enumeration:
        break;
    }
    return {};
}

void ObjectAccess::readAttributes(CSDObject& object, const ClassDescriptor& table,
                                  std::span<ReadValue> values, const ReadSupply& supply) {
    if (table.children) object.setFlag(CSDObject::kMapReady, true);
    const auto keepWords = [&](const ReadValue& value) {
        supply.kept->push_back({{}, CTulStringW(value.text), static_cast<std::int32_t>(value.row)});
    };
    std::size_t count = 0;
    for (const ReadValue& value : values) {
        const AttributeRow& row = table.attributes[value.row];
        if (!StaysAbsent(row, value.text.empty() ? '\0' : value.text.front()))
            values[count++] = value;
        else if (supply.kept)
            keepWords(value);
    }
    values = values.first(count);

    const unsigned words = table.words();
    // `slotOf` is called when nothing but itself can fail any more.
    const auto store = [&](const ReadValue& value, auto slotOf) {
        const AttributeRow& row = table.attributes[value.row];
        if (row.kind == ValueKind::String) {
            const bool isCut = row.has(AttributeRow::kFirstFont);
            const std::string_view text = isCut ? FirstFont(value.text) : value.text;
            CTulStringW made = supply.pool.get(text, supply.usage[value.row]);
            if (isCut && supply.kept && text.size() != value.text.size()) keepWords(value);
            StoreText(slotOf(), std::move(made));
        } else {
            const std::uint64_t made = ParseValue(row, value.text, supply.kept != nullptr);
            if (supply.kept && !AttributeValue{row, &made}.isSpelled(value.text)) keepWords(value);
            *slotOf() = made;
        }
    };
    // Nearly always the object is new, so its block is made once and filled in order.
    constexpr std::size_t kMaxInOrder = 256;
    if (count > 0 && !object.slots_ && count < kMaxInOrder) {
        SortByRow(values);
        std::uint16_t rows[kMaxInOrder];
        std::uint16_t distinct = 0;
        for (const ReadValue& value : values)
            if (distinct == 0 || rows[distinct - 1] != value.row) rows[distinct++] = value.row;
        object.slots_ = AttributeSlots::make(words, rows, distinct, supply.arena);
        try {
            std::uint64_t* slot = object.slots_ + words;
            for (std::size_t i = 0; i < count; ++i) {
                store(values[i], [slot] { return slot; });
                if (i + 1 == count || values[i + 1].row != values[i].row) ++slot;
            }
            if (supply.kept && !supply.kept->empty()) keep(object, *supply.kept);
        } catch (...) {
            // What was not reached is 0, which is no string.
            AttributeSlots::forEach(object.slots_, words, [&](unsigned row, std::uint64_t* slot) {
                if (*slot == 0 && row < table.attributeCount &&
                    table.attributes[row].kind == ValueKind::String)
                    StoreText(slot, {});
            });
            object.ReleaseAttributes(table);
            throw;
        }
        return;
    }
    for (const ReadValue& value : values)
        store(value, [&] {
            if (supply.kept && !supply.kept->empty()) reserveKept(object, supply.kept->size());
            return AttributeSlots::require(object.slots_, words, value.row);
        });
    if (supply.kept && !supply.kept->empty()) keep(object, *supply.kept);
}

void ObjectAccess::reserveKept(CSDObject& object, std::size_t count) {
    std::vector<KeptAttribute>& attributes = requireExtras(object).attributes;
    attributes.reserve(attributes.size() + count);
}

void ObjectAccess::keep(CSDObject& object, std::vector<KeptAttribute>& attributes) {
    reserveKept(object, attributes.size());
    Extras& extras = requireExtras(object);
    std::move(attributes.begin(), attributes.end(), std::back_inserter(extras.attributes));
    attributes.clear();
}

NumberText AttributeValue::spelled() const noexcept {
    switch (row.kind) {
    case ValueKind::Bool:
    case ValueKind::BoolWord: {
        const std::string_view text = whole() ? "true" : "false";
        NumberText result;
        result.length = text.copy(result.text, text.size());
        return result;
    }
    case ValueKind::Double:
        return PrintExactly(number());
    case ValueKind::Float:
        return PrintExactly(static_cast<float>(number()));
    default:
        return plain();
    }
}

bool AttributeValue::isSpelled(std::string_view words) const noexcept {
    switch (row.kind) {
    case ValueKind::String:
        return true;
    case ValueKind::Enumeration:
        return row.enumeration->find(words) == static_cast<int>(whole());
    case ValueKind::Bool:
    case ValueKind::BoolWord:
        return words == (whole() ? std::string_view("true") : std::string_view("false"));
    case ValueKind::Double:
    case ValueKind::Float:
        return IsPlainNumber(words, row.kind == ValueKind::Float) || words == spelled().view();
    default:
        return words == spelled().view();
    }
}

bool ObjectAccess::isWritten(const CSDObject& object, const ClassDescriptor& table, unsigned row) noexcept {
    const AttributeRow& attribute = table.attributes[row];
    const std::uint64_t* const slot = AttributeSlots::find(object.slots_, table.words(), row);
    if (attribute.has(AttributeRow::kNonEmpty)) return slot && !AttributeSlots::text(slot).IsEmpty();
    return slot || !attribute.has(AttributeRow::kOptional);
}

CTulStringW ObjectAccess::attributeText(const CSDObject& object, const ClassDescriptor& table, unsigned row) {
    const AttributeValue value{table.attributes[row],
                               AttributeSlots::find(object.slots_, table.words(), row)};
    if (value.isText()) return value.slot ? AttributeSlots::text(value.slot) : CTulStringW();
    if (value.isKey()) return CTulStringW(value.key());
    return CTulStringW(value.plain().view());
}

} // namespace ODF

void CSDObject::ReleaseAttributes(const ClassDescriptor& table) noexcept {
    if (!slots_) return;
    AttributeSlots::forEach(slots_, table.words(), [&](unsigned row, std::uint64_t* slot) {
        if (row < table.attributeCount && table.attributes[row].kind == ValueKind::String)
            AttributeSlots::text(slot).~CTulStringW();
    });
    releaseExtras(&table);
    AttributeSlots::release(slots_);
    slots_ = nullptr;
}

bool CSDObject::HasAttribute(const ClassDescriptor& table, unsigned row) const noexcept {
    return AttributeSlots::find(slots_, table.words(), row) != nullptr;
}

bool CSDObject::GetAttribute(const ClassDescriptor& table, unsigned row, CTulStringW& out) const noexcept {
    const std::uint64_t* const slot = AttributeSlots::find(slots_, table.words(), row);
    if (slot) out = AttributeSlots::text(slot);
    return slot != nullptr;
}

bool CSDObject::GetAttribute(const ClassDescriptor& table, unsigned row, unsigned& out) const noexcept {
    const std::uint64_t* const slot = AttributeSlots::find(slots_, table.words(), row);
    if (slot)
        out = static_cast<unsigned>(*slot);
    else if (!table.attributes[row].has(AttributeRow::kOptional))
        out = table.attributes[row].defaultValue;
    return slot != nullptr;
}

bool CSDObject::GetAttribute(const ClassDescriptor& table, unsigned row, int& out) const noexcept {
    unsigned value = static_cast<unsigned>(out);
    const bool present = GetAttribute(table, row, value);
    out = static_cast<int>(value);
    return present;
}

bool CSDObject::GetAttribute(const ClassDescriptor& table, unsigned row, bool& out) const noexcept {
    unsigned value = out ? 1U : 0U;
    const bool present = GetAttribute(table, row, value);
    out = value != 0;
    return present;
}

bool CSDObject::GetAttribute(const ClassDescriptor& table, unsigned row, double& out) const noexcept {
    const std::uint64_t* const slot = AttributeSlots::find(slots_, table.words(), row);
    if (slot) out = AttributeSlots::number(slot);
    return slot != nullptr;
}

bool CSDObject::GetAttribute(const ClassDescriptor& table, unsigned row, float& out) const noexcept {
    double value = out;
    const bool present = GetAttribute(table, row, value);
    out = static_cast<float>(value);
    return present;
}

void CSDObject::SetAttribute(const ClassDescriptor& table, unsigned row, const CTulStringW& value) {
    const AttributeRow& attribute = table.attributes[row];
    CTulStringW kept =
        attribute.has(AttributeRow::kFirstFont) ? CTulStringW(ODF::FirstFont(value.view())) : value;
    ODF::StoreText(AttributeSlots::require(slots_, table.words(), row), std::move(kept));
    forgetWords(table, row);
}
void CSDObject::SetRawAttribute(const ClassDescriptor& table, unsigned row, std::uint64_t value) {
    *AttributeSlots::require(slots_, table.words(), row) = value;
    forgetWords(table, row);
}
void CSDObject::SetAttribute(const ClassDescriptor& table, unsigned row, bool value) {
    SetRawAttribute(table, row, value ? 1 : 0);
}
void CSDObject::SetAttribute(const ClassDescriptor& table, unsigned row, unsigned value) {
    SetRawAttribute(table, row, value);
}
void CSDObject::SetAttribute(const ClassDescriptor& table, unsigned row, int value) {
    SetAttribute(table, row, static_cast<unsigned>(value));
}
void CSDObject::SetAttribute(const ClassDescriptor& table, unsigned row, double value) {
    SetRawAttribute(table, row, ODF::FromDouble(value));
}
void CSDObject::SetAttribute(const ClassDescriptor& table, unsigned row, float value) {
    SetAttribute(table, row, static_cast<double>(value));
}

bool CSDObject::UnsetAttribute(unsigned row) noexcept {
    const ClassDescriptor* const table = Descriptor();
    ODF::Extras* const extras = ODF::ObjectAccess::extras(*this);
    const bool hasWords = extras && extras->find(row);
    if (hasWords) extras->forget(row);
    std::uint64_t* const slot = AttributeSlots::find(slots_, table->words(), row);
    if (!slot) return hasWords;
    if (table->attributes[row].kind == ValueKind::String) AttributeSlots::text(slot).~CTulStringW();
    AttributeSlots::erase(slots_, table->words(), row);
    return true;
}

std::optional<ODF::WholeValue> CSDObject::WholeAttribute(unsigned row) const {
    CTulStringW words;
    if (!ODF::GetAttributeText(*this, Descriptor()->attributes[row].qualifiedName(), words)) return {};
    return ODF::WholeValue(words.utf8());
}

void CSDObject::SetWholeAttribute(unsigned row, std::string_view value) {
    ODF::SetAttributeText(*this, Descriptor()->attributes[row].qualifiedName(), value);
}

CTulStringW CSDObject::SpellNumber(double number) {
    return CTulStringW(ODF::PrintExactly(number).view());
}

bool CSDObject::SameAttributes(const ClassDescriptor& table, const CSDObject& a,
                               const CSDObject& b) noexcept {
    const unsigned words = table.words();
    for (unsigned row = 0; row < table.attributeCount; ++row) {
        const AttributeRow& attribute = table.attributes[row];
        const ODF::AttributeValue left{attribute, AttributeSlots::find(a.slots_, words, row)};
        const ODF::AttributeValue right{attribute, AttributeSlots::find(b.slots_, words, row)};
        if (attribute.has(AttributeRow::kOptional) && (left.slot == nullptr) != (right.slot == nullptr))
            return false;
        if (left.isText()) {
            if (left.text() != right.text()) return false;
        } else if (attribute.kind == ValueKind::Double || attribute.kind == ValueKind::Float) {
            if (left.number() != right.number()) return false;
        } else if (left.whole() != right.whole()) {
            return false;
        }
    }
    return true;
}

bool CSDExtObject::ReadAttribute(CSDAttribute* attributes) {
    const ClassDescriptor* const table = Descriptor();
    if (table && attributes) {
        for (unsigned i = 0; i < table->listedAttributes; ++i) {
            const AttributeRow& row = table->attributes[i];
            const unsigned short* const local = ToUnits(row.localName);
            const unsigned short* const value =
                row.nameSpace == ODF::kNoNamespace
                    ? attributes->GetValue(local)
                    : attributes->GetValue(ToUnits(ODF::Namespace(row.nameSpace).uri16), local);
            if (!value || ODF::StaysAbsent(row, static_cast<char>(*value == u'-' ? '-' : '\0'))) continue;
            if (row.kind == ValueKind::String)
                SetAttribute(*table, i, CTulStringW(value));
            else
                SetRawAttribute(*table, i, ODF::ParseValue(row, ToView(value), false));
        }
    }
    InitMap(true);
    return true;
}

void CSDExtObject::WriteAttributes(CSDAttribute* attributes) const {
    const ClassDescriptor* const table = Descriptor();
    if (!table || !attributes) return;
    for (unsigned i = 0; i < table->attributeCount; ++i) {
        const unsigned row = table->writeOrder ? table->writeOrder[i] : i;
        if (!ODF::ObjectAccess::isWritten(*this, *table, row)) continue;
        const AttributeRow& attribute = table->attributes[row];
        CTulStringW text = ODF::ObjectAccess::attributeText(*this, *table, row);
        if (attribute.kind == ValueKind::String || attribute.kind == ValueKind::Enumeration)
            text = CTulStringW(ODF::EscapeXml(text.view()));
        const unsigned short* const local = ToUnits(attribute.localName);
        if (attribute.nameSpace == ODF::kNoNamespace)
            attributes->AddAttribute(local, text);
        else
            attributes->AddAttribute(ToUnits(ODF::Namespace(attribute.nameSpace).uri16), local, text);
    }
}

bool CSDExtObject::WriteElement(const unsigned short* name, CSDSerializer* serializer,
                                CSDAttribute* attributes) {
    if (!Descriptor() || !serializer) return false;
    WriteAttributes(attributes);
    return serializer->WriteObject(name, this, attributes, nullptr, 1);
}
