#include "serial/xml/xml_writer.h"

#include "core/names.h"
#include "core/utf.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/sax_reader.h>

#include <algorithm>
#include <bit>
#include <exception>
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
    constexpr std::size_t kMaxPrefix = 12;
    const std::size_t colon = value.substr(0, kMaxPrefix + 1).find(u':');
    if (colon == std::u16string_view::npos || colon == 0) return kNoNamespace;
    char prefix[kMaxPrefix];
    for (std::size_t i = 0; i < colon; ++i) {
        if (value[i] < u'a' || value[i] > u'z') return kNoNamespace;
        prefix[i] = static_cast<char>(value[i]);
    }
    return FindNamespaceByPrefix({prefix, colon});
}

/// Text that can't end the comment or instruction that it is in, and that XML allows.
std::u16string SafeMarkup(std::u16string_view text, std::u16string_view forbidden) {
    std::u16string result;
    const char16_t* at = text.data();
    const char16_t* const end = at + text.size();
    while (at != end) {
        const char16_t* const start = at;
        const char32_t c = NextCodePoint(at, end);
        if (IsXmlCharacter(c) && c != kReplacement)
            result.append(start, at);
        else
            result += static_cast<char16_t>(kReplacement);
        if (result.ends_with(forbidden)) result.insert(result.size() - 1, u" ");
    }
    return result;
}

} // namespace

XmlWriter::~XmlWriter() {
    try {
        if (out_.isOpen()) XmlWriter::Close();
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
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
    if (ObjectAccess::isTextRun(root)) return false;
    const Extras* const extras = keepsAll_ ? ObjectAccess::extras(root) : nullptr;
    const KeptMarkup* const markup = extras ? extras->markup.get() : nullptr;
    // A file's own declarations serve all that it has; what else is met declares its namespace where it is.
    if (!markup || markup->declarations.empty()) declared_ = usedNamespaces(root, name);
    if (markup) writeOutside(markup->before, false);
    if (!table) {
        WriteAttributeList attributes;
        const CTulStringW units(name);
        return root.WriteElement(name.empty() ? nullptr : units.c_str(), this, &attributes) && rootWritten_;
    }
    if (!IsXmlName(name) && !ObjectAccess::isForeign(root)) return false;
    startElement(root, *table, name, NamespaceOf(name));
    // The string above goes away.
    if (!open_.empty() && open_.back().name.empty()) open_.back().name = name;
    writeChildren(0);
    if (markup) writeOutside(markup->after, true);
    return !failed_;
}

void XmlWriter::writeOutside(const std::vector<CSDObject*>& markup, bool isAfter) {
    for (const CSDObject* const object : markup) {
        if (isAfter) out_.put('\n');
        if (object) writeMarkup(*object);
        if (!isAfter) out_.put('\n');
    }
}

void XmlWriter::writeMarkup(const CSDObject& object) {
    const std::u16string_view text = ObjectAccess::text(object).view();
    if (ObjectAccess::isComment(object)) {
        const std::u16string safe = SafeMarkup(text, u"--");
        out_.put("<!--");
        out_.putRaw(safe);
        out_.put(safe.ends_with(u'-') ? " -->" : "-->");
        return;
    }
    const std::string_view::size_type target = text.find(u' ');
    if (!IsXmlName(ToUtf8(text.substr(0, target)))) {
        failed_ = true;
        return;
    }
    out_.put("<?");
    out_.putRaw(SafeMarkup(text, u"?>"));
    out_.put("?>");
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

bool XmlWriter::hasOwnName(const CSDObject& child) const noexcept {
    const Extras* const extras = keepsAll_ ? ObjectAccess::extras(child) : nullptr;
    return extras && extras->markup && extras->markup->hasOwnName;
}

void XmlWriter::writeChild(Level& parent, CSDObject& child) {
    if (ObjectAccess::isTextRun(child)) {
        // A value that was set, or that is written as one string, stands for the runs that it came from.
        if (keepsAll_ ? parent.skipsRuns : ObjectAccess::keepsValue(*parent.object)) return;
        out_.putText(ObjectAccess::text(child).view());
        return;
    }
    if (ObjectAccess::isMarkup(child)) {
        if (!keepsAll_) return;
        if (!ObjectAccess::isForeign(child)) {
            writeMarkup(child);
            return;
        }
    }
    const ClassDescriptor* const table =
        keepsAll_ ? ObjectAccess::descriptor(child) : ObjectAccess::table(child);
    if (parent.table && table) {
        const ChildRow* row = parent.lastRow;
        if (!row || row->id != child.GetID()) {
            row = parent.table->children ? parent.table->children->find(child.GetID()) : nullptr;
            parent.lastRow = row;
            if (row) need(row->since);
        }
        if (row && row->nameSpace != table->nameSpace && hasOwnName(child)) row = nullptr;
        // An object of a class that its parent doesn't list is written under its own name rather than lost.
        startElement(child, *table, row ? row->utf8Name : table->elementName,
                     row ? row->nameSpace : table->nameSpace);
        return;
    }
    const unsigned short* name = parent.object->FindObjectName(&child);
    if (table) {
        const std::string own = name ? ToUtf8(name) : std::string(table->elementName);
        if (!IsXmlName(own) && !ObjectAccess::isForeign(child)) return;
        const std::size_t depth = open_.size();
        startElement(child, *table, own, NamespaceOf(own));
        if (open_.size() > depth && open_.back().name.empty()) open_.back().name = own;
        return;
    }
    if (const ClassDescriptor* const own = ObjectAccess::descriptor(child); !name && own)
        name = ToUnits(own->elementName16);
    WriteAttributeList attributes;
    child.WriteElement(name, this, &attributes);
}

void XmlWriter::startElement(CSDObject& object, const ClassDescriptor& table, std::string_view tag,
                             NamespaceIndex nameSpace) {
    if (keepsAll_) {
        startWhole(object, table, tag, nameSpace);
        return;
    }
    out_.put('<');
    out_.put(tag);
    if (!rootWritten_)
        declareNamespaces();
    else if (nameSpace != kNoNamespace && !(declared_ & Bit(nameSpace))) {
        // Only a class that is where no map lists it gets here.
        putDeclaration(Namespace(nameSpace).prefix, Namespace(nameSpace).uri);
    }
    writeAttributes(object, table);
    const std::u16string_view text =
        ObjectAccess::holdsText(object) ? ObjectAccess::text(object).view() : std::u16string_view();
    pushOrClose(object, &table, tag, text, scopes_.mark());
}

/// A start tag with everything that the object holds.
void XmlWriter::startWhole(CSDObject& object, const ClassDescriptor& table, std::string_view tag,
                           NamespaceIndex nameSpace) {
    need(table.since);
    const NamespaceScopes::Mark outer = scopes_.mark();
    const std::uint64_t* const slot =
        AttributeSlots::find(ObjectAccess::slots(object), table.words(), table.attributeCount);
    const Extras* const extras =
        slot ? reinterpret_cast<const Extras*>(static_cast<std::uintptr_t>(*slot)) : nullptr;
    if (extras && extras->markup)
        for (const NamespaceDeclaration& kept : extras->markup->declarations)
            if (const std::string prefix = kept.prefix.utf8();
                prefix != "xml" && prefix != "xmlns" && (prefix.empty() || !kept.uri.IsEmpty()))
                scopes_.declare(prefix, kept.uri.utf8());
    if (!rootWritten_) {
        rootWritten_ = true;
        for (std::uint64_t bits = declared_; bits != 0; bits &= bits - 1) {
            const NamespaceRow& row = Namespace(static_cast<NamespaceIndex>(std::countr_zero(bits)));
            if (!scopes_.uriOf(row.prefix)) scopes_.declare(row.prefix, row.uri);
        }
    }
    std::string own;
    if (ObjectAccess::isForeign(object))
        own = foreignName(ObjectAccess::name(object), false);
    else if (!scopes_.isCustomary(nameSpace))
        own = nameInForce(nameSpace, tag, false);
    if (!own.empty()) tag = own;
    out_.put('<');
    out_.put(tag);
    writeWholeAttributes(object, table, extras);
    // Declarations count for the whole tag, wherever in it they are, so those that the attributes needed come
    // last.
    for (std::size_t i = outer.bindings; i < scopes_.declarations().size(); ++i)
        putDeclaration(scopes_.declarations()[i].prefix, scopes_.declarations()[i].uri);
    CTulStringW date;
    std::u16string_view text;
    if (ObjectAccess::holdsText(object)) {
        if (!ObjectAccess::keepsValue(object)) text = ObjectAccess::text(object).view();
    } else if (ObjectAccess::isDate(object)) {
        const bool isKept = ObjectAccess::keepsValue(object);
        const auto& value = static_cast<const CSDDateTimeValueObject&>(object);
        if (!isKept || !object.HasChildList()) date = isKept ? value.GetRawText() : value.GetText();
        text = date.view();
    }
    const std::size_t depth = open_.size();
    pushOrClose(object, &table, tag, text, outer);
    if (open_.size() > depth) {
        if (!own.empty()) open_.back().name = std::move(own);
        open_.back().skipsRuns = ObjectAccess::isDate(object) && !ObjectAccess::keepsValue(object);
    }
}

/// A name of a namespace that isn't in force under its customary prefix, with the prefix that is.
std::string XmlWriter::nameInForce(NamespaceIndex nameSpace, std::string_view qname, bool isAttribute) {
    const std::string_view local = qname.substr(qname.find(':') + 1);
    const NamespaceRow& row = Namespace(nameSpace);
    if (nameSpace == kNoNamespace) {
        scopes_.declare({}, {}); // out of the default namespace
        return std::string(local);
    }
    std::optional<std::string_view> prefix = scopes_.prefixOf(row.uri, row.prefix, isAttribute);
    if (!prefix) prefix = scopes_.declareFree(row.uri, row.prefix);
    return prefix->empty() ? std::string(local) : std::string(*prefix) + ':' + std::string(local);
}

const std::string& XmlWriter::foreignName(const ForeignName& name, bool isAttribute) {
    // Names that are alike share their string, which the tree holds on to.
    ForeignText& known = foreignNames_[name.key().c_str()][isAttribute ? 1 : 0];
    if (known.scope == scopes_.scope()) return known.text;
    const std::string uri = ToUtf8(name.uri());
    const std::string wish = ToUtf8(name.prefix());
    known.text = ToUtf8(name.local());
    if (!uri.empty()) {
        std::optional<std::string_view> prefix = scopes_.prefixOf(uri, wish, isAttribute);
        if (!prefix) prefix = scopes_.declareFree(uri, wish);
        if (!prefix->empty()) known.text.insert(0, std::string(*prefix) + ':');
    } else if (!wish.empty()) {
        if (!scopes_.uriOf(wish)) known.text.insert(0, wish + ':'); // nothing declares it in the file either
    } else if (!isAttribute && !scopes_.isCustomary(kNoNamespace)) {
        scopes_.declare({}, {});
    }
    known.scope = scopes_.scope();
    return known.text;
}

void XmlWriter::putDeclaration(std::string_view prefix, std::string_view uri) {
    out_.put(prefix.empty() ? " xmlns" : " xmlns:");
    out_.put(prefix);
    out_.put("=\"");
    out_.putAttribute(ToUtf16(uri));
    out_.put('"');
}

void XmlWriter::putAttribute(std::string_view name, std::u16string_view value) {
    out_.put(' ');
    out_.put(name);
    out_.put("=\"");
    out_.putAttribute(value);
    out_.put('"');
}

void XmlWriter::writeWholeAttributes(const CSDObject& object, const ClassDescriptor& table,
                                     const Extras* extras) {
    std::string own;
    const auto nameOf = [&](const AttributeRow& row) -> std::string_view {
        if (row.nameSpace == kNoNamespace ||
            (row.nameSpace == kMathNamespace && table.nameSpace == kMathNamespace))
            return row.local(); // MathML's own attributes have no prefix
        if (scopes_.isCustomary(row.nameSpace)) return row.qualifiedName();
        own = nameInForce(row.nameSpace, row.qualifiedName(), true);
        return own;
    };
    const auto writeKept = [&](const KeptAttribute& kept) {
        if (!kept.name.isEmpty())
            putAttribute(foreignName(kept.name, true), kept.value.view());
        else
            putAttribute(nameOf(table.attributes[kept.row]), kept.value.view());
        if (kept.row != KeptAttribute::kNotListed) need(table.attributes[kept.row].since);
    };
    const auto write = [&](const AttributeRow& row, const std::uint64_t* slot) {
        const AttributeValue value{row, slot};
        // No reader takes a number that has no key, which only a caller's cast gives.
        if (value.isKey() && !row.enumeration->key(static_cast<int>(value.whole()))) return;
        need(row.since);
        if (value.isKey()) need(row.enumeration->since(static_cast<int>(value.whole())));
        const std::string_view name = nameOf(row);
        if (value.isText()) {
            const std::u16string_view text = value.text();
            if (const NamespaceIndex used = NamespaceOfValue(text);
                used != kNoNamespace && used != kUnknownNamespace && !scopes_.uriOf(Namespace(used).prefix))
                scopes_.declare(Namespace(used).prefix, Namespace(used).uri);
            putAttribute(name, text);
        } else if (value.isKey()) {
            putAttribute(name, value.key());
        } else {
            out_.put(' ');
            out_.put(name);
            out_.put("=\"");
            out_.put(value.spelled().view());
            out_.put('"');
        }
    };
    const unsigned words = table.words();
    std::uint64_t* const slots = ObjectAccess::slots(object);
    AttributeSlots::forEach(slots, words, [&](unsigned row, const std::uint64_t* slot) {
        if (row >= table.attributeCount) return;
        const KeptAttribute* const kept = extras ? extras->find(row) : nullptr;
        if (kept)
            writeKept(*kept);
        else
            write(table.attributes[row], slot);
    });
    if (!table.allOptional && !ObjectAccess::isFromFile(object))
        for (unsigned row = 0; row < table.attributeCount; ++row)
            if (table.attributes[row].has(AttributeRow::kGiven) && !AttributeSlots::find(slots, words, row))
                write(table.attributes[row], nullptr);
    if (!extras) return;
    for (const KeptAttribute& kept : extras->attributes)
        if (kept.row == KeptAttribute::kNotListed ||
            !AttributeSlots::find(slots, words, static_cast<unsigned>(kept.row)))
            writeKept(kept);
}

void XmlWriter::pushOrClose(CSDObject& object, const ClassDescriptor* table, std::string_view tag,
                            std::u16string_view text, const NamespaceScopes::Mark& outer) {
    const bool hasChildren = object.HasChildList();
    if (text.empty() && !hasChildren) {
        out_.put("/>");
        scopes_.leave(outer);
        return;
    }
    out_.put('>');
    out_.putText(text);
    if (hasChildren) {
        open_.push_back({&object, table, 0, nullptr, {}, tag, outer});
        return;
    }
    out_.put("</");
    out_.put(tag);
    out_.put('>');
    scopes_.leave(outer);
}

void XmlWriter::endElement() {
    const Level& level = open_.back();
    out_.put("</");
    out_.put(level.name.empty() ? level.tag : std::string_view(level.name));
    out_.put('>');
    scopes_.leave(level.outer);
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
        putDeclaration(row.prefix, row.uri);
        if (keepsAll_) scopes_.declare(row.prefix, row.uri);
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
        putDeclaration(prefix, uri);
    };
    const auto need = [&](NamespaceIndex index) {
        if (index != kNoNamespace && index != kUnknownNamespace && !(declared_ & Bit(index)))
            declare(Namespace(index).prefix, Namespace(index).uri);
    };
    need(NamespaceOf(tag));
    std::vector<std::string> names;
    for (const WriteAttributeList::Item& item : attributes.items()) {
        std::string name = item.name.utf8();
        if (!IsXmlName(name)) {
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
    if (!IsXmlName(tag)) return false;
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
    pushOrClose(*object, table, tag, ToView(text), scopes_.mark());
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
