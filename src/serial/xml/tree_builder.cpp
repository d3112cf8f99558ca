#include "serial/xml/tree_builder.h"

#include "core/utf.h"

#include <odfmodel/core/part.h>

#include <algorithm>
#include <memory>

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

void TreeBuilder::startElement(std::string_view name, Attributes attributes) {
    flushText();
    const std::size_t depth = open_.size() + skipDepth_;
    if (depth >= limits_.depth) {
        control_.stop("elements nest too deep", StopKind::Depth);
        return;
    }
    if (skipDepth_ > 0) {
        ++skipDepth_;
        return;
    }
    for (const Attribute& attribute : attributes)
        cost_.textBytes += attribute.value.size();
    if (++cost_.objects > most_.objects || cost_.textBytes > most_.textBytes) {
        control_.stop("the document has too much content", StopKind::Size);
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
        if (keepsAll_ && ObjectAccess::isForeign(root_))
            hasMatchedRoot_ = element.kept(name, true).means(ObjectAccess::name(root_));
        if (keepsAll_ && !hasMatchedRoot_) {
            control_.stop("unexpected root element " + rootName_);
            return;
        }
    } else if (!createChild(level, element, name, attributes)) {
        ++unknownElements_[&element];
        if (hasScope) names_.leaveScope();
        skipDepth_ = 1;
        return;
    }
    level.firstPending = pending_.size();
    readAttributes(level, element, attributes);
    if (keepsAll_ && hasScope) keepDeclarations(*level.object);
    if (level.hasOwnName) ObjectAccess::requireExtras(*level.object).requireMarkup().hasOwnName = true;
    open_.push_back(level);
}

CSDObject* TreeBuilder::makeChild(CSDObject* (*make)(unsigned, Arena*), unsigned id, std::size_t byteCount,
                                  Arena*& arena) {
    const bool isRoomy =
        arena_.reserve(Arena::rounded(ObjectAccess::kMaxObjectBytes) + Arena::rounded(byteCount));
    arena = isRoomy ? &arena_ : nullptr;
    pending_.push_back(nullptr);
    CSDObject* const object = make(id, arena);
    CSDObject& parent = *open_.back().object;
    object->SetRootpart(parent.GetRootpart());
    ObjectAccess::setParent(
        *object, parent, ObjectAccess::childCount(parent) + pending_.size() - 1 - open_.back().firstPending);
    pending_.back() = object;
    return object;
}

bool TreeBuilder::createChild(Level& child, const ResolvedName& name, std::string_view qname,
                              Attributes attributes) {
    const Level& parent = open_.back();
    const auto make = [&](const ClassDescriptor& table, unsigned id, ClassNames* names) {
        const std::size_t words = table.words() + attributes.size();
        child.object = makeChild(table.make, id, words * sizeof(std::uint64_t), child.arena);
        if (ObjectAccess::table(*child.object)) child.names = names;
    };
    // What the parent doesn't list is an object of the class of its name, if there is one, or a foreign one.
    const auto makeUnlisted = [&](ClassNames* names) {
        if (!names) {
            const ClassDescriptor* const own =
                name.nameSpace == kUnknownNamespace ? nullptr : FindClass(name.canonical);
            names = &namesOf(own ? *own : ObjectAccess::foreignTable());
        }
        make(*names->table, names->table->id, names);
        if (ObjectAccess::isForeign(*child.object))
            ObjectAccess::setName(*child.object, name.kept(qname, true));
        return names;
    };
    if (keepsAll_ && !parent.names && ObjectAccess::isDate(*parent.object)) {
        makeUnlisted(nullptr);
        return true;
    }
    if (!parent.names) {
        settle();
        child.object = parent.object->CreateObject(name.canonical16.c_str(), 1);
    } else if (const ChildMap* const map =
                   keepsAll_ ? parent.names->table->children : parent.names->table->listedChildren();
               map || keepsAll_) {
        ClassNames::Child looked;
        ClassNames::Child* const place = Place(parent.names->childRows, name.id, looked);
        ClassNames::Child& known = place ? *place : looked;
        if (known.row == kNotLooked) {
            const ChildRow* const found = !map || name.nameSpace == kUnknownNamespace
                                              ? nullptr
                                              : map->find(std::string_view(name.canonical));
            const bool isKnown = found && (keepsAll_ || map->isListed(*found));
            known.row = isKnown ? static_cast<std::int32_t>(found - map->rows) : kUnknown;
            if (isKnown) known.names = &namesOf(*found->table);
            known.hasOwnName = isKnown && map->find(found->id) != found;
        }
        if (map && known.row >= 0) {
            make(*known.names->table, map->rows[known.row].id, known.names);
            child.hasOwnName = known.hasOwnName;
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
        if (!child.object && keepsAll_) {
            known.names = makeUnlisted(known.names);
            child.hasOwnName = map && map->find(child.object->GetID());
            return true;
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

void TreeBuilder::readAttributes(const Level& level, const ResolvedName& element, Attributes attributes) {
    CSDObject& object = *level.object;
    ClassNames* const names = level.names;
    if (keepsAll_) {
        ++startTag_;
        ObjectAccess::setFromFile(object);
    }
    if (keepsAll_ && !names && ObjectAccess::isDate(object)) {
        if (const char* const reason = BeyondLimits(attributes, limits_)) {
            control_.stop(reason, StopKind::Size);
            return;
        }
        ObjectAccess::setKeepsValue(object); // also that there is no text at all
        for (const auto& [qname, value] : attributes)
            if (!NameTable::isDeclaration(qname))
                keepAttribute(names_.attribute(qname, element.nameSpace), qname, value);
        if (!kept_.empty()) ObjectAccess::keep(object, kept_);
        return;
    }
    if (!names) {
        if (const char* const reason = BeyondLimits(attributes, limits_)) {
            control_.stop(reason, StopKind::Size);
            return;
        }
        list_.clear();
        for (const auto& [qname, value] : attributes)
            if (!NameTable::isDeclaration(qname))
                list_.add(qname, names_.attribute(qname, element.nameSpace), value);
        settle();
        object.ReadAttribute(&list_);
        return;
    }
    values_.clear();
    if (attributes.size() > limits_.attributes) {
        control_.stop("too many attributes", StopKind::Size);
        return;
    }
    for (const auto& [qname, value] : attributes) {
        if (NameTable::isDeclaration(qname)) continue;
        const ResolvedName& name = names_.attribute(qname, element.nameSpace);
        std::int32_t looked = kNotLooked;
        std::int32_t* const place = Place(names->attributeRows, name.id, kNotLooked);
        std::int32_t& row = place ? *place : looked;
        if (row == kNotLooked) {
            row = names->table->findAttribute(name.nameSpace, name.local);
            if (!keepsAll_ && row >= names->table->listedAttributes) row = kUnknown;
        }
        if (row >= 0) {
            if (value.size() > limits_.textBytes) {
                control_.stop("an attribute value is too long", StopKind::Size);
                return;
            }
            if (keepsAll_ && name.nameSpace == kMathNamespace) {
                // MathML's attributes have no prefix. Where a file has one all the same, it stays, also next
                // to one of the same name without.
                if (std::any_of(values_.begin(), values_.end(),
                                [row](const ReadValue& other) { return other.row == row; })) {
                    keepAttribute(name, qname, value);
                    continue;
                }
                if (qname.find(':') != std::string_view::npos)
                    kept_.push_back({name.kept(qname, false), CTulStringW(value), row});
            }
            values_.push_back({static_cast<std::uint16_t>(row), value});
            continue;
        }
        if (keepsAll_) {
            if (value.size() > limits_.textBytes) {
                control_.stop("an attribute value is too long", StopKind::Size);
                return;
            }
            keepAttribute(name, qname, value);
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
    ObjectAccess::readAttributes(object, *names->table, values_,
                                 {pool_, names->usage.data(), level.arena, keepsAll_ ? &kept_ : nullptr});
}

void TreeBuilder::keepAttribute(const ResolvedName& name, std::string_view qname, std::string_view value) {
    const ForeignName& kept = name.kept(qname, false);
    // Two prefixes of one namespace can give an attribute twice; the last one counts, as with those of a
    // class.
    std::uint32_t* const seen = Place(seen_, name.id, std::uint32_t{0});
    if (seen && *seen == startTag_)
        std::erase_if(kept_, [&](const KeptAttribute& other) {
            return other.row == KeptAttribute::kNotListed && other.name.means(kept);
        });
    if (seen) *seen = startTag_;
    kept_.push_back({kept, pool_.get(value, name.usage)});
}

void TreeBuilder::keepDeclarations(CSDObject& object) {
    if (!ObjectAccess::descriptor(object)) return;
    std::vector<NamespaceDeclaration>& declarations =
        ObjectAccess::requireExtras(object).requireMarkup().declarations;
    for (const auto& [prefix, uri] : names_.scopeDeclarations())
        declarations.push_back({CTulStringW(prefix), CTulStringW(uri)});
}

void TreeBuilder::endElement(std::string_view) {
    flushText();
    if (skipDepth_ > 0) {
        --skipDepth_;
        return;
    }
    Level& level = open_.back();
    if (level.hasScope) names_.leaveScope();
    close(level);
    open_.pop_back();
}

/// Hands an object its children, and the value that they hold.
void TreeBuilder::close(Level& level) {
    if (level.firstPending < pending_.size()) {
        ObjectAccess::append(*level.object, std::span(pending_).subspan(level.firstPending));
        pending_.resize(level.firstPending);
    }
    if (keepsAll_ && level.names && ObjectAccess::holdsText(*level.object) &&
        ObjectAccess::keepsValue(*level.object))
        ObjectAccess::joinRuns(*level.object);
}

void TreeBuilder::characterData(std::string_view text, bool isWhole) {
    if (skipDepth_ > 0 || open_.empty()) return;
    cost_.textBytes += text.size();
    if (text_.size() + text.size() > limits_.textBytes || cost_.textBytes > most_.textBytes) {
        control_.stop("a text is too long", StopKind::Size);
        return;
    }
    if (isWhole)
        takeText(text);
    else
        text_.append(text);
}

void TreeBuilder::finish() {
    if (!open_.empty()) flushText();
    settle();
    for (Level& level : open_)
        close(level);
}

void TreeBuilder::comment(std::string_view text) {
    if (keepsAll_) addMarkup(kCommentId, text);
}

void TreeBuilder::processingInstruction(std::string_view target, std::string_view data) {
    if (keepsAll_) addMarkup(kProcessingInstructionId, std::string(target).append(" ").append(data));
}

void TreeBuilder::skippedEntity(std::string_view name) {
    if (keepsAll_) control_.stop("the entity " + std::string(name) + " is defined outside the file");
}

void TreeBuilder::addMarkup(unsigned id, std::string_view text) {
    flushText();
    if (skipDepth_ > 0) return;
    ++cost_.objects;
    cost_.textBytes += text.size();
    if (text.size() > limits_.textBytes || cost_.textBytes > most_.textBytes ||
        cost_.objects > most_.objects) {
        control_.stop("a text is too long", StopKind::Size);
        return;
    }
    if (open_.empty()) {
        KeptMarkup& markup = ObjectAccess::requireExtras(root_).requireMarkup();
        auto& list = rootName_.empty() ? markup.before : markup.after;
        std::unique_ptr<CSDObject> object(CSDStringValueObject::Create(id));
        ObjectAccess::text(*object) = CTulStringW(text);
        list.push_back(object.get());
        object.release(); // NOLINT(bugprone-unused-return-value): the list has it
        return;
    }
    const Level& level = open_.back();
    if (!level.names && !ObjectAccess::isDate(*level.object)) return;
    Arena* arena = nullptr;
    CSDObject* const markup = makeChild(&ObjectAccess::make<CSDStringValueObject>, id, 0, arena);
    ObjectAccess::text(*markup) = CTulStringW(text);
}

void TreeBuilder::flushText() {
    if (text_.empty()) return;
    takeText(text_);
    text_.clear();
}

/// Gives the open object a text that is complete.
void TreeBuilder::takeText(std::string_view text) {
    CSDObject& object = *open_.back().object;
    const ClassDescriptor* const table = open_.back().names ? open_.back().names->table : nullptr;
    if (table && ObjectAccess::keepsRuns(object)) {
        addTextRun(texts_.decode(text));
    } else if (keepsAll_ && ObjectAccess::descriptor(object)) {
        keepText(open_.back(), text);
    } else if (!table || ObjectAccess::holdsText(object)) {
        if (!table) settle();
        units_ = texts_.decode(text);
        object.ReadNodeValue(ToUnits(units_.c_str()), static_cast<unsigned>(units_.size()));
    } else if (!IsBlank(text)) {
        ++droppedText_[table->elementName];
    }
}

bool TreeBuilder::hasChildren(const Level& level) const noexcept {
    return level.firstPending < pending_.size() || level.object->HasChildList();
}

/// Text of an element whose class keeps it as one value, or has no place for it at all.
void TreeBuilder::keepText(Level& level, std::string_view text) {
    CSDObject& object = *level.object;
    const bool isOfDate = ObjectAccess::isDate(object);
    if (!isOfDate && !ObjectAccess::holdsText(object)) {
        if (!level.hasRuns && IsBlank(text)) return;
        level.hasRuns = true;
        addTextRun(texts_.decode(text));
        return;
    }
    if (!hasChildren(level)) {
        units_ = texts_.decode(text);
        object.ReadNodeValue(ToUnits(units_.c_str()), static_cast<unsigned>(units_.size()));
        return;
    }
    // Text after a child: from here on the value is what the runs say, the first of which it was until now.
    if (!level.hasRuns) {
        level.hasRuns = true;
        const CTulStringW first =
            isOfDate ? static_cast<CSDDateTimeValueObject&>(object).GetRawText() : ObjectAccess::text(object);
        if (!first.IsEmpty()) {
            addTextRun(first.view());
            CSDObject* const run = pending_.back();
            if (level.firstPending + 1 == pending_.size() || object.HasChildList()) {
                ObjectAccess::prepend(object, run);
                pending_.pop_back();
            } else {
                std::rotate(pending_.begin() + static_cast<std::ptrdiff_t>(level.firstPending),
                            pending_.end() - 1, pending_.end());
            }
        }
        ObjectAccess::setKeepsValue(object);
    }
    if (isOfDate) {
        units_ = texts_.decode(text);
        object.ReadNodeValue(ToUnits(units_.c_str()), static_cast<unsigned>(units_.size()));
    }
    addTextRun(texts_.decode(text));
}

void TreeBuilder::addTextRun(std::u16string_view text) {
    ++cost_.objects;
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
