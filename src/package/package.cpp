#include <odfmodel/package/package.h>

#include "package/package_state.h"

namespace SDPackage {

namespace {

IPart* FirstOfType(IPart& root, DocumentType type) {
    const Units contentType = MainContentType(type);
    return contentType.empty() ? nullptr : root.GetPartByContentType(ToUnits(contentType.data()));
}

} // namespace

void PackageState::startOver(int keepsCompressed) {
    if (diagnostics) diagnostics->clear();
    keepCompressed = keepsCompressed;
    isSound = isOther = false;
    registry.reset();
    kept = {};
    writeList.clear();
    folderEntries.clear();
    contentTypes.reset();
    documentType = SDDocType::DocTypeUnknown;
}

IPackage* CreatePackage() {
    return std::make_unique<IPackage>().release();
}

IPackage::IPackage() : state_(std::make_unique<PackageState>(*this)) {
    state_->userDataConverter = std::make_unique<UserDataConverter>();
    state_->userDataPart = std::make_unique<UserDataPart>();
    state_->userDataPart->Init();
}

IPackage::~IPackage() {
    state_->bind(nullptr);
}

PartMap* IPackage::GetParts() {
    return &state_->registry.parts();
}

IPart* IPackage::GetMainPart() {
    return FirstOfType(*GetRootPart(), state_->documentType);
}

IPart* IPackage::FindMainPart() {
    for (const DocumentType type : state_->mainDocumentTypes)
        if (IPart* const part = FirstOfType(*GetRootPart(), type)) return part;
    return nullptr;
}

IPart* IPackage::GetRootPart() {
    return &state_->registry.root();
}

IPackage::DocumentType IPackage::GetDocType() {
    return state_->documentType;
}

void IPackage::SetDocType(DocumentType type) {
    state_->documentType = type;
}

void IPackage::AddMainDocumentType(DocumentType type) {
    state_->mainDocumentTypes.push_back(type);
}

IContentTypes* IPackage::GetContentTypes() {
    if (!state_->contentTypes) {
        if (state_->documentType == SDDocType::DocTypeWorkbookBinary)
            state_->contentTypes = std::make_unique<IBinaryContentTypes>();
        else
            state_->contentTypes = std::make_unique<IContentTypes>();
    }
    return state_->contentTypes.get();
}

IRelationships* IPackage::CreateRelationships(const unsigned short* sourceName) {
    return state_->registry.createRelationships(sourceName);
}

IRelationships* IPackage::GetRelationships(const unsigned short* sourceName) {
    return state_->registry.relationships(sourceName);
}

IPart* IPackage::CreatePart() {
    return std::make_unique<IPart>().release();
}

IPart* IPackage::AddPart(IPart* part) {
    if (part) state_->registry.add(part);
    return part;
}

IPart* IPackage::FindPartByLocalPath(const unsigned short* localPath, TargetMode mode) {
    return localPath ? state_->registry.findByLocalPath(localPath, mode) : nullptr;
}

IPart* IPackage::GetPart(const unsigned short* packagePath) {
    return packagePath ? state_->registry.find(packagePath) : nullptr;
}

int IPackage::ExtractItem(int index, const unsigned short* path) {
    if (!state_->unzip) return 0;
    const int result = state_->unzip->GetItem(index, path);
    state_->yield();
    return result;
}

int IPackage::GetItem(int index, unsigned char* buffer, long* size) {
    if (!state_->unzip || !size) return 0;
    const int result = state_->unzip->GetItem(index, buffer, *size);
    state_->yield();
    return result;
}

int IPackage::GetItemSize(int index, long* size) {
    return state_->unzip && size ? state_->unzip->GetItemSize(index, *size) : 0;
}

int IPackage::GetItemSize(const unsigned short* name, long* size, int* extra) {
    int ignored = 0;
    return state_->unzip && size ? state_->unzip->GetItemSize(name, *size, extra ? *extra : ignored) : 0;
}

void IPackage::SetUnZip(CSDUnZip* unzip) {
    if (unzip != state_->unzip.get()) state_->bind(std::unique_ptr<CSDUnZip>(unzip));
}

CSDUnZip* IPackage::GetUnZip() {
    return state_->unzip.get();
}

void IPackage::SetXmlCallback(XmlCallback callback) {
    state_->xmlCallback = callback;
}

CSDZip* IPackage::GetExternalZip() {
    return state_->externalZip;
}

void IPackage::SetExternalZip(CSDZip* zip) {
    state_->externalZip = zip;
}

void* IPackage::GetScratchBuffer() {
    return state_->scratchBuffer;
}

void IPackage::SetScratchBuffer(void* buffer) {
    state_->scratchBuffer = buffer;
}

int IPackage::GetScratchSize() {
    return state_->scratchSize;
}

void IPackage::SetScratchSize(int size) {
    state_->scratchSize = size;
}

const Map& IPackage::GetFolderEntries() const {
    return state_->folderEntries;
}

FileMap* IPackage::GetWriteList() {
    return &state_->writeList;
}

const unsigned short* IPackage::GetSourcePath() const {
    return state_->sourcePath;
}

void IPackage::SetDiagnostics(ODF::Diagnostics* diagnostics) {
    state_->diagnostics = diagnostics;
    if (state_->unzip) state_->unzip->SetDiagnostics(diagnostics);
}

ODF::Diagnostics* IPackage::GetDiagnostics() const {
    return state_->diagnostics;
}

void IPackage::SetLimits(const ODF::Limits& limits) {
    state_->limits = limits;
    if (state_->unzip) state_->unzip->SetLimits(limits);
}

const ODF::Limits& IPackage::GetLimits() const {
    return state_->limits;
}

void IPackage::SetFidelity(ODF::Fidelity fidelity) {
    state_->fidelity = fidelity;
}

ODF::Fidelity IPackage::GetFidelity() const {
    return state_->fidelity;
}

void IPackage::SetHostTurn(std::function<void()> turn) {
    state_->hostTurn = std::move(turn);
}

} // namespace SDPackage
