#include "document/styles/style_trees.h"

#include "core/object_access.h"

#include <odfmodel/document/odf_document.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/elements/office/document.h>
#include <odfmodel/elements/style/containers.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

namespace ODF {
namespace {

constexpr std::string_view kShownName = "style:display-name";

/// The order of lists in a root, in which files of every kind have them.
int RankInRoot(const CSDObject& child) {
    constexpr unsigned kOrder[] = {COfficeFontFaceDecls::kId, COfficeStyles::kId, COfficeAutomaticStyles::kId,
                                   COfficeMasterStyles::kId, COfficeBody::kId};
    const auto at = std::find(std::begin(kOrder), std::end(kOrder), child.GetID());
    return at == std::end(kOrder) ? -1 : static_cast<int>(at - std::begin(kOrder));
}

unsigned ListId(StyleTrees::Place place) noexcept {
    using enum StyleTrees::Place;
    switch (place) {
    case ContentAutomatic:
    case StylesAutomatic:
        return COfficeAutomaticStyles::kId;
    case Common:
        return COfficeStyles::kId;
    case Master:
        return COfficeMasterStyles::kId;
    case ContentFonts:
    case StylesFonts:
        return COfficeFontFaceDecls::kId;
    }
    return 0;
}

/// What the automatic names of a kind begin with, as office suites have it.
std::string_view NameStart(NamedKind kind) noexcept {
    constexpr std::string_view kOfFamilies[] = {"T",  "P",  "Sect", "Ru", "ta", "co",
                                                "ro", "ce", "gr",   "pr", "dp", "ch"};
    if (IsFamily(kind)) return kOfFamilies[static_cast<std::size_t>(kind)];
    return kind == NamedKind::List ? "L" : kind == NamedKind::Data ? "N" : "pm";
}

std::size_t HashOf(NamedKind kind, std::string_view text) noexcept {
    return std::hash<std::string_view>()(text) * 31 + static_cast<std::size_t>(kind);
}

void AddField(std::string& key, std::string_view text) {
    key.append(std::to_string(text.size())).append(1, ':').append(text);
}

void AddAttributes(std::string& key, const CSDObject& object, bool isStyle) {
    if (const ClassDescriptor* const table = ObjectAccess::table(object)) {
        const Extras* const extras = ObjectAccess::extras(object);
        for (std::uint16_t row = 0; row < table->attributeCount; ++row) {
            const std::string_view name = table->attributes[row].qualifiedName();
            if (isStyle && (name == "style:name" || name == kShownName)) continue;
            const KeptAttribute* const kept = extras ? extras->find(row) : nullptr;
            if (!kept && !ObjectAccess::isWritten(object, *table, row)) continue;
            AddField(key, name);
            AddField(key, (kept ? kept->value : ObjectAccess::attributeText(object, *table, row)).utf8());
        }
    }
    std::vector<ForeignAttribute> foreign = ForeignAttributesOf(object);
    std::sort(foreign.begin(), foreign.end(), [](const ForeignAttribute& a, const ForeignAttribute& b) {
        return std::tie(a.namespaceUri, a.localName) < std::tie(b.namespaceUri, b.localName);
    });
    for (const ForeignAttribute& attribute : foreign) {
        AddField(key, attribute.namespaceUri + ' ' + attribute.localName);
        AddField(key, attribute.value);
    }
}

void AddElement(std::string& key, const CSDObject& object, bool isStyle) {
    if (const auto* const foreign =
            ObjectAccess::isForeign(object) ? static_cast<const CForeignElement*>(&object) : nullptr)
        AddField(key, foreign->GetNamespace() + ' ' + foreign->GetLocalName());
    else
        AddField(key, std::to_string(object.GetID()));
    AddAttributes(key, object, isStyle);
    AddField(key, TextOf(object));
}

/// A document may have no tree of common styles; this gives it one.
CSDObject* MakeStylesRoot(Document& document) {
    constexpr std::string_view kEmpty =
        R"(<office:document-styles xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0" )"
        R"(office:version="1.2"/>)";
    if (!document.Content()) return nullptr;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(kEmpty.data());
    if (!document.WriteMember("styles.xml", {bytes, kEmpty.size()}, "text/xml")) return nullptr;
    return document.Styles();
}

} // namespace

std::string ContentKey(const CSDObject& style) {
    std::string key;
    AddElement(key, style, true);
    std::vector<std::pair<const CSDObject*, std::size_t>> levels{{&style, 0}};
    while (!levels.empty()) {
        const std::vector<CSDObject*>* const children = levels.back().first->GetObjectList();
        if (!children || levels.back().second >= children->size()) {
            levels.pop_back();
            key.append(1, ')');
            continue;
        }
        const CSDObject* const child = (*children)[levels.back().second++];
        if (!child || ObjectAccess::isComment(*child) || ObjectAccess::isInstruction(*child)) continue;
        key.append(1, '(');
        AddElement(key, *child, false);
        levels.emplace_back(child, 0);
    }
    return key;
}

CSDObject& InsertByRank(CSDObject& parent, std::unique_ptr<CSDObject> child,
                        int (*rank)(const CSDObject& child)) {
    CSDObject& made = *child;
    const int own = rank(made);
    for (const CSDObject& other : parent.Children())
        if (rank(other) > own) {
            parent.Insert(std::move(child), other);
            return made;
        }
    parent.Append(std::move(child));
    return made;
}

void StyleList::enter(const CSDObject& object, std::uint32_t place) {
    const std::optional<NamedKind> kind = KindOfNamed(object);
    if (!kind) return;
    byName_.emplace(HashOf(*kind, NameOfNamed(object)), place);
    if (const std::string shown = AttributeOf(object, kShownName); !shown.empty())
        byShownName_.emplace(HashOf(*kind, shown), place);
    if (hasContents_) byContent_.emplace(HashOf(*kind, ContentKey(object)), place);
}

void StyleList::refresh(CSDObject& list) {
    byName_.clear();
    byShownName_.clear();
    byContent_.clear();
    const std::vector<CSDObject*>* const children = list.GetObjectList();
    count_ = children ? children->size() : 0;
    isReady_ = true;
    for (std::size_t i = 0; i < count_; ++i)
        if ((*children)[i]) enter(*(*children)[i], static_cast<std::uint32_t>(i));
}

template<typename IsIt>
CSDObject* StyleList::lookUp(CSDObject* list, Places& places, std::size_t hash, IsIt isIt) {
    if (!list) return nullptr;
    const std::vector<CSDObject*>* const children = list->GetObjectList();
    const std::size_t count = children ? children->size() : 0;
    bool isFresh = false;
    if (!isReady_ || count != count_) {
        refresh(*list);
        isFresh = true;
    }
    for (;;) {
        CSDObject* first = nullptr; // of several, the first of the list counts
        std::uint32_t firstPlace = ~std::uint32_t{0};
        bool isStale = false;
        const auto [begin, end] = places.equal_range(hash);
        for (auto at = begin; at != end; ++at) {
            CSDObject* const object = (*children)[at->second];
            if (object && isIt(*object)) {
                if (at->second < firstPlace) std::tie(first, firstPlace) = std::pair(object, at->second);
            } else {
                isStale = true; // or another one with that hash, which is rare
            }
        }
        if (!isStale || isFresh) return first;
        refresh(*list);
        isFresh = true;
    }
}

CSDObject* StyleList::find(CSDObject* list, NamedKind kind, std::string_view name) {
    return lookUp(list, byName_, HashOf(kind, name), [&](const CSDObject& object) {
        return KindOfNamed(object) == kind && NameOfNamed(object) == name;
    });
}

CSDObject* StyleList::findShown(CSDObject* list, NamedKind kind, std::string_view name) {
    return lookUp(list, byShownName_, HashOf(kind, name), [&](const CSDObject& object) {
        return KindOfNamed(object) == kind && AttributeOf(object, kShownName) == name;
    });
}

CSDObject* StyleList::findAlike(CSDObject* list, NamedKind kind, const std::string& contentKey) {
    if (!hasContents_) {
        hasContents_ = true;
        isReady_ = false;
    }
    return lookUp(list, byContent_, HashOf(kind, contentKey), [&](const CSDObject& object) {
        return KindOfNamed(object) == kind && ContentKey(object) == contentKey;
    });
}

CSDObject& StyleList::append(CSDObject& list, std::unique_ptr<CSDObject> object) {
    CSDObject& added = *object;
    list.Append(std::move(object));
    const std::size_t count = list.GetObjectList()->size();
    if (isReady_ && count == count_ + 1) {
        enter(added, static_cast<std::uint32_t>(count_));
        count_ = count;
    }
    return added;
}

CSDObject* StyleTrees::rootOf(Place place) const noexcept {
    return place == Place::ContentAutomatic || place == Place::ContentFonts ? content_ : styles_;
}

StyleTrees::Place StyleTrees::same(Place place) const noexcept {
    if (content_ != styles_) return place;
    return place == Place::StylesAutomatic ? Place::ContentAutomatic
           : place == Place::StylesFonts   ? Place::ContentFonts
                                           : place;
}

CSDObject* StyleTrees::list(Place place) const {
    CSDObject* const root = rootOf(place);
    return root ? root->GetObjectByID(ListId(place)) : nullptr;
}

CSDObject* StyleTrees::findIn(Place place, NamedKind kind, std::string_view name) {
    place = same(place);
    return index(place).find(list(place), kind, name);
}

CSDObject* StyleTrees::findAlike(Place place, NamedKind kind, const std::string& contentKey) {
    place = same(place);
    return index(place).findAlike(list(place), kind, contentKey);
}

CSDObject* StyleTrees::find(NamedKind kind, std::string_view name, Part part) {
    using enum Place;
    if (name.empty()) return nullptr;
    const bool isContent = part == Part::Content;
    if (kind == NamedKind::MasterPage) {
        if (CSDObject* const page = findIn(Master, kind, name)) return page;
        return index(Master).findShown(list(Master), kind, name);
    }
    if (kind == NamedKind::Font) {
        CSDObject* const font = findIn(isContent ? ContentFonts : StylesFonts, kind, name);
        return font ? font : findIn(isContent ? StylesFonts : ContentFonts, kind, name);
    }
    for (const Place place : {automaticOf(part), Common, isContent ? StylesAutomatic : ContentAutomatic})
        if (CSDObject* const found = findIn(place, kind, name)) return found;
    return index(Common).findShown(list(Common), kind, name);
}

CSDObject* StyleTrees::add(Place place, std::unique_ptr<CSDObject> object) {
    place = same(place);
    CSDObject* root = rootOf(place);
    const bool isOfContent = place == Place::ContentAutomatic || place == Place::ContentFonts;
    if (!root && !isOfContent && makeStylesRoot) root = styles_ = makeStylesRoot();
    if (!root || !object) return nullptr;
    CSDObject* own = list(place);
    if (!own) {
        std::unique_ptr<CSDObject> made(ObjectAccess::makeLoose(*FindClass(ListId(place))));
        own = &InsertByRank(*root, std::move(made), &RankInRoot);
    }
    return &index(place).append(*own, std::move(object));
}

CSDObject* StyleTrees::addAutomatic(Place place, std::unique_ptr<CSDObject> object) {
    const std::optional<NamedKind> kind = object ? KindOfNamed(*object) : std::nullopt;
    if (!kind) return nullptr;
    if (CSDObject* const alike = findAlike(place, *kind, ContentKey(*object))) return alike;
    const std::string start(NameStart(*kind));
    std::string name;
    unsigned& number = lastNumbers_[start];
    do
        name = start + std::to_string(++number);
    while (find(*kind, name));
    object->Unset(kShownName);
    SetAttributeText(*object, "style:name", name);
    return add(place, std::move(object));
}

StyleTrees::Part StyleTrees::partOf(const CSDObject& object) const noexcept {
    const CSDObject* top = &object;
    while (const CSDObject* const above = top->Parent())
        top = above;
    return top == styles_ && top != content_ ? Part::Styles : Part::Content;
}

StyleTrees::Place StyleTrees::commonPlaceOf(NamedKind kind, Part part) noexcept {
    if (kind == NamedKind::MasterPage) return Place::Master;
    if (kind == NamedKind::Font) return part == Part::Content ? Place::ContentFonts : Place::StylesFonts;
    return Place::Common;
}

StyleTrees TreesOf(Document& document) {
    CSDObject* const flat = document.Flat();
    StyleTrees trees(flat ? flat : document.Content(), flat ? flat : document.Styles());
    trees.makeStylesRoot = [&document] { return MakeStylesRoot(document); };
    return trees;
}

StyleTrees TreesOf(CODFDoc& document) {
    return {document.GetContentClass(), document.GetStylesClass()};
}

bool IsAutomaticStyle(const CSDObject& style) noexcept {
    const CSDObject* const list = style.Parent();
    return list && list->GetID() == COfficeAutomaticStyles::kId;
}

} // namespace ODF
