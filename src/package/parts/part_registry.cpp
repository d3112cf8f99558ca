#include "package/parts/part_registry.h"

#include "package/paths.h"

#include <new>
#include <utility>

namespace SDPackage {

namespace {

/// Up to so many parts a walk costs less than keeping an index.
constexpr std::size_t kIndexThreshold = 128;

} // namespace

bool PartRegistry::PlaceLess::operator()(const Place& a, const Place& b) const noexcept {
    if (a.first != b.first) return a.first < b.first;
    return LessIgnoringCase(a.second.view(), b.second.view());
}

PartRegistry::PartRegistry() : root_(std::make_unique<IPart>()) {}

PartRegistry::~PartRegistry() {
    // Without any allocation: this may be the way out of a lack of memory.
    std::erase_if(parts_,
                  [this](const auto& entry) { return !entry.second || owned_.contains(entry.second); });
    const auto destroy = [](IPart* part) {
        part->registry_ = nullptr;
        delete part;
    };
    for (const auto& [part, path] : owned_)
        destroy(part);
    while (!parts_.empty()) { // what a client has entered without `add`, perhaps twice
        IPart* const part = parts_.begin()->second;
        std::erase_if(parts_, [part](const auto& entry) { return entry.second == part; });
        destroy(part);
    }
}

bool PartRegistry::add(IPart* part) {
    if (part->registry_ && part->registry_ != this) part->registry_->forget(part);
    const auto [record, isNew] = owned_.try_emplace(part, part->packagePath_);
    bool isEntered = false;
    try {
        isEntered = parts_.try_emplace(part->packagePath_, part).second;
    } catch (const std::bad_alloc&) {
        if (isNew) owned_.erase(record); // it stays the caller's
        throw;
    }
    if (isEntered && !isNew) record->second = part->packagePath_;
    part->registry_ = this;
    if (isEntered && index_) index(part);
    return isEntered;
}

IPart* PartRegistry::find(const CTulStringW& packagePath) const {
    const auto place = parts_.find(packagePath);
    return place == parts_.end() ? nullptr : place->second;
}

IPart* PartRegistry::findByLocalPath(const CTulStringW& localPath, TargetMode mode) {
    if (!index_ && parts_.size() <= kIndexThreshold) {
        for (const auto& [path, part] : parts_)
            if (part && part->targetMode_ == mode &&
                EqualIgnoringCase(part->localPath_.view(), localPath.view()))
                return part;
        return nullptr;
    }
    if (!index_) {
        PartIndex made;
        for (const auto& [path, part] : parts_)
            if (part) made.emplace(PlaceLess::Place(part->targetMode_, part->localPath_), part);
        index_ = std::make_unique<PartIndex>(std::move(made));
    }
    // Parts that share a place are rare; the walk would give the first of them in name order.
    IPart* first = nullptr;
    const auto [begin, end] = index_->equal_range({mode, localPath});
    for (auto place = begin; place != end; ++place)
        if (!first || LessIgnoringCase(owned_[place->second].view(), owned_[first].view()))
            first = place->second;
    return first;
}

IRelationships* PartRegistry::createRelationships(const CTulStringW& source) {
    const auto [place, isNew] = sets_.try_emplace(source);
    if (!isNew) return nullptr;
    place->second = std::make_unique<IRelationships>();
    return place->second.get();
}

IRelationships* PartRegistry::relationships(const CTulStringW& source) const {
    const auto place = sets_.find(source);
    return place == sets_.end() ? nullptr : place->second.get();
}

const PartOrigin* PartRegistry::origin(const IPart& part) const {
    const auto found = origins_.find(&part);
    if (found == origins_.end()) return nullptr;
    const PartOrigin& origin = found->second;
    return origin.path == part.packagePath_ && origin.mode == part.targetMode_ ? &origin : nullptr;
}

void PartRegistry::dropRelationships() {
    std::unordered_set<const IRelationships*> gone;
    for (const auto& [source, set] : sets_)
        gone.insert(set.get());
    for (const auto& [part, path] : owned_)
        if (gone.contains(part->relationships_)) part->relationships_ = nullptr;
    if (gone.contains(root_->relationships_)) root_->relationships_ = nullptr;
    sets_.clear();
}

void PartRegistry::reset() {
    dropRelationships();
    index_.reset();
    absent_.clear();
    origins_.clear();
    parts_.clear();
    // The record itself stays: clients hold it.
    root_->SetTargetMode(TargetModeInternal);
    for (CTulStringW* text : {&root_->contentType_, &root_->relationType_, &root_->packagePath_,
                              &root_->localPath_, &root_->partName_})
        text->Clear();
}

void PartRegistry::forget(IPart* part) noexcept {
    part->registry_ = nullptr;
    absent_.erase(part);
    origins_.erase(part);
    const auto record = owned_.find(part);
    if (record == owned_.end()) return;
    unindex(part);
    const auto place = parts_.find(record->second);
    if (place != parts_.end() && place->second == part) parts_.erase(place);
    owned_.erase(record);
    for (const auto& [source, set] : sets_)
        set->RemovePart(part);
}

PartRegistry::PartIndex::iterator PartRegistry::findInIndex(IPart* part) {
    const auto [begin, end] = index_->equal_range({part->targetMode_, part->localPath_});
    for (auto place = begin; place != end; ++place)
        if (place->second == part) return place;
    return index_->end();
}

bool PartRegistry::unindex(IPart* part) {
    if (!index_) return false;
    const auto place = findInIndex(part);
    if (place == index_->end()) return false;
    index_->erase(place);
    return true;
}

void PartRegistry::index(IPart* part) {
    try {
        index_->emplace(PlaceLess::Place(part->targetMode_, part->localPath_), part);
    } catch (const std::bad_alloc&) {
        index_.reset(); // it is made again when it is needed
    }
}

} // namespace SDPackage
