#include "serial/xml/tree_builder.h"

#include "core/utf.h"

#include <odfmodel/core/part.h>

namespace ODF::xml {
namespace {

/// The number's place in `rows`, made with `fill` up to it. Names beyond the bound are looked up each time:
/// only a hostile file has so many.
std::int32_t* Place(std::vector<std::int32_t>& rows, std::uint32_t id, std::int32_t fill) {
    constexpr std::uint32_t kMaxRemembered = 8192;
    if (id >= kMaxRemembered) return nullptr;
    if (id >= rows.size()) rows.resize(id + 1, fill);
    return &rows[id];
}

bool IsBlank(std::string_view text) noexcept {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

} // namespace

TreeBuilder::ClassNames* TreeBuilder::namesOf(const CSDObject& object) {
    const ClassDescriptor* const table = ObjectAccess::table(object);
    if (!table) return nullptr;
    if (!open_.empty() && open_.back().names && open_.back().names->table == table) return open_.back().names;
    ClassNames& names = classes_[table];
    names.table = table;
    return &names;
}

void TreeBuilder::startElement(const char* name, const char** attributes) {
    flushText();
    const std::size_t depth = open_.size() + skipDepth_;
    if (depth >= limits_.depth) {
        parser_->stop("elements nest too deep");
        return;
    }
    if (skipDepth_ > 0) {
        ++skipDepth_;
        return;
    }
    const bool hasScope = names_.enterScope(attributes);
    const ResolvedName& element = names_.element(name);
    CSDObject* object = &root_;
    if (open_.empty()) {
        rootName_ = element.canonical;
        const unsigned short* const expected = root_.GetElemName();
        const ClassDescriptor* const table = ObjectAccess::table(root_);
        hasMatchedRoot_ = expected && *expected ? element.canonical16 == expected
                                                : !table || element.canonical == table->elementName;
    } else {
        object = createChild(open_.back(), element);
        if (!object) {
            ++unknownElements_[&element];
            if (hasScope) names_.leaveScope();
            skipDepth_ = 1;
            return;
        }
    }
    ClassNames* const names = namesOf(*object);
    readAttributes(*object, names, element, attributes);
    open_.push_back({object, names, hasScope});
}

CSDObject* TreeBuilder::createChild(const Level& parent, const ResolvedName& name) {
    if (!parent.names) return parent.object->CreateObject(name.canonical16.c_str(), 1);
    const ChildMap* const map = parent.names->table->children;
    if (!map) return nullptr;
    std::int32_t looked = kNotLooked;
    std::int32_t* const place = Place(parent.names->childRows, name.id, kNotLooked);
    std::int32_t& row = place ? *place : looked;
    if (row == kNotLooked) {
        const ChildRow* const found =
            name.nameSpace == kUnknownNamespace ? nullptr : map->find(std::string_view(name.canonical));
        row = found ? static_cast<std::int32_t>(found - map->rows) : kUnknown;
    }
    if (row >= 0) return ObjectAccess::createChild(*parent.object, map->rows[row]);
    // A part may bring objects of its own for what no class lists.
    ISDPart* const part = parent.object->GetRootpart();
    if (!part) return nullptr;
    int dummy = 0;
    CSDObject* const object = part->CreateApplicationObj(name.canonical16, dummy);
    if (object) parent.object->SetObject(object, 1);
    return object;
}

void TreeBuilder::readAttributes(CSDObject& object, ClassNames* names, const ResolvedName& element,
                                 const char** attributes) {
    if (!names) {
        if (const char* const reason = BeyondLimits(attributes, limits_)) {
            parser_->stop(reason);
            return;
        }
        list_.clear();
        for (const char** at = attributes; *at; at += 2)
            if (!NameTable::isDeclaration(*at))
                list_.add(*at, names_.attribute(*at, element.nameSpace), at[1]);
        object.ReadAttribute(&list_);
        return;
    }
    values_.clear();
    std::size_t count = 0;
    for (const char** at = attributes; *at; at += 2) {
        const std::string_view qname(*at);
        if (++count > limits_.attributes) {
            parser_->stop("too many attributes");
            return;
        }
        if (NameTable::isDeclaration(qname)) continue;
        const ResolvedName& name = names_.attribute(qname, element.nameSpace);
        std::int32_t looked = kNotLooked;
        std::int32_t* const place = Place(names->attributeRows, name.id, kNotLooked);
        std::int32_t& row = place ? *place : looked;
        if (row == kNotLooked) row = names->table->findAttribute(name.nameSpace, name.local);
        const std::string_view value(at[1]);
        if (row >= 0) {
            if (value.size() > limits_.textBytes) {
                parser_->stop("an attribute value is too long");
                return;
            }
            values_.push_back({static_cast<std::uint16_t>(row), value});
            continue;
        }
        // Unknown attributes of a class are few, so a short list serves as the counter.
        auto unknown = names->unknownAttributes.begin();
        while (unknown != names->unknownAttributes.end() && unknown->first != &name)
            ++unknown;
        if (unknown != names->unknownAttributes.end())
            ++unknown->second;
        else if (names->unknownAttributes.size() < 64)
            names->unknownAttributes.emplace_back(&name, 1);
        else
            ++names->unknownAttributes.back().second;
    }
    ObjectAccess::readAttributes(object, *names->table, values_, pool_);
}

void TreeBuilder::endElement(const char*) {
    flushText();
    if (skipDepth_ > 0) {
        --skipDepth_;
        return;
    }
    if (open_.back().hasScope) names_.leaveScope();
    open_.pop_back();
}

void TreeBuilder::characterData(std::string_view text) {
    if (skipDepth_ > 0 || open_.empty()) return;
    if (text_.size() + text.size() > limits_.textBytes) {
        parser_->stop("a text is too long");
        return;
    }
    text_.append(text);
}

void TreeBuilder::finish() {
    if (!open_.empty()) flushText();
}

void TreeBuilder::flushText() {
    if (text_.empty()) return;
    CSDObject& object = *open_.back().object;
    const ClassDescriptor* const table = open_.back().names ? open_.back().names->table : nullptr;
    if (table && ObjectAccess::keepsRuns(object)) {
        ObjectAccess::addTextRun(object, text_);
    } else if (!table || ObjectAccess::holdsText(object)) {
        units_.resize(text_.size());
        units_.resize(DecodeUtf8(text_, units_.data()));
        units_.push_back(u'\0');
        object.ReadNodeValue(ToUnits(units_.data()), static_cast<unsigned>(units_.size() - 1));
    } else if (!IsBlank(text_)) {
        ++droppedText_[table->elementName];
    }
    text_.clear();
}

void TreeBuilder::report(Diagnostics& diagnostics) const {
    for (const auto& [name, count] : unknownElements_)
        diagnostics.countUnknownElement(name->canonical, count);
    for (const auto& [table, names] : classes_)
        for (const auto& [name, count] : names.unknownAttributes)
            diagnostics.countUnknownAttribute(std::string(table->elementName) + "@" + name->canonical, count);
    for (const auto& [name, count] : droppedText_)
        diagnostics.countDroppedText(name, count);
}

} // namespace ODF::xml
