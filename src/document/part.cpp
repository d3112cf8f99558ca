#include <odfmodel/document/part.h>

#include <algorithm>

namespace ODF {

CODFPart::CODFPart() = default;
CODFPart::~CODFPart() = default;

void CODFPart::Parse(const char* const, unsigned) {}
void CODFPart::Parse(const unsigned short*) {}
void CODFPart::Serialize(const unsigned short*) {}
void CODFPart::Release(int) {}

CSDNamedObject* CODFPart::GetRootClass() {
    return rootClass_;
}
const unsigned short* CODFPart::GetPackageRoot() const {
    return packageRoot_;
}
void CODFPart::SetPackageRoot(const unsigned short* root) {
    packageRoot_ = root;
}

CSDNamedObject* CODFPart::GetObjClassByID(const unsigned short*) const {
    return nullptr;
}
CSDNamedObject* CODFPart::GetObjClassByContentType(const unsigned short*) const {
    return nullptr;
}
CSDNamedObject* CODFPart::GetObjClassByRelationType(const unsigned short*) const {
    return nullptr;
}
int CODFPart::GetCountByContentType(const unsigned short*) const {
    return -1;
}
int CODFPart::GetPatrsByContentType(const unsigned short*, std::vector<ISDPart*>*) const {
    return 0;
}
ISDPart* CODFPart::GetPartByContentType(const unsigned short*) const {
    return nullptr;
}
int CODFPart::GetCountByRelationType(const unsigned short*) const {
    return 0;
}
int CODFPart::GetPatrsByRelationType(const unsigned short*, std::vector<ISDPart*>*) const {
    return 0;
}
ISDPart* CODFPart::GetPartByRelationType(const unsigned short*) const {
    return nullptr;
}
ISDPart* CODFPart::GetPartByID(const unsigned short*) const {
    return nullptr;
}
const unsigned short* CODFPart::GetIDByPart(ISDPart*) const {
    return nullptr;
}
CSDNamedObject* CODFPart::GetInternalClassByID(const unsigned short*) const {
    return nullptr;
}

void CODFPart::AddChildPart(const unsigned short*, ISDPart* part) {
    childParts_.push_back(part);
}
void CODFPart::AddChildPart(ISDPart* part) {
    AddChildPart(nullptr, part);
}
std::map<CTulStringW, ISDPart*>* CODFPart::GetChildParts() const {
    return nullptr;
}
int CODFPart::GetChildParts(std::vector<ISDPart*>* out) const {
    if (childParts_.empty() || !out) return 0;
    *out = childParts_;
    return static_cast<int>(out->size());
}
int CODFPart::IsExistChildPart() const {
    return childParts_.empty() ? 0 : 1;
}

const unsigned short* CODFPart::GetContentType() const {
    return contentType_;
}
const unsigned short* CODFPart::GetRelationtype() const {
    return relationType_;
}
const unsigned short* CODFPart::GetPackagePath() const {
    return packagePath_;
}
const unsigned short* CODFPart::GetLocalPath() const {
    return localPath_;
}
const unsigned short* CODFPart::GetPartname() const {
    return partname_;
}
TargetMode CODFPart::GetTargetMode() const {
    return targetMode_;
}
const unsigned short* CODFPart::GetGUID() const {
    return nullptr;
}
void CODFPart::SetContentType(const unsigned short* contentType) {
    contentType_ = contentType;
}
void CODFPart::SetRelationtype(const unsigned short* relationType) {
    relationType_ = relationType;
}
void CODFPart::SetPackagePath(const unsigned short* path) {
    packagePath_ = path;
}
void CODFPart::SetLocalPath(const unsigned short* path) {
    localPath_ = path;
}
void CODFPart::SetPartname(const unsigned short* name) {
    partname_ = name;
}
void CODFPart::SetTargetMode(TargetMode mode) {
    targetMode_ = mode;
}
void CODFPart::SetGUID(const unsigned short*) {}
_SD_ExtlinkType CODFPart::_CheckExternalLinkType() const {
    return SD_ExtlinkTypeNone;
}
void CODFPart::SetModifyPart(int modified) {
    modifyPart_ = modified;
}
int CODFPart::GetModifyPart() {
    return modifyPart_;
}
CSDObject* CODFPart::CreateApplicationObj(const unsigned short*, int&) {
    return nullptr;
}
int CODFPart::GetApplyNewObject() {
    return 0;
}
void CODFPart::SetApplyNewObject(int) {}
void CODFPart::EnableCQRMode(int) {}
int CODFPart::IsEnabledCQRMode() {
    return 0;
}
void CODFPart::AddSeqProcElems(ISDSeqProcElem* element) {
    if (!element) return;
    if (!seqProcElems_) seqProcElems_ = std::make_unique<SeqProcElems>();
    seqProcElems_->insert(element);
}
const std::set<ISDSeqProcElem*, _foCompSeqProcElem>* CODFPart::GetSeqProcElems() const {
    return seqProcElems_.get();
}

void CODFPart::SetRootClass(CSDNamedObject* root) {
    rootClass_ = root;
    if (root) root->SetRootpart(this);
}
const unsigned short* CODFPart::GetRelationshipID() const {
    return relationshipID_;
}
void CODFPart::SetRelationshipID(const unsigned short* id) {
    relationshipID_ = id;
}
CTulStringW CODFPart::GetPackagePathOnly() const {
    constexpr std::size_t kMax = 256;
    const std::size_t separator = packagePath_.view().find_last_of(u"/\\");
    return separator == std::u16string_view::npos ? CTulStringW()
                                                  : packagePath_.Left(std::min(separator + 1, kMax));
}
void CODFPart::SetPackagePartInfo(SDPackage::IPart* part) {
    if (!part) return;
    SetTargetMode(part->GetTargetMode());
    SetContentType(part->GetContentType());
    SetRelationtype(part->GetRelationType());
    SetPackagePath(part->GetPackagePath());
    SetLocalPath(part->GetLocalPath());
    SetPartname(part->GetPartName());
}
void CODFPart::AddMediaType(CTulStringW first, CTulStringW second) {
    if (!mediaTypes_) mediaTypes_ = std::make_unique<std::map<CTulStringW, CTulStringW>>();
    mediaTypes_->emplace(std::move(first), std::move(second));
}

CBinayrPart::CBinayrPart() {
    SetPartType(PartTypeBinary);
}
CBinayrPart::~CBinayrPart() = default;
CODFPart* CBinayrPart::CreateClass(CSDNamedObject*) {
    return new CBinayrPart;
}

} // namespace ODF
