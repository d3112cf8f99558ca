#include "serial/xml/attribute_list.h"

#include <algorithm>

namespace ODF::xml {
namespace {

bool Equal(std::string_view utf8, const unsigned short* text) {
    const std::u16string_view units = ToView(text);
    return std::equal(utf8.begin(), utf8.end(), units.begin(), units.end(),
                      [](char a, char16_t b) { return static_cast<unsigned char>(a) == b && b < 0x80; }) ||
           (utf8.size() != units.size() && ToUtf8(units) == utf8);
}

} // namespace

const char* BeyondLimits(Attributes attributes, const Limits& limits) noexcept {
    if (attributes.size() > limits.attributes) return "too many attributes";
    for (const Attribute& attribute : attributes)
        if (attribute.value.size() > limits.textBytes) return "an attribute value is too long";
    return nullptr;
}

void ReadAttributeList::clear() {
    items_.clear();
}

void ReadAttributeList::add(std::string_view qname, const ResolvedName& name, std::string_view value) {
    items_.push_back({qname, &name, value, {}, false});
}

const unsigned short* ReadAttributeList::GetValue(const unsigned short* qName) {
    if (!qName) return nullptr;
    for (Item& item : items_)
        if (Equal(item.qname, qName)) return valueOf(item);
    return nullptr;
}

const unsigned short* ReadAttributeList::GetValue(const unsigned short* uri,
                                                  const unsigned short* localName) {
    if (!localName) return nullptr;
    const std::u16string_view local = ToView(localName);
    const std::u16string_view space = ToView(uri);
    for (Item& item : items_)
        if (item.name->local16.view() == local && item.name->uri16.view() == space) return valueOf(item);
    return nullptr;
}

const unsigned short* ReadAttributeList::valueOf(Item& item) {
    if (!item.isConverted) {
        item.text = CTulStringW(item.value);
        item.isConverted = true;
    }
    return item.text;
}

const unsigned short* WriteAttributeList::GetValue(const unsigned short* qName) {
    for (const Item& item : items_)
        if (item.uri.IsEmpty() && item.name == qName) return item.value;
    return nullptr;
}

const unsigned short* WriteAttributeList::GetValue(const unsigned short* uri,
                                                   const unsigned short* localName) {
    for (const Item& item : items_)
        if (item.uri == uri && item.name == localName) return item.value;
    return nullptr;
}

void WriteAttributeList::AddAttribute(const unsigned short* qName, const unsigned short* value) {
    if (qName && value) items_.push_back({{}, qName, value});
}

void WriteAttributeList::AddAttribute(const unsigned short* uri, const unsigned short* localName,
                                      const unsigned short* value) {
    if (localName && value) items_.push_back({uri, localName, value});
}

} // namespace ODF::xml
