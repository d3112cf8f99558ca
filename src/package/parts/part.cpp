#include <odfmodel/package/part.h>

#include "package/parts/part_registry.h"

namespace SDPackage {

namespace {

/// Calls `operation` on the relationships; 0 or null without any.
template<typename Operation>
auto Forward(IRelationships* relationships, Operation operation) -> decltype(operation(*relationships)) {
    if (!relationships) return {};
    return operation(*relationships);
}

} // namespace

IPart::~IPart() {
    if (registry_) registry_->forget(this);
}

IPart* IPart::GetPartById(const unsigned short* id) {
    return Forward(relationships_, [&](IRelationships& set) { return set.GetPartById(id); });
}

IPart* IPart::GetPartByContentType(const unsigned short* contentType) {
    return Forward(relationships_,
                   [&](IRelationships& set) { return set.GetPartByContentType(contentType); });
}

const unsigned short* IPart::GetIdByPart(IPart* part) {
    return Forward(relationships_, [&](IRelationships& set) { return set.GetIdByPart(part); });
}

IPart* IPart::Reserved(void* a, void* b) {
    return Forward(relationships_, [&](IRelationships& set) { return set.Reserved(a, b); });
}

IPart* IPart::AddPart(IPart* part, const unsigned short* id) {
    return Forward(relationships_, [&](IRelationships& set) { return set.AddPart(part, id); });
}

IPart* IPart::AddPart(IPart* part) {
    return Forward(relationships_, [&](IRelationships& set) { return set.AddPart(part); });
}

void IPart::RemovePart(IPart* part) {
    if (relationships_) relationships_->RemovePart(part);
}

void IPart::DeleteById(const unsigned short* id) {
    if (relationships_) relationships_->DeleteById(id);
}

void IPart::ReservedOperation(void* a) {
    if (relationships_) relationships_->ReservedOperation(a);
}

void IPart::Clear() {
    if (relationships_) relationships_->Clear();
}

int IPart::Count(const unsigned short* contentType) {
    return Forward(relationships_, [&](IRelationships& set) { return set.Count(contentType); });
}

IPartList* IPart::GetPartList(const unsigned short* contentType) {
    return Forward(relationships_, [&](IRelationships& set) { return set.GetPartList(contentType); });
}

void IPart::ReleasePartList(IPartList* list) {
    if (relationships_) relationships_->ReleasePartList(list);
}

bool IPart::HasRelationships() const {
    return relationships_ != nullptr;
}

TargetMode IPart::GetTargetMode() const {
    return targetMode_;
}

const unsigned short* IPart::GetContentType() const {
    return contentType_;
}

int IPart::GetPartType() const {
    return partType_;
}

const unsigned short* IPart::GetRelationType() const {
    return relationType_;
}

const unsigned short* IPart::GetPackagePath() const {
    return packagePath_;
}

const unsigned short* IPart::GetLocalPath() const {
    return localPath_;
}

const unsigned short* IPart::GetPartName() const {
    return partName_;
}

IRelationships* IPart::GetRelationships() const {
    return relationships_;
}

void IPart::SetTargetMode(TargetMode mode) {
    const bool isIndexed = registry_ && registry_->unindex(this);
    targetMode_ = mode;
    if (isIndexed) registry_->index(this);
}

void IPart::SetContentType(const unsigned short* contentType) {
    contentType_ = contentType;
}

void IPart::SetPartType(int type) {
    partType_ = type;
}

void IPart::SetRelationType(const unsigned short* type) {
    if (type) relationType_ = type;
}

void IPart::SetPackagePath(const unsigned short* path) {
    packagePath_ = path;
}

void IPart::SetLocalPath(const unsigned short* path) {
    const bool isIndexed = registry_ && registry_->unindex(this);
    localPath_ = path;
    if (isIndexed) registry_->index(this);
}

void IPart::SetPartName(const unsigned short* name) {
    partName_ = name;
}

void IPart::SetUserFlag(int flag) {
    userFlag_ = flag;
}

int IPart::GetUserFlag() const {
    return userFlag_;
}

void IPart::SetRelationships(IRelationships* relationships) {
    relationships_ = relationships;
}

} // namespace SDPackage
