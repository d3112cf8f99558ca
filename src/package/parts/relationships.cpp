#include <odfmodel/package/relationships.h>

#include <odfmodel/package/part.h>

#include <memory>

namespace SDPackage {

namespace {

bool HasContentType(const IPart* part, const unsigned short* contentType) {
    return ToView(part->GetContentType()) == ToView(contentType);
}

} // namespace

IRelationships::~IRelationships() = default;

IPart* IRelationships::GetPartById(const unsigned short* id) {
    const auto entry = entries_.find(id);
    return entry == entries_.end() ? nullptr : entry->second;
}

IPart* IRelationships::GetPartByContentType(const unsigned short* contentType) {
    for (const auto& [id, part] : entries_)
        if (HasContentType(part, contentType)) return part;
    return nullptr;
}

const unsigned short* IRelationships::GetIdByPart(IPart* part) {
    for (const auto& [id, held] : entries_)
        if (held == part) return id;
    return nullptr;
}

IPart* IRelationships::Reserved(void* /*a*/, void* /*b*/) {
    return nullptr;
}

IPart* IRelationships::AddPart(IPart* part, const unsigned short* id) {
    if (!part) return nullptr;
    CTulStringW key(id);
    if (!id) {
        std::size_t number = entries_.size();
        do
            key.Format(u"rId%d", number++);
        while (entries_.contains(key));
    }
    return entries_.try_emplace(std::move(key), part).second ? part : nullptr;
}

IPart* IRelationships::AddPart(IPart* part) {
    return AddPart(part, nullptr);
}

void IRelationships::RemovePart(IPart* part) {
    std::erase_if(entries_, [part](const auto& entry) { return entry.second == part; });
}

void IRelationships::DeleteById(const unsigned short* id) {
    const auto entry = entries_.find(id);
    if (entry == entries_.end()) return;
    const std::unique_ptr<IPart> part(entry->second);
    // The part may stand here under other ids too.
    RemovePart(part.get());
}

void IRelationships::ReservedOperation(void* /*a*/) {}

void IRelationships::Clear() {
    entries_.clear();
}

int IRelationships::Count(const unsigned short* contentType) {
    if (!contentType) return static_cast<int>(entries_.size());
    int count = 0;
    for (const auto& [id, part] : entries_)
        if (HasContentType(part, contentType)) ++count;
    return count;
}

IPartList* IRelationships::GetPartList(const unsigned short* contentType) {
    if (entries_.empty()) return nullptr;
    auto list = std::make_unique<IPartList>();
    for (const auto& [id, part] : entries_)
        if (!contentType || HasContentType(part, contentType)) list->entries_.emplace_back(id, part);
    return list.release();
}

void IRelationships::ReleasePartList(IPartList* list) {
    delete list;
}

IPartList::~IPartList() = default;

IPart* IPartList::GetPartById(const unsigned short* id) const {
    for (const auto& [held, part] : entries_)
        if (held == id) return part;
    return nullptr;
}

IPart* IPartList::GetPartByContentType(const unsigned short* contentType) const {
    for (const auto& [id, part] : entries_)
        if (HasContentType(part, contentType)) return part;
    return nullptr;
}

IPart* IPartList::GetPartByPackagePath(const unsigned short* path) const {
    for (const auto& [id, part] : entries_)
        if (ToView(part->GetPackagePath()) == ToView(path)) return part;
    return nullptr;
}

IPart* IPartList::Add(IPart* part, const unsigned short* id) {
    if (!part) return nullptr;
    for (const auto& [held, present] : entries_)
        if (present == part && held == id) return nullptr;
    entries_.emplace_back(id, part);
    return part;
}

bool IPartList::Contains(const unsigned short* id) const {
    return GetPartById(id) != nullptr;
}

const unsigned short* IPartList::FindSame(IPart* part) const {
    if (!part) return nullptr;
    for (const auto& [id, held] : entries_)
        if (ToView(held->GetPackagePath()) == ToView(part->GetPackagePath())) return id;
    return nullptr;
}

int IPartList::Count() const {
    return static_cast<int>(entries_.size());
}

IPart* IPartList::GetPart(int i) const {
    const Entry* const entry = GetEntry(i);
    return entry ? entry->second : nullptr;
}

const IPartList::Entry* IPartList::GetEntry(int i) const {
    if (i < 0 || i >= Count()) return nullptr;
    return &entries_[static_cast<std::size_t>(i)];
}

} // namespace SDPackage
