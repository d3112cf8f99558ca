#include "serial/xml/xml_writer.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/sax_reader.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <new>

namespace ODF::xml {
namespace {

constexpr std::uint64_t Bit(NamespaceIndex index) noexcept {
    return index == kNoNamespace || index >= kNamespaceCount ? 0 : std::uint64_t{1} << index;
}

NamespaceIndex NamespaceOf(std::string_view qname) noexcept {
    const std::size_t colon = qname.find(':');
    return colon == std::string_view::npos ? kNoNamespace : FindNamespaceByPrefix(qname.substr(0, colon));
}

/// The namespace of the prefix that a value begins with: "of:=SUM([.A1])" means nothing to a reader that
/// doesn't find that prefix declared.
NamespaceIndex NamespaceOfValue(std::u16string_view value) noexcept {
    constexpr std::size_t kLongestPrefix = 12;
    const std::size_t colon = value.substr(0, kLongestPrefix + 1).find(u':');
    if (colon == std::u16string_view::npos || colon == 0) return kNoNamespace;
    char prefix[kLongestPrefix];
    for (std::size_t i = 0; i < colon; ++i) {
        if (value[i] < u'a' || value[i] > u'z') return kNoNamespace;
        prefix[i] = static_cast<char>(value[i]);
    }
    return FindNamespaceByPrefix({prefix, colon});
}

/// A name that may stand in a tag as it is. Names beyond ASCII are let through, blanks and markup are not.
bool IsName(std::string_view name) noexcept {
    if (name.empty()) return false;
    const auto isNameCharacter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-' || c == '.' || c == ':' || (static_cast<unsigned char>(c) & 0x80) != 0;
    };
    const char first = name.front();
    return std::all_of(name.begin(), name.end(), isNameCharacter) && first != '-' && first != '.' &&
           first != ':' && !(first >= '0' && first <= '9');
}

} // namespace

XmlWriter::~XmlWriter() {
    if (out_.isOpen()) XmlWriter::Close();
}

bool XmlWriter::open(const unsigned short* path) {
    if (!path || *path == 0) return false;
    const platform::Path target(path);
    path_ = target.utf8();
    if (!platform::CreateFolders(target.parent(), true) || !out_.openFile(target)) {
        if (diagnostics_)
            diagnostics_->add(NoteCode::WriteFailed, Severity::Error, "", "can not create " + path_);
        return false;
    }
    return true;
}

bool XmlWriter::OpenFile(const unsigned short* path) {
    return open(path);
}

bool XmlWriter::OpenMemory(void* buffer, int byteCapacity) {
    if (!buffer || byteCapacity < 0) return false;
    out_.openMemory(buffer, static_cast<std::size_t>(byteCapacity));
    return true;
}

int XmlWriter::Close() {
    const bool done = out_.close();
    if (!done && diagnostics_)
        diagnostics_->add(NoteCode::WriteFailed, Severity::Error, "", "can not write " + path_);
    return done && out_.bytes() <= static_cast<std::uint64_t>(std::numeric_limits<int>::max())
               ? static_cast<int>(out_.bytes())
               : -1;
}

void XmlWriter::WriteRaw(const unsigned short* text, int length) {
    if (text && length > 0) out_.putRaw({ToChar16(text), static_cast<std::size_t>(length)});
}

bool XmlWriter::SerializeToFile(const unsigned short* path, CSDObject* root) {
    if (!root || !open(path)) return false;
    const bool written = writeTree(*root, {});
    const bool closed = out_.close();
    if (!closed && diagnostics_)
        diagnostics_->add(NoteCode::WriteFailed, Severity::Error, "", "can not write " + path_);
    return written && closed;
}

bool XmlWriter::writeTree(CSDObject& root, std::string_view rootName) {
    out_.put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    const ClassDescriptor* const table = ObjectAccess::table(root);
    std::string name = rootName.empty() ? ToUtf8(root.GetElemName()) : std::string(rootName);
    if (const ClassDescriptor* const own = ObjectAccess::descriptor(root); name.empty() && own)
        name = own->elementName;
    declared_ = usedNamespaces(root, name);
    if (ObjectAccess::isTextRun(root)) return false;
    if (!table) {
        WriteAttributeList attributes;
        const CTulStringW units(name);
        return root.WriteElement(name.empty() ? nullptr : units.c_str(), this, &attributes) && rootWritten_;
    }
    if (!IsName(name)) return false;
    startElement(root, *table, name);
    if (!open_.empty()) {
        open_.back().name = name; // the text above goes away
    }
    writeChildren(0);
    return true;
}

void XmlWriter::writeChildren(std::size_t floor) {
    while (open_.size() > floor) {
        Level& level = open_.back();
        const std::vector<CSDObject*>* const list = level.object->GetObjectList();
        if (!list || level.next >= list->size()) {
            endElement();
            continue;
        }
        if (CSDObject* const child = (*list)[level.next++]) writeChild(level, *child);
    }
}

void XmlWriter::writeChild(Level& parent, CSDObject& child) {
    const ClassDescriptor* const table = ObjectAccess::table(child);
    if (ObjectAccess::isTextRun(child)) {
        out_.putText(ObjectAccess::text(child).view());
        return;
    }
    if (parent.table && table) {
        const ChildRow* row = parent.lastRow;
        if (!row || row->id != child.GetID()) {
            row = parent.table->children ? parent.table->children->find(child.GetID()) : nullptr;
            parent.lastRow = row;
        }
        // An object of a class that its parent doesn't list is written under its own name rather than lost.
        startElement(child, *table, row ? row->utf8Name : table->elementName);
        return;
    }
    const unsigned short* name = parent.object->FindObjectName(&child);
    if (table) {
        const std::string own = name ? ToUtf8(name) : std::string(table->elementName);
        if (!IsName(own)) return;
        const std::size_t depth = open_.size();
        startElement(child, *table, own);
        if (open_.size() > depth) {
            open_.back().name = own;
        }
        return;
    }
    if (const ClassDescriptor* const own = ObjectAccess::descriptor(child); !name && own)
        name = ToUnits(own->elementName16);
    WriteAttributeList attributes;
    child.WriteElement(name, this, &attributes);
}

void XmlWriter::startElement(CSDObject& object, const ClassDescriptor& table, std::string_view tag) {
    out_.put('<');
    out_.put(tag);
    if (!rootWritten_)
        declareNamespaces();
    else if (const NamespaceIndex own = NamespaceOf(tag); own != kNoNamespace && !(declared_ & Bit(own))) {
        // Only a class that stands where no map lists it gets here.
        out_.put(" xmlns:");
        out_.put(Namespace(own).prefix);
        out_.put("=\"");
        out_.put(Namespace(own).uri);
        out_.put('"');
    }
    writeAttributes(object, table);
    const std::u16string_view text =
        ObjectAccess::holdsText(object) ? ObjectAccess::text(object).view() : std::u16string_view();
    pushOrClose(object, &table, tag, text);
}

void XmlWriter::pushOrClose(CSDObject& object, const ClassDescriptor* table, std::string_view tag,
                            std::u16string_view text) {
    const bool hasChildren = object.HasChildList();
    if (text.empty() && !hasChildren) {
        out_.put("/>");
        return;
    }
    out_.put('>');
    out_.putText(text);
    if (hasChildren) {
        open_.push_back({&object, table, 0, nullptr, {}, tag});
        return;
    }
    out_.put("</");
    out_.put(tag);
    out_.put('>');
}

void XmlWriter::endElement() {
    const Level& level = open_.back();
    out_.put("</");
    out_.put(level.name.empty() ? level.tag : std::string_view(level.name));
    out_.put('>');
    open_.pop_back();
}

void XmlWriter::writeAttributes(const CSDObject& object, const ClassDescriptor& table) {
    const unsigned words = table.words();
    std::uint64_t* const slots = ObjectAccess::slots(object);
    const auto write = [&](const AttributeRow& row, const std::uint64_t* slot) {
        const AttributeValue value{row, slot};
        if (row.has(AttributeRow::kNonEmpty) && value.text().empty()) return;
        out_.put(' ');
        out_.put(row.qualifiedName());
        out_.put("=\"");
        writeValue(value);
        out_.put('"');
    };
    if (!table.writeOrder && table.allOptional) {
        // The quick way: nothing but what is set.
        AttributeSlots::forEach(slots, words, [&](unsigned row, const std::uint64_t* slot) {
            if (row < table.attributeCount) write(table.attributes[row], slot);
        });
        return;
    }
    for (unsigned i = 0; i < table.attributeCount; ++i) {
        const unsigned row = table.writeOrder ? table.writeOrder[i] : i;
        const std::uint64_t* const slot = AttributeSlots::find(slots, words, row);
        if (slot || !table.attributes[row].has(AttributeRow::kOptional)) write(table.attributes[row], slot);
    }
}

void XmlWriter::writeValue(const AttributeValue& value) {
    if (value.isText())
        out_.putAttribute(value.text());
    else if (value.isKey())
        out_.putAttribute(value.key());
    else
        out_.put(value.plain().view());
}

std::uint64_t XmlWriter::usedNamespaces(CSDObject& root, std::string_view rootName) const {
    std::uint64_t used = Bit(NamespaceOf(rootName));
    std::vector<CSDObject*> open{&root};
    while (!open.empty()) {
        CSDObject* const object = open.back();
        open.pop_back();
        const ClassDescriptor* const table = ObjectAccess::table(*object);
        const std::vector<CSDObject*>* const children = object->GetObjectList();
        if (table) {
            used |= table->requiredNamespaces;
            AttributeSlots::forEach(ObjectAccess::slots(*object), table->words(),
                                    [&](unsigned row, const std::uint64_t* slot) {
                                        if (row >= table->attributeCount) return;
                                        const AttributeRow& attribute = table->attributes[row];
                                        const AttributeValue value{attribute, slot};
                                        if (attribute.has(AttributeRow::kNonEmpty) && value.text().empty())
                                            return;
                                        used |= Bit(attribute.nameSpace);
                                        if (value.isText()) used |= Bit(NamespaceOfValue(value.text()));
                                    });
        }
        if (!children) continue;
        const ChildRow* row = nullptr;
        for (CSDObject* const child : *children) {
            if (!child || ObjectAccess::isTextRun(*child)) continue;
            if (!row || row->id != child->GetID())
                row = table && table->children ? table->children->find(child->GetID()) : nullptr;
            if (row)
                used |= Bit(row->nameSpace);
            else if (const ClassDescriptor* const own = ObjectAccess::descriptor(*child))
                used |= Bit(own->nameSpace);
            open.push_back(child);
        }
    }
    return used;
}

void XmlWriter::declareNamespaces() {
    rootWritten_ = true;
    for (std::uint64_t bits = declared_; bits != 0; bits &= bits - 1) {
        const NamespaceRow& row = Namespace(static_cast<NamespaceIndex>(std::countr_zero(bits)));
        if (row.prefix == "xml") continue;
        out_.put(" xmlns:");
        out_.put(row.prefix);
        out_.put("=\"");
        out_.put(row.uri);
        out_.put('"');
    }
}

void XmlWriter::writeForeignAttributes(const WriteAttributeList& attributes, std::string_view tag,
                                       bool isRoot) {
    // What the root doesn't declare is declared on the element itself; unknown URIs get a prefix of their
    // own.
    std::vector<std::pair<std::string, std::string>> local; // URI and prefix
    const auto declare = [&](std::string_view prefix, std::string_view uri) {
        if (prefix == "xml" ||
            std::any_of(local.begin(), local.end(), [&](const auto& d) { return d.second == prefix; }))
            return;
        local.emplace_back(uri, prefix);
        out_.put(" xmlns:");
        out_.put(prefix);
        out_.put("=\"");
        out_.putAttribute(ToUtf16(uri));
        out_.put('"');
    };
    const auto need = [&](NamespaceIndex index) {
        if (index != kNoNamespace && index != kUnknownNamespace && !(declared_ & Bit(index)))
            declare(Namespace(index).prefix, Namespace(index).uri);
    };
    need(NamespaceOf(tag));
    std::vector<std::string> names;
    for (const WriteAttributeList::Item& item : attributes.items()) {
        std::string name = item.name.utf8();
        if (!IsName(name)) {
            names.emplace_back();
            continue;
        }
        if (item.uri.IsEmpty()) {
            need(NamespaceOf(name));
        } else if (const NamespaceIndex index = FindNamespaceByUri(item.uri.view());
                   index != kUnknownNamespace) {
            need(index);
            name.insert(0, std::string(Namespace(index).prefix) + ":");
        } else {
            const std::string uri = item.uri.utf8();
            auto known =
                std::find_if(local.begin(), local.end(), [&](const auto& d) { return d.first == uri; });
            if (known == local.end()) {
                declare("ns" + std::to_string(local.size() + 1), uri);
                known = std::prev(local.end());
            }
            name.insert(0, known->second + ":");
        }
        // A name twice on one element would make the file ill-formed; the first stays.
        names.push_back(std::find(names.begin(), names.end(), name) == names.end() ? name : std::string());
    }
    const auto isDeclared = [&](std::string_view prefix) {
        return (isRoot && (declared_ & Bit(FindNamespaceByPrefix(prefix)))) ||
               std::any_of(local.begin(), local.end(), [&](const auto& d) { return d.second == prefix; });
    };
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty() || (names[i].starts_with("xmlns:") && isDeclared(names[i].substr(6)))) continue;
        out_.put(' ');
        out_.put(names[i]);
        out_.put("=\"");
        out_.putEscapedAttribute(attributes.items()[i].value.view());
        out_.put('"');
    }
}

bool XmlWriter::WriteObject(const unsigned short* name, CSDObject* object, CSDAttribute* attributes,
                            const unsigned short* text, int) {
    if (!object) return false;
    if (!name) {
        out_.putText(ToView(text));
        return true;
    }
    const std::string tag = ToUtf8(name);
    if (!IsName(tag)) return false;
    const ClassDescriptor* const table = ObjectAccess::table(*object);
    const bool isRoot = !rootWritten_;
    out_.put('<');
    out_.put(tag);
    if (isRoot) {
        declared_ |= usedNamespaces(*object, tag);
        declareNamespaces();
    }
    if (const auto* const list = dynamic_cast<const WriteAttributeList*>(attributes))
        writeForeignAttributes(*list, tag, isRoot);
    else if (table)
        writeAttributes(*object, *table); // a caller without a list of ours
    const std::size_t floor = open_.size();
    pushOrClose(*object, table, tag, ToView(text));
    if (open_.size() > floor) {
        open_.back().name = tag;
    }
    writeChildren(floor);
    return true;
}

} // namespace ODF::xml

CSDSerializer* CreateSerialize() {
    return new (std::nothrow) ODF::xml::XmlWriter;
}

void ReleaseSerialize(CSDSerializer* serializer) {
    delete serializer;
}
