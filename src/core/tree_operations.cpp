// Moving, copying and removing parts of a tree, and attributes by their names.
#include "core/object_access.h"

#include <algorithm>
#include <utility>
#include <vector>

using ODF::ObjectAccess;
using ODF::TreeChange;

namespace ODF {
namespace {

/// Whether `object` is below `root`.
bool IsBelow(const CSDObject& object, const CSDObject& root) {
    for (const CSDObject& at : root.Descendants())
        if (&at == &object) return true;
    return false;
}

/// The kept attribute of that name, among those that the class doesn't list.
auto FindKept(Extras& extras, std::string_view name) {
    const std::size_t colon = name.find(':');
    const bool hasPrefix = colon != std::string_view::npos;
    const auto isSame = [](std::u16string_view kept, std::string_view asked) {
        return ToUtf8(kept) == asked;
    };
    return std::find_if(extras.attributes.begin(), extras.attributes.end(), [&](const KeptAttribute& kept) {
        return kept.row == KeptAttribute::kNotListed &&
               isSame(kept.name.prefix(), hasPrefix ? name.substr(0, colon) : std::string_view()) &&
               isSame(kept.name.local(), hasPrefix ? name.substr(colon + 1) : name);
    });
}

std::vector<CSDObject*> CloneMarkup(const std::vector<CSDObject*>& objects) {
    std::vector<CSDObject*> result;
    result.reserve(objects.size());
    try {
        for (const CSDObject* const object : objects)
            if (object) result.push_back(object->Clone().release());
    } catch (...) {
        for (CSDObject* const object : result)
            CSDObject::Delete(object);
        throw;
    }
    return result;
}

/// Without the children that hang in the markup: they are copied as children.
std::unique_ptr<Extras> CloneExtras(const Extras& extras) {
    auto result = std::make_unique<Extras>();
    if (extras.maintainElementList)
        result->maintainElementList = std::make_unique<std::vector<CTulStringW>>(*extras.maintainElementList);
    result->errorCode = extras.errorCode;
    result->attributes = extras.attributes;
    if (extras.markup) {
        KeptMarkup& markup = result->requireMarkup();
        markup.declarations = extras.markup->declarations;
        markup.before = CloneMarkup(extras.markup->before);
        markup.after = CloneMarkup(extras.markup->after);
        markup.hasOwnName = extras.markup->hasOwnName;
    }
    return result;
}

} // namespace

std::unique_ptr<CSDObject> ObjectAccess::cloneAlone(const CSDObject& object) {
    const ClassDescriptor* const table = object.Descriptor();
    std::unique_ptr<CSDObject> made(table ? table->make(object.id_, nullptr) : object.CloneEmpty());
    if (!made) return made;
    made->flags_ = object.flags_ & ~CSDObject::kLoose;
    if (isForeign(object)) setName(*made, name(object));
    if (holdsText(object)) text(*made) = text(object);
    if (auto* const date = object.hasFlag(CSDObject::kElement)
                               ? nullptr
                               : dynamic_cast<CSDDateTimeValueObject*>(made.get())) {
        const auto& source = static_cast<const CSDDateTimeValueObject&>(object);
        date->value_ = source.value_;
        date->rawText_ = source.rawText_;
    }
    if (const unsigned short* const elementName = object.GetElemName())
        if (auto* const named = dynamic_cast<CSDNamedObject*>(made.get())) named->SetElemName(elementName);
    if (!object.slots_) return made;

    const unsigned words = table ? table->words() : 1;
    const unsigned extrasRow = table ? table->attributeCount : 0;
    std::vector<std::uint16_t> rows;
    AttributeSlots::forEach(object.slots_, words, [&](unsigned row, const std::uint64_t*) {
        rows.push_back(static_cast<std::uint16_t>(row));
    });
    const Extras* const extras = ObjectAccess::extras(object);
    std::unique_ptr<Extras> copy = extras ? CloneExtras(*extras) : nullptr;
    if (made->slots_) return nullptr; // a class of the caller's own that has set what it shouldn't
    made->slots_ = AttributeSlots::make(words, rows.data(), static_cast<unsigned>(rows.size()), nullptr);
    std::uint64_t* to = made->slots_ + words;
    AttributeSlots::forEach(object.slots_, words, [&](unsigned row, const std::uint64_t* from) {
        if (row == extrasRow)
            *to = reinterpret_cast<std::uintptr_t>(copy.release());
        else if (table->attributes[row].kind == ValueKind::String)
            new (to) CTulStringW(AttributeSlots::text(from));
        else
            *to = *from;
        ++to;
    });
    return made;
}

} // namespace ODF

std::size_t ObjectAccess::placeOf(const std::vector<CSDObject*>& list, const CSDObject& child) noexcept {
    const std::size_t kept = child.flags_ >> CSDObject::kPlaceShift;
    constexpr std::size_t period = std::size_t{1} << (32 - CSDObject::kPlaceShift); // more has no room there
    for (std::size_t at = kept; at < list.size(); at += period)
        if (list[at] == &child) return at;
    std::size_t below = std::min(kept, list.size());
    for (std::size_t above = below; above < list.size() || below > 0; ++above) {
        if (above < list.size() && list[above] == &child) return above;
        if (below > 0 && list[--below] == &child) return below;
    }
    return list.size();
}

CSDObject* CSDObject::sibling(std::ptrdiff_t step) const noexcept {
    const std::vector<CSDObject*>* const list = parent_ ? parent_->GetObjectList() : nullptr;
    if (!list) return nullptr;
    std::size_t at = ObjectAccess::placeOf(*list, *this);
    if (at == list->size()) return nullptr;
    do // Lists that callers have changed may have gaps.
        at += static_cast<std::size_t>(step);
    while (at < list->size() && !(*list)[at]);
    return at < list->size() ? (*list)[at] : nullptr;
}

TreeChange CSDObject::attach(CSDObject* child, std::size_t place, bool isElsewhere) {
    if (!child) return TreeChange::NoObject;
    if (child == this) return TreeChange::OwnAncestor;
    std::vector<CSDObject*>* const list = ObjectAccess::list(*this);
    if (!list) return TreeChange::NoList;
    if (!isElsewhere && !child->hasFlag(kLoose) && ObjectAccess::placeOf(*list, *child) != list->size())
        return TreeChange::Listed;
    if (child->HasChildList() && ODF::IsBelow(*this, *child)) return TreeChange::OwnAncestor;
    // All that needs memory comes first.
    if (list->size() == list->capacity()) list->reserve(std::max<std::size_t>(list->size() * 2, 1));
    if (child->HasChildList()) child->SetReNewRootPart(GetRootpart());
    if (place < list->size()) {
        list->insert(list->begin() + static_cast<std::ptrdiff_t>(place), child);
        SetObject(child, 0);
    } else {
        place = list->size();
        SetObject(child, 1);
        if (list->empty() || list->back() != child) return TreeChange::NoList;
    }
    ObjectAccess::setParent(*child, *this, place);
    return TreeChange::Done;
}

TreeChange CSDObject::attachBefore(CSDObject* child, const CSDObject& before) {
    const std::vector<CSDObject*>* const list = ObjectAccess::list(*this);
    const std::size_t place = list ? ObjectAccess::placeOf(*list, before) : 0;
    return list && place == list->size() ? TreeChange::NotAChild : attach(child, place);
}

std::unique_ptr<CSDObject> CSDObject::Detach(CSDObject& child) {
    std::vector<CSDObject*>* const list = ObjectAccess::list(*this);
    const std::size_t place = list ? ObjectAccess::placeOf(*list, child) : 0;
    if (!list || place == list->size()) return nullptr;
    child.SetReNewRootPart(nullptr);
    list->erase(list->begin() + static_cast<std::ptrdiff_t>(place));
    ObjectAccess::setLoose(child);
    if (child.GetID() == ODF::kParentAwareId) child.SetParentObj(nullptr);
    return std::unique_ptr<CSDObject>(&child);
}

bool CSDObject::Remove(CSDObject& child) {
    std::vector<CSDObject*>* const list = ObjectAccess::list(*this);
    const std::size_t place = list ? ObjectAccess::placeOf(*list, child) : 0;
    if (!list || place == list->size()) return false;
    list->erase(list->begin() + static_cast<std::ptrdiff_t>(place));
    delete &child;
    return true;
}

TreeChange CSDObject::MoveTo(CSDObject& to) {
    if (!parent_) return TreeChange::NotAChild;
    std::vector<CSDObject*>* const from = ObjectAccess::list(*parent_);
    const std::size_t place = from ? ObjectAccess::placeOf(*from, *this) : 0;
    if (!from || place == from->size()) return TreeChange::NotAChild;
    if (parent_ == &to) { // It is its last child from now on.
        std::rotate(from->begin() + static_cast<std::ptrdiff_t>(place),
                    from->begin() + static_cast<std::ptrdiff_t>(place) + 1, from->end());
        ObjectAccess::setParent(*this, to, from->size() - 1);
        return TreeChange::Done;
    }
    const TreeChange change = to.attach(this, kAtEnd, true);
    if (change == TreeChange::Done) from->erase(from->begin() + static_cast<std::ptrdiff_t>(place));
    return change;
}

std::unique_ptr<CSDObject> CSDObject::Clone() const {
    return ObjectAccess::clone(*this, false);
}

std::unique_ptr<CSDObject> ObjectAccess::clone(const CSDObject& object, bool leavesOut) {
    std::unique_ptr<CSDObject> root = cloneAlone(object);
    if (!root) return root;
    // A list of what is still to do instead of a recursion.
    std::vector<std::pair<const CSDObject*, CSDObject*>> open{{&object, root.get()}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        // Children that a class of the caller's own keeps elsewhere are that class's to copy.
        if (!isExtended(*from) && !from->Descriptor()) continue;
        if (isExtended(*from)) list(*to)->reserve(children(*from).size());
        for (const CSDObject& child : from->Children()) {
            std::unique_ptr<CSDObject> copy = cloneAlone(child);
            if (!copy && leavesOut) continue;
            if (!copy) return nullptr;
            CSDObject* const made = copy.get();
            setParent(*made, *to, childCount(*to));
            append(*to, {&made, 1});
            copy.release(); // NOLINT(bugprone-unused-return-value): the list has it
            if (made->GetID() == ODF::kParentAwareId) made->SetParentObj(to);
            if (child.HasChildList()) open.emplace_back(&child, made);
        }
    }
    setLoose(*root);
    return root;
}

bool CSDObject::HasAttribute(std::string_view name) const {
    const ODF::ClassDescriptor* const table = Descriptor();
    ODF::Extras* const extras = ODF::ObjectAccess::extras(*this);
    if (const int row = table ? table->findAttribute(name) : -1; row >= 0) {
        const auto index = static_cast<unsigned>(row);
        return HasAttribute(*table, index) || (extras && extras->find(index));
    }
    return extras && ODF::FindKept(*extras, name) != extras->attributes.end();
}

bool CSDObject::Unset(std::string_view name) {
    const ODF::ClassDescriptor* const table = Descriptor();
    if (const int row = table ? table->findAttribute(name) : -1; row >= 0)
        return UnsetAttribute(static_cast<unsigned>(row));
    ODF::Extras* const extras = ODF::ObjectAccess::extras(*this);
    if (!extras) return false;
    const auto at = ODF::FindKept(*extras, name);
    if (at == extras->attributes.end()) return false;
    extras->attributes.erase(at);
    return true;
}
