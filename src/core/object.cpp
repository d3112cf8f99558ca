#include <odfmodel/core/object.h>

#include "core/kept.h"
#include "core/object_access.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/part.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace {

using ODF::Extras;

Extras* AsExtras(std::uint64_t slot) noexcept {
    return reinterpret_cast<Extras*>(static_cast<std::uintptr_t>(slot));
}

/// Words of presence bits and the bit of the extras, for an object with or without a table.
struct Shape {
    unsigned words = 1;
    unsigned extrasRow = 0;
    explicit Shape(const ODF::ClassDescriptor* table) noexcept {
        if (table) {
            words = table->words();
            extrasRow = table->attributeCount;
        }
    }
};

Extras* FindExtras(const std::uint64_t* block, const ODF::ClassDescriptor* table) noexcept {
    const Shape shape(table);
    const std::uint64_t* const slot = ODF::AttributeSlots::find(block, shape.words, shape.extrasRow);
    return slot ? AsExtras(*slot) : nullptr;
}

Extras& RequireExtras(std::uint64_t*& block, const ODF::ClassDescriptor* table) {
    if (Extras* const extras = FindExtras(block, table)) return *extras;
    const Shape shape(table);
    auto extras = std::make_unique<Extras>();
    std::uint64_t* const slot = ODF::AttributeSlots::require(block, shape.words, shape.extrasRow);
    *slot = reinterpret_cast<std::uintptr_t>(extras.get());
    return *extras.release();
}

} // namespace

CSDObject::~CSDObject() {
    // An element class has released its values by now; what is left can only be the extras of a class without
    // table.
    if (slots_) {
        releaseExtras(nullptr);
        ODF::AttributeSlots::release(slots_);
    }
}

void* CSDObject::operator new(std::size_t byteCount) {
    return ::operator new(byteCount);
}
void* CSDObject::operator new(std::size_t byteCount, std::align_val_t alignment) {
    return ::operator new(byteCount, alignment);
}
void CSDObject::operator delete(void* place) noexcept {
    if (ODF::Arena::owns(place))
        ODF::Arena::release(place);
    else
        ::operator delete(place);
}
void CSDObject::operator delete(void* place, std::align_val_t alignment) noexcept {
    ::operator delete(place, alignment);
}

Extras* ODF::ObjectAccess::extras(const CSDObject& object) noexcept {
    return object.slots_ ? FindExtras(object.slots_, object.Descriptor()) : nullptr;
}

Extras& ODF::ObjectAccess::requireExtras(CSDObject& object) {
    return RequireExtras(object.slots_, object.Descriptor());
}

void CSDObject::forgetWords(const ODF::ClassDescriptor& table, unsigned row) noexcept {
    if (Extras* const extras = FindExtras(slots_, &table)) extras->forget(row);
}

void CSDObject::releaseExtras(const ODF::ClassDescriptor* table) noexcept {
    delete FindExtras(slots_, table);
}

void CSDObject::InitMap(bool) {}
void CSDObject::SetObject(CSDObject*, int) {}
CSDObject* CSDObject::CreateObject(const unsigned short*, int) {
    return nullptr;
}
std::vector<CSDObject*>* CSDObject::GetObjectList() const {
    return nullptr;
}
CSDObject* CSDObject::GetObjectByID(unsigned) const {
    return nullptr;
}
unsigned CSDObject::GetObjectListByID(unsigned, std::vector<CSDObject*>&) const {
    return 0;
}
bool CSDObject::HasChildList() const {
    return false;
}
const unsigned short* CSDObject::FindObjectName(CSDObject*) {
    return nullptr;
}
void CSDObject::SetParentObj(CSDObject*) {}
const unsigned short* CSDObject::GetElemName() const {
    return nullptr;
}
bool CSDObject::WriteElement(const unsigned short*, CSDSerializer*, CSDAttribute*) {
    return false;
}
bool CSDObject::ReadAttribute(CSDAttribute*) {
    InitMap(true);
    return true;
}
bool CSDObject::ReadNodeValue(const unsigned short* const, unsigned) {
    return false;
}
bool CSDObject::IsMaintainObject() {
    return false;
}
CSDObject* CSDObject::CloneEmpty() const {
    return nullptr;
}

std::vector<CTulStringW>* CSDObject::GetMaintainElementList() {
    Extras& extras = RequireExtras(slots_, Descriptor());
    if (!extras.maintainElementList)
        extras.maintainElementList = std::make_unique<std::vector<CTulStringW>>();
    return extras.maintainElementList.get();
}

void CSDObject::SetMaintainElementList(std::vector<CTulStringW>* list) {
    Extras& extras = RequireExtras(slots_, Descriptor());
    if (extras.maintainElementList.get() != list) extras.maintainElementList.reset(list);
}

unsigned CSDObject::GetErrorCode() const noexcept {
    const Extras* const extras = FindExtras(slots_, Descriptor());
    return extras ? extras->errorCode : 0;
}

void CSDObject::SetErrorCode(unsigned code) {
    if (code != GetErrorCode()) RequireExtras(slots_, Descriptor()).errorCode = code;
}

void CSDObject::SetReNewRootPart(ISDPart* part) {
    // A list of what is still to visit instead of a recursion: trees may be as deep as their maker likes.
    std::vector<CSDObject*> open{this};
    while (!open.empty()) {
        CSDObject* const object = open.back();
        open.pop_back();
        object->rootPart_ = part;
        if (const std::vector<CSDObject*>* const children = object->GetObjectList())
            for (CSDObject* const child : *children)
                if (child) open.push_back(child);
    }
}

void CSDObject::Delete(CSDObject* object) {
    delete object;
}

const ODF::ClassDescriptor* CSDObject::Descriptor() const noexcept {
    return nullptr;
}

int CSDObject::_FindEnumValue(unsigned id, const unsigned short* enumName, const CTulStringW& key) {
    const ODF::EnumerationTable* const table = ODF::FindEnumeration(id, ToView(enumName));
    const int value = table ? table->find(key.view()) : 0;
    return value > 0 && value < table->listed ? value : 0;
}

const unsigned short* CSDObject::_FindEnumKey(unsigned id, const unsigned short* enumName, int value) {
    const ODF::EnumerationTable* const table = ODF::FindEnumeration(id, ToView(enumName));
    return table && value < table->listed ? ToUnits(table->key(value)) : nullptr;
}

namespace {

/// A tree of which only the objects' own lists hold the way back up: deleting it takes no memory. The
/// children go before their parent here, the last one first.
void DeleteInPlace(std::vector<CSDObject*>& objects,
                   std::vector<CSDObject*>& (*listOf)(CSDObject*)) noexcept {
    std::vector<CSDObject*> current = std::move(objects);
    CSDObject* holder = nullptr; // has the list above `current` in its own, with itself in the last place
    for (;;) {
        if (!current.empty()) {
            CSDObject* const object = current.back();
            if (object && ODF::ObjectAccess::isExtended(*object) && !listOf(object).empty()) {
                current.back() = holder;
                current.swap(listOf(object));
                holder = object;
            } else {
                current.pop_back();
                delete object;
            }
        } else if (holder) {
            CSDObject* const object = holder;
            current.swap(listOf(object));
            holder = current.back();
            current.pop_back();
            delete object;
        } else {
            return;
        }
    }
}

} // namespace

CSDExtObject::~CSDExtObject() {
    // The tree goes in list order, each object before what is below it, by a stack of lists instead of a
    // recursion: an object that is deleted here has handed its children over, so its own destructor finds
    // none.
    struct Level {
        std::vector<CSDObject*> objects;
        std::size_t next = 0;
    };
    if (children_.empty()) return;
    std::vector<Level> levels;
    const auto descend = [&levels](std::vector<CSDObject*>& objects) noexcept {
        try {
            levels.emplace_back().objects.swap(objects);
        } catch (const std::bad_alloc&) {
            DeleteInPlace(objects, [](CSDObject* object) -> std::vector<CSDObject*>& {
                return static_cast<CSDExtObject*>(object)->children_;
            });
        }
    };
    descend(children_);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.objects.size()) {
            levels.pop_back();
            continue;
        }
        CSDObject* const object = level.objects[level.next++];
        std::vector<CSDObject*> below;
        if (object && ODF::ObjectAccess::isExtended(*object))
            below.swap(static_cast<CSDExtObject*>(object)->children_);
        delete object;
        if (!below.empty()) descend(below);
    }
}

void CSDExtObject::InitMap(bool) {
    if (const ODF::ClassDescriptor* const table = Descriptor(); table && table->children)
        setFlag(kMapReady, true);
}

void CSDExtObject::SetObject(CSDObject* child, int addToList) {
    if (addToList != 0) children_.push_back(child);
    if (!child) return;
    if (addToList != 0) ODF::ObjectAccess::setParent(*child, *this, children_.size() - 1);
    child->SetRootpart(GetRootpart());
    if (child->GetID() == ODF::kParentAwareId) child->SetParentObj(this);
}

CSDObject* CSDExtObject::Adopt(CSDObject* child) {
    if (children_.size() == children_.capacity()) {
        // Here the place for it may be refused, and nobody else has the object.
        std::unique_ptr<CSDObject> owned(child);
        children_.reserve(std::max<std::size_t>(children_.size() * 2, 1));
        owned.release(); // NOLINT(bugprone-unused-return-value)
    }
    SetObject(child, 1);
    return child;
}

CSDObject* CSDExtObject::CreateObject(const unsigned short* name, int addToList) {
    const ODF::ClassDescriptor* const table = Descriptor();
    const ODF::ChildMap* const map = table ? table->listedChildren() : nullptr;
    if (!map || !hasFlag(kMapReady) || !name) return nullptr;
    CSDObject* object = nullptr;
    if (const ODF::ChildRow* const row = map->find(ToView(name)); row && map->isListed(*row))
        object = row->table->make(row->id, nullptr);
    if (!object && GetRootpart()) {
        int dummy = 0;
        object = GetRootpart()->CreateApplicationObj(name, dummy);
    }
    if (object && addToList != 0) return Adopt(object);
    if (object) SetObject(object, addToList);
    return object;
}

std::vector<CSDObject*>* CSDExtObject::GetObjectList() const {
    return children_.capacity() == 0 ? nullptr : &children_;
}

CSDObject* CSDExtObject::GetObjectByID(unsigned id) const {
    const auto at = std::find_if(children_.begin(), children_.end(),
                                 [id](const CSDObject* child) { return child && child->GetID() == id; });
    return at == children_.end() ? nullptr : *at;
}

unsigned CSDExtObject::GetObjectListByID(unsigned id, std::vector<CSDObject*>& out) const {
    out.clear();
    std::copy_if(children_.begin(), children_.end(), std::back_inserter(out),
                 [id](const CSDObject* child) { return child && child->GetID() == id; });
    return static_cast<unsigned>(out.size());
}

bool CSDExtObject::HasChildList() const {
    return !children_.empty();
}

const unsigned short* CSDExtObject::FindObjectName(CSDObject* child) {
    InitMap(false);
    if (!child) return nullptr;
    if (const ODF::ClassDescriptor* const table = Descriptor(); table && table->children)
        if (const ODF::ChildRow* const row = table->children->find(child->GetID())) return ToUnits(row->name);
    return child->GetElemName();
}

void CSDExtObject::JoinRuns(CTulStringW& value) const {
    std::u16string_view rest = value.view();
    bool isSame = true;
    for (const CSDObject* const child : children_)
        if (child && ODF::ObjectAccess::isTextRun(*child)) {
            const std::u16string_view run = ODF::ObjectAccess::text(*child).view();
            isSame = isSame && rest.starts_with(run);
            if (isSame) rest.remove_prefix(run.size());
        }
    if (isSame && rest.empty()) return;
    std::u16string joined;
    for (const CSDObject* const child : children_)
        if (child && ODF::ObjectAccess::isTextRun(*child)) joined += ODF::ObjectAccess::text(*child).view();
    value = CTulStringW(joined);
}

void CSDExtObject::DropRuns() noexcept {
    setFlag(kKeptValue, false);
    std::erase_if(children_, [](CSDObject* child) {
        const bool isRun = child && ODF::ObjectAccess::isTextRun(*child);
        if (isRun) delete child;
        return isRun;
    });
}

CSDNamedObject::~CSDNamedObject() = default;
const unsigned short* CSDNamedObject::GetElemName() const {
    return elemName_;
}
void CSDNamedObject::SetElemName(const unsigned short* name) {
    elemName_ = CTulStringW(name);
}

CSDCustomObject::~CSDCustomObject() = default;
CSDObject* CSDCustomObject::CreateObject(const unsigned short*, int) {
    return nullptr;
}
bool CSDCustomObject::ReadAttribute(CSDAttribute*) {
    return false;
}
bool CSDCustomObject::WriteElement(const unsigned short*, CSDSerializer*, CSDAttribute*) {
    return false;
}

ISDPart::~ISDPart() = default;
ISDSeqProcElem::~ISDSeqProcElem() = default;
