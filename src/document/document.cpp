#include <odfmodel/document/document.h>

#include "document/part_factory.h"
#include "platform/files.h"
#include "platform/temporary.h"

#include <odfmodel/document/part_factories.h>
#include <odfmodel/package/package.h>
#include <odfmodel/serial/unzip.h>

#include <algorithm>
#include <new>
#include <set>

namespace ODF {
namespace {

struct ReaderRelease {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};
struct SerializerRelease {
    void operator()(CSDSerializer* serializer) const { ReleaseSerialize(serializer); }
};

/// A package path as diagnostics name it: with `/`, in UTF-8.
std::string MemberName(const unsigned short* packagePath) {
    std::string name = ToUtf8(packagePath);
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

/// True when a package path has a step that leads out of the package.
bool LeavesPackage(std::string_view member) {
    if (member.empty() || member.front() == '/') return true;
    while (!member.empty()) {
        const std::size_t end = std::min(member.find('/'), member.size());
        if (member.substr(0, end) == "..") return true;
        member.remove_prefix(std::min(end + 1, member.size()));
    }
    return false;
}

} // namespace

CDocument::CDocument() = default;

CDocument::~CDocument() {
    Clear();
    WipePassword();
}

void CDocument::Clear() noexcept {
    // Parts of a new document that was never saved hang on the root part alone, others stand in the map, most
    // in both.
    std::set<CODFPart*> parts;
    std::vector<ISDPart*> open;
    if (rootPart_) open.push_back(rootPart_);
    for (const auto& [ipart, part] : partMap_)
        open.push_back(part);
    while (!open.empty()) {
        auto* const part = static_cast<CODFPart*>(open.back());
        open.pop_back();
        if (!part || !parts.insert(part).second) continue;
        std::vector<ISDPart*> children;
        part->GetChildParts(&children);
        open.insert(open.end(), children.begin(), children.end());
    }
    for (CODFPart* const part : parts) {
        CSDObject::Delete(part->GetRootClass());
        delete part;
    }
    partMap_.clear();
    unreadParts_.clear();
    mainPart_ = nullptr;
    rootPart_ = nullptr;
    package_.reset();
    RemoveOwnFolder();
}

void CDocument::RemoveOwnFolder() noexcept {
    if (!ownFolder_.IsEmpty()) platform::RemoveTree(platform::Path(ownFolder_));
    ownFolder_.Clear();
}

void CDocument::SetPassword(const unsigned short* password) {
    WipePassword();
    password_ = password;
}

void CDocument::KeepPassword(CTulStringW password) {
    WipePassword();
    passwordCopy_ = password.view();
    password_ = ToUnits(passwordCopy_.c_str());
}

void CDocument::WipePassword() noexcept {
    // Through a volatile pointer, so that the stores are not optimised away.
    volatile char16_t* const units = passwordCopy_.data();
    for (std::size_t i = 0; i < passwordCopy_.size(); ++i)
        units[i] = 0;
    passwordCopy_.clear();
    password_ = nullptr;
}

void CDocument::MakePackage() {
    package_ = std::make_unique<SDPackage::IPackage>();
    package_->SetDiagnostics(&diagnostics_);
    package_->SetLimits(limits_);
}

void CDocument::Enter(SDPackage::IPart* ipart, CODFPart* part) {
    partMap_.emplace_back(ipart, part);
}

int CDocument::Open(const unsigned short* path) {
    Clear();
    diagnostics_.clear();
    docType_ = sd::SDDocType::DocTypeUnknown;
    if (!path || !platform::IsReadable(platform::Path(path)) || !platform::IsFile(platform::Path(path))) {
        diagnostics_.setStatus(Status::NotReadable);
        return 0;
    }
    MakePackage();
    auto unzip = std::make_unique<CODFUnZip>();
    unzip->SetPassword(password_);
    const int isOpen = package_->Open(path, nullptr, 0, unzip.release());
    WipePassword();
    if (!isOpen) {
        diagnostics_.setStatus(Status::NotAnArchive); // unless the package knows better
        return 0;
    }
    docType_ = package_->GetDocType();
    if (!_InitParts()) {
        diagnostics_.setStatus(Status::NoContent);
        return 0;
    }
    const int result = _PartReadSax();
    diagnostics_.setStatus(Status::Ok);
    return result;
}

int CDocument::_InitParts() {
    if (!package_) return 0;
    SDPackage::PartMap* const parts = package_->GetParts();
    if (!parts) return 0;
    const ODFPartFactory factory(docType_);
    rootPart_ = factory.Create({}, {});
    rootPart_->SetPackagePartInfo(package_->GetRootPart());
    rootPart_->SetPackagePath(u"/");
    Enter(package_->GetRootPart(), rootPart_);
    for (const auto& [path, ipart] : *parts) {
        if (!ipart) continue;
        CODFPart* const part = factory.Create(ToView(ipart->GetPartName()), ToView(ipart->GetRelationType()));
        part->SetPackagePartInfo(ipart);
        rootPart_->AddChildPart(nullptr, part);
        Enter(ipart, part);
    }
    mainPart_ = _FindMainPartODF();
    return mainPart_ ? 1 : 0;
}

CODFPart* CDocument::_FindMainPartODF() const {
    for (const auto& [ipart, part] : partMap_)
        if (ToView(part->GetPackagePath()) == u"content.xml") return part;
    return nullptr;
}

int CDocument::_PartReadSax() {
    const std::unique_ptr<CSDSaxReader, ReaderRelease> reader(CreateSaxReader());
    reader->SetFeature("http://apache.org/xml/features/nonvalidating/load-external-dtd", false);
    reader->SetLimits(limits_);
    reader->SetFidelity(fidelity_);
    for (const auto& [ipart, part] : partMap_) {
        if (part->GetPartType() != PartTypeXml) continue;
        reader->SetDiagnostics(&diagnostics_, MemberName(part->GetPackagePath()));
        reader->ParseFile(part->GetLocalPath(), part->GetRootClass());
        // A file of another kind under a main name, or one that isn't XML at all, leaves an empty tree. Its
        // bytes are kept for the save, unless the caller fills the tree.
        if (!reader->HasMatchedRoot()) unreadParts_.push_back(part);
    }
    return 1;
}

int CDocument::Save(const unsigned short* path) {
    diagnostics_.clear();
    if (!mainPart_) {
        // Never opened, or only half: what was read of a package must not take a whole one's place.
        diagnostics_.setStatus(Status::NothingToSave);
        return 0;
    }
    if (!package_) {
        // The package, and with it the folder of all files, went with the first save.
        diagnostics_.setStatus(Status::NothingToSave);
        return 1;
    }
    if (!path || *path == 0) {
        diagnostics_.setStatus(Status::CouldNotWrite);
        return 0;
    }
    try {
        if (!_SetPackageRoot(path, nullptr)) {
            diagnostics_.setStatus(Status::NoTemporaryFolder);
            return 0;
        }
        const bool written = _WritePart() != 0;
        if (!written) {
            // An incomplete set of files must not replace the caller's package.
            diagnostics_.setStatus(Status::CouldNotWrite);
            package_.reset();
            RemoveOwnFolder();
            return 1;
        }
        const int result = _MakePackagePart(path);
        diagnostics_.setStatus(Status::Ok);
        return result;
    } catch (const std::bad_alloc&) {
        diagnostics_.setStatus(Status::OutOfMemory);
        return 0;
    }
}

int CDocument::_SetPackageRoot(const unsigned short* path, const unsigned short* localPath) {
    if (*rootPart_->GetLocalPath() != 0) return 1;
    if (!path || *path == 0) return 0;
    CTulStringW folder(localPath);
    if (!localPath) {
        folder = platform::CreateTemporaryFolder(platform::Path(path).stem()).text();
        if (folder.IsEmpty()) return 0;
        ownFolder_ = folder;
    }
    rootPart_->SetLocalPath(folder);
    rootPart_->SetPackageRoot(rootPart_->GetLocalPath());
    return 1;
}

int CDocument::_WritePart() {
    std::vector<ISDPart*> parts;
    rootPart_->GetChildParts(&parts);
    return std::all_of(parts.begin(), parts.end(),
                       [this](ISDPart* part) { return _WriteTraversePart(part) != 0; });
}

int CDocument::_WriteTraversePart(ISDPart* ipart) {
    auto* const part = static_cast<CODFPart*>(ipart);
    if (!part) return 0;
    if (part->GetPartType() != PartTypeXml || !part->GetRootClass()) return 1;
    const bool isUnread = std::find(unreadParts_.begin(), unreadParts_.end(), part) != unreadParts_.end();
    if (isUnread && !part->GetRootClass()->HasChildList()) return 1;
    const std::string member = MemberName(part->GetPackagePath());
    if (LeavesPackage(member)) {
        diagnostics_.add(NoteCode::WriteFailed, Severity::Error, member, "the path leads out of the package");
        return 0;
    }
    part->SetLocalPath((platform::Path(rootPart_->GetLocalPath()) / platform::Path(member)).text());
    return _WritePartContent(part->GetLocalPath(), part);
}

int CDocument::_WritePartContent(const unsigned short* path, ISDPart* part) {
    const std::unique_ptr<CSDSerializer, SerializerRelease> serializer(CreateSerialize());
    if (!serializer) return 1;
    serializer->SetDiagnostics(&diagnostics_);
    serializer->SetFidelity(fidelity_);
    return serializer->SerializeToFile(path, part->GetRootClass()) ? 1 : 0;
}

int CDocument::_MakePackagePart(const unsigned short* path) {
    if (!package_) return 1;
    package_->SetDocType(docType_);
    SDPackage::IPart* const root = package_->GetRootPart();
    _SDPartToPackagePart(rootPart_, root);
    root->SetRelationships(package_->CreateRelationships(root->GetPackagePath()));
    std::vector<ISDPart*> parts;
    partMap_.clear(); // the records of the next package take the place of those that were read
    Enter(root, rootPart_);
    if (rootPart_->GetChildParts(&parts) > 0 && !_AddChildPart(parts)) return 0;
    ownFolder_.Clear(); // the package removes it
    // The plain result tells nothing of the package; the status does.
    if (!package_->Save(path, nullptr, 0)) diagnostics_.setStatus(Status::CouldNotWrite);
    for (auto& [ipart, part] : partMap_)
        ipart = nullptr;
    package_.reset();
    return 1;
}

int CDocument::_AddChildPart(std::vector<ISDPart*>& parts) {
    for (ISDPart* const part : parts) {
        if (!part) continue;
        SDPackage::IPart* const ipart = package_->CreatePart();
        _SDPartToPackagePart(part, ipart);
        package_->GetRootPart()->AddPart(ipart);
        package_->AddPart(ipart);
        Enter(ipart, static_cast<CODFPart*>(part));
    }
    return 1;
}

int CDocument::_SDPartToPackagePart(ISDPart* part, SDPackage::IPart* ipart) {
    ipart->SetTargetMode(part->GetTargetMode());
    ipart->SetContentType(part->GetContentType());
    ipart->SetRelationType(part->GetRelationtype());
    ipart->SetPackagePath(part->GetPackagePath());
    ipart->SetLocalPath(part->GetLocalPath());
    ipart->SetPartName(part->GetPartname());
    return 1;
}

int CDocument::_MakeContentTypes(ISDPart* part) {
    SDPackage::IContentTypes* const registry = package_ ? package_->GetContentTypes() : nullptr;
    if (!part || !registry) return 0;
    const std::u16string_view path = ToView(part->GetPackagePath());
    const bool isXml = static_cast<CODFPart*>(part)->GetPartType() == PartTypeXml;
    if (!isXml && path == u"/") {
        registry->AddDefault(ToUnits(u"xml"), ToUnits(u"application/xml"));
        registry->AddDefault(ToUnits(u"rels"),
                             ToUnits(u"application/vnd.openxmlformats-package.relationships+xml"));
    } else if (isXml || path.find(u".xml") != std::u16string_view::npos) {
        registry->AddOverride(part->GetPackagePath(), part->GetContentType());
    } else if (path.find(u".jpeg") != std::u16string_view::npos) {
        registry->AddDefault(ToUnits(u"jpeg"), ToUnits(u"image/jpeg"));
    }
    return 1;
}

void CDocument::GetPartsByContentType(CTulStringW contentType, std::vector<CODFPart*>* out) const {
    if (!out) return;
    for (const auto& [ipart, part] : partMap_)
        if (contentType == part->GetContentType()) out->push_back(part);
}

CODFPart* CDocument::FindTopPart(std::u16string_view name) const {
    for (const auto& [ipart, part] : partMap_)
        if (ToView(part->GetPartname()) == name && part->GetPackagePathOnly().IsEmpty()) return part;
    return nullptr;
}

int CDocument::_CreateRootAndMainPart() {
    Clear();
    diagnostics_.clear();
    MakePackage();
    const ODFPartFactory factory(docType_);
    rootPart_ = factory.Create({}, {});
    rootPart_->SetPackagePartInfo(package_->GetRootPart());
    rootPart_->SetPackagePath(u"/");
    for (const ODF_MedType type :
         {ODF_MedTypeContent, ODF_MedTypeStyles, ODF_MedTypeSettings, ODF_MedTypeMeta}) {
        const std::u16string_view name = ToView(ODFUtil::GetMediaType(type));
        CODFPart* const part = factory.Create(name, name);
        rootPart_->AddChildPart(nullptr, part);
        if (type == ODF_MedTypeContent) mainPart_ = part;
    }
    return 1;
}

} // namespace ODF

CSDSaxReader* ODFCreateSaxReader() {
    return CreateSaxReader();
}
void ODFReleaseSaxReader(CSDSaxReader* reader) {
    ReleaseSaxReader(reader);
}
CSDSerializer* ODFCreateSerialize() {
    return CreateSerialize();
}
void ODFReleaseSerialize(CSDSerializer* serializer) {
    ReleaseSerialize(serializer);
}
