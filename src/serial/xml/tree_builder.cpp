#include "serial/xml/tree_builder.h"

#include "core/utf.h"

#include <odfmodel/core/part.h>

namespace ODF::xml {
namespace {

/// The number's place in `rows`, made with `fill` up to it. Names beyond the bound are looked up each time:
/// only a hostile file has so many.
template<typename Row>
Row* Place(std::vector<Row>& rows, std::uint32_t id, const Row& fill) {
    constexpr std::uint32_t kMaxRemembered = 8192;
    if (id >= kMaxRemembered) return nullptr;
    if (id >= rows.size()) rows.resize(id + 1, fill);
    return &rows[id];
}

bool IsBlank(std::string_view text) noexcept {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

} // namespace

TreeBuilder::~TreeBuilder() {
    // Only what memory did not suffice to hand over is left.
    for (CSDObject* const object : pending_)
        CSDObject::Delete(object);
}

TreeBuilder::ClassNames& TreeBuilder::namesOf(const ClassDescriptor& table) {
    ClassNames& names = classes_[&table];
    names.table = &table;
    names.usage.resize(table.attributeCount);
    return names;
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
    Level level{&root_, nullptr, hasScope, nullptr, 0};
    if (open_.empty()) {
        rootName_ = element.canonical;
        const unsigned short* const expected = root_.GetElemName();
        const ClassDescriptor* const table = ObjectAccess::table(root_);
        hasMatchedRoot_ = expected && *expected ? element.canonical16 == expected
                                                : !table || element.canonical == table->elementName;
        if (table) level.names = &namesOf(*table);
    } else if (!createChild(level, element, attributes)) {
        ++unknownElements_[&element];
        if (hasScope) names_.leaveScope();
        skipDepth_ = 1;
        return;
    }
    level.firstPending = pending_.size();
    readAttributes(level, element, attributes);
    open_.push_back(level);
}

CSDObject* TreeBuilder::makeChild(CSDObject* (*make)(unsigned, Arena*), unsigned id, std::size_t byteCount,
                                  Arena*& arena) {
    const bool isRoomy =
        arena_.reserve(Arena::rounded(ObjectAccess::kMaxObjectBytes) + Arena::rounded(byteCount));
    arena = isRoomy ? &arena_ : nullptr;
    pending_.push_back(nullptr);
    CSDObject* const object = make(id, arena);
    object->SetRootpart(open_.back().object->GetRootpart());
    pending_.back() = object;
    return object;
}

bool TreeBuilder::createChild(Level& child, const ResolvedName& name, const char** attributes) {
    const Level& parent = open_.back();
    if (!parent.names) {
        settle();
        child.object = parent.object->CreateObject(name.canonical16.c_str(), 1);
    } else if (const ChildMap* const map = parent.names->table->children) {
        ClassNames::Child looked;
        ClassNames::Child* const place = Place(parent.names->childRows, name.id, looked);
        ClassNames::Child& known = place ? *place : looked;
        if (known.row == kNotLooked) {
            const ChildRow* const found =
                name.nameSpace == kUnknownNamespace ? nullptr : map->find(std::string_view(name.canonical));
            known.row = found ? static_cast<std::int32_t>(found - map->rows) : kUnknown;
            if (found) known.names = &namesOf(*found->table);
        }
        if (known.row >= 0) {
            const ClassDescriptor& table = *known.names->table;
            std::size_t words = table.words();
            for (const char** at = attributes; *at; at += 2)
                ++words;
            child.object =
                makeChild(table.make, map->rows[known.row].id, words * sizeof(std::uint64_t), child.arena);
            if (ObjectAccess::table(*child.object)) child.names = known.names;
            return true;
        }
        // A part may bring objects of its own for what no class lists.
        child.object = nullptr;
        if (ISDPart* const part = parent.object->GetRootpart()) {
            settle();
            int dummy = 0;
            child.object = part->CreateApplicationObj(name.canonical16, dummy);
            if (child.object) parent.object->SetObject(child.object, 1);
        }
    } else {
        return false;
    }
    if (!child.object) return false;
    if (const ClassDescriptor* const table = ObjectAccess::table(*child.object))
        child.names = &namesOf(*table);
    return true;
}

void TreeBuilder::settle() {
    for (std::size_t i = open_.size(); i-- > 0 && !pending_.empty();) {
        Level& level = open_[i];
        if (level.firstPending < pending_.size()) {
            ObjectAccess::append(*level.object, std::span(pending_).subspan(level.firstPending));
            pending_.resize(level.firstPending);
        }
    }
    for (Level& level : open_)
        level.firstPending = 0;
}

void TreeBuilder::readAttributes(const Level& level, const ResolvedName& element, const char** attributes) {
    CSDObject& object = *level.object;
    ClassNames* const names = level.names;
    if (!names) {
        if (const char* const reason = BeyondLimits(attributes, limits_)) {
            parser_->stop(reason);
            return;
        }
        list_.clear();
        for (const char** at = attributes; *at; at += 2)
            if (!NameTable::isDeclaration(*at))
                list_.add(*at, names_.attribute(*at, element.nameSpace), at[1]);
        settle();
        object.ReadAttribute(&list_);
        return;
    }
    values_.clear();
    std::size_t count = 0;
    for (const char** at = attributes; *at; at += 2) {
        if (++count > limits_.attributes) {
            parser_->stop("too many attributes");
            return;
        }
        if (**at == 'x' && NameTable::isDeclaration(*at)) continue;
        const ResolvedName& name = names_.attribute(*at, element.nameSpace);
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
    ObjectAccess::readAttributes(object, *names->table, values_, {pool_, names->usage.data(), level.arena});
}

void TreeBuilder::endElement(const char*) {
    flushText();
    if (skipDepth_ > 0) {
        --skipDepth_;
        return;
    }
    const Level& level = open_.back();
    if (level.hasScope) names_.leaveScope();
    if (level.firstPending < pending_.size()) {
        ObjectAccess::append(*level.object, std::span(pending_).subspan(level.firstPending));
        pending_.resize(level.firstPending);
    }
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
    settle();
}

void TreeBuilder::flushText() {
    if (text_.empty()) return;
    CSDObject& object = *open_.back().object;
    const ClassDescriptor* const table = open_.back().names ? open_.back().names->table : nullptr;
    if (table && ObjectAccess::keepsRuns(object)) {
        addTextRun(texts_.decode(text_));
    } else if (!table || ObjectAccess::holdsText(object)) {
        if (!table) settle();
        units_ = texts_.decode(text_);
        object.ReadNodeValue(ToUnits(units_.c_str()), static_cast<unsigned>(units_.size()));
    } else if (!IsBlank(text_)) {
        ++droppedText_[table->elementName];
    }
    text_.clear();
}

void TreeBuilder::addTextRun(std::u16string_view text) {
    const std::size_t byteCount = TextMaker::bytesFor(text.size());
    Arena* arena = nullptr;
    CSDObject* const run = makeChild(&ObjectAccess::make<CSDStringValueObject>, kTextRunId, byteCount, arena);
    ObjectAccess::text(*run) = arena ? TextMaker::make(text, *arena) : CTulStringW(text);
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
