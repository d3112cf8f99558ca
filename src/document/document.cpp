#include <odfmodel/document/document.h>

#include "document/part_factory.h"
#include "document/tree.h"
#include "platform/files.h"
#include "platform/temporary.h"

#include <odfmodel/document/part_factories.h>
#include <odfmodel/package/package.h>
#include <odfmodel/serial/unzip.h>

#include <algorithm>
#include <new>
#include <unordered_map>
#include <utility>

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
    // Parts of a new document that was never saved hang on the root part alone, others are in the map, most
    // in both. Nothing is allocated here: this is the way out of a lack of memory, too.
    CODFPart* first = nullptr;
    CODFPart* last = nullptr;
    const auto enter = [&](CODFPart* part) {
        if (!part || part->isDeleted_) return;
        part->isDeleted_ = true;
        part->nextDeleted_ = nullptr;
        (last ? last->nextDeleted_ : first) = part;
        last = part;
    };
    enter(rootPart_);
    for (const auto& [ipart, part] : partMap_)
        enter(part);
    for (const CODFPart* part = first; part; part = part->nextDeleted_)
        for (ISDPart* const child : part->childParts_)
            enter(static_cast<CODFPart*>(child));
    while (first) {
        const std::unique_ptr<CODFPart> part(std::exchange(first, first->nextDeleted_));
        CSDObject::Delete(part->GetRootClass());
    }
    partMap_.clear();
    unreadParts_.clear();
    faults_.clear();
    isComplete_ = isDamaged_ = false;
    mainPart_ = nullptr;
    rootPart_ = nullptr;
    package_.reset();
    RemoveOwnFolder();
}

void CDocument::RemoveOwnFolder() noexcept {
    if (!ownFolder_.empty()) platform::RemoveTree(platform::Path(std::move(ownFolder_)));
    ownFolder_.clear();
    folderClaim_.reset();
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
    // Whatever becomes of the opening, the password goes.
    const struct Wiping {
        CDocument& document;
        ~Wiping() { document.WipePassword(); }
    } wiping{*this};
    try {
        return Read(path);
    } catch (const std::bad_alloc&) {
        Clear();
        diagnostics_.setStatus(Status::OutOfMemory);
        return 0;
    }
}

int CDocument::Read(const unsigned short* path) {
    if (!path || !platform::IsReadable(platform::Path(path)) || !platform::IsFile(platform::Path(path))) {
        diagnostics_.setStatus(Status::NotReadable);
        return 0;
    }
    MakePackage();
    auto unzip = std::make_unique<CODFUnZip>();
    unzip->SetPassword(password_);
    const int isOpen = package_->Open(path, nullptr, 0, unzip.release());
    if (!isOpen) {
        diagnostics_.setStatus(Status::NotAnArchive); // unless the package knows better
        return 0;
    }
    docType_ = package_->GetDocType();
    if (!_InitParts()) {
        diagnostics_.setStatus(Status::NoContent);
        return 0;
    }
    const int result = _PartReadSax(platform::FileSize(platform::Path(path)).value_or(0));
    for (const Note& note : diagnostics_.notes())
        if (note.severity == Severity::Error) faults_.push_back(note);
    isDamaged_ = isDamaged_ || !faults_.empty();
    isComplete_ = true;
    diagnostics_.setStatus(isDamaged_ ? Status::Damaged : Status::Ok);
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
        Enter(ipart, nullptr);
        // From here on the document deletes it, whatever fails.
        CODFPart* const part = partMap_.back().second =
            factory.Create(ToView(ipart->GetPartName()), ToView(ipart->GetRelationType()));
        part->SetPackagePartInfo(ipart);
        rootPart_->AddChildPart(nullptr, part);
    }
    mainPart_ = _FindMainPartODF();
    return mainPart_ ? 1 : 0;
}

CODFPart* CDocument::_FindMainPartODF() const {
    for (const auto& [ipart, part] : partMap_)
        if (ToView(part->GetPackagePath()) == u"content.xml") return part;
    return nullptr;
}

int CDocument::_PartReadSax(std::uint64_t fileBytes) {
    const std::unique_ptr<CSDSaxReader, ReaderRelease> reader(CreateSaxReader());
    reader->SetFeature("http://apache.org/xml/features/nonvalidating/load-external-dtd", false);
    Limits left = SharedLimits(limits_, fileBytes);
    reader->SetFidelity(fidelity_);
    for (const auto& [ipart, part] : partMap_) {
        if (part->GetPartType() != PartTypeXml) continue;
        reader->SetDiagnostics(&diagnostics_, MemberName(part->GetPackagePath()));
        reader->SetLimits(left);
        const bool isRead = reader->ParseFile(part->GetLocalPath(), part->GetRootClass());
        if (!isRead) isDamaged_ = true;
        Spend(left, reader->GetCost());
        // A file of another kind under a main name, or one that isn't XML at all, leaves an empty tree. Its
        // bytes are kept for the save, unless the caller fills the tree.
        if (!reader->HasMatchedRoot()) unreadParts_.push_back(part);
    }
    return 1;
}

int CDocument::Save(const unsigned short* path) {
    diagnostics_.clear();
    if (!mainPart_ || !isComplete_) {
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
        return Write(path);
    } catch (const std::bad_alloc&) {
        diagnostics_.setStatus(Status::OutOfMemory);
        return 0;
    }
}

int CDocument::Write(const unsigned short* path) {
    for (const Note& fault : faults_)
        diagnostics_.add(fault);
    if (!_SetPackageRoot(path, nullptr)) {
        diagnostics_.setStatus(Status::NoTemporaryFolder);
        return 0;
    }
    if (!_WritePart()) {
        // An incomplete set of files must not replace the caller's package.
        diagnostics_.setStatus(Status::CouldNotWrite);
        return 1;
    }
    const int result = _MakePackagePart(path);
    diagnostics_.setStatus(isDamaged_ ? Status::Damaged : Status::Ok);
    return result;
}

int CDocument::_SetPackageRoot(const unsigned short* path, const unsigned short* localPath) {
    if (*rootPart_->GetLocalPath() != 0) return 1;
    if (!path || *path == 0) return 0;
    CTulStringW folder(localPath);
    if (!localPath) {
        std::unique_ptr<platform::FolderClaim> claim =
            platform::FolderClaim::create(platform::Path(path).stem());
        if (!claim) {
            diagnostics_.add(NoteCode::WriteFailed, Severity::Error, {},
                             "can't make a folder in " + platform::TemporaryDirectoryName() + ": " +
                                 platform::LastFault());
            return 0;
        }
        ownFolder_ = claim->folder().utf8();
        folderClaim_ = std::move(claim);
        folder = CTulStringW(ownFolder_);
        if (folder.IsEmpty()) throw std::bad_alloc();
    }
    rootPart_->SetLocalPath(folder);
    rootPart_->SetPackageRoot(rootPart_->GetLocalPath());
    return 1;
}

CTulStringW CDocument::MakeFolder() {
    if (!rootPart_ || !_SetPackageRoot(ToUnits(u"new"), nullptr)) return {};
    return CTulStringW(rootPart_->GetLocalPath());
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
    const std::string member = MemberName(part->GetPackagePath());
    if (LeavesPackage(member)) {
        diagnostics_.add(NoteCode::WriteFailed, Severity::Error, member, "the path leads out of the package");
        return 0;
    }
    if (part->GetPartType() != PartTypeXml || !part->GetRootClass()) return 1;
    const bool isUnread = std::find(unreadParts_.begin(), unreadParts_.end(), part) != unreadParts_.end();
    if (isUnread && !part->GetRootClass()->HasChildList()) return 1;
    part->SetLocalPath((platform::Path(rootPart_->GetLocalPath()) / platform::Path(member)).text());
    return _WritePartContent(part->GetLocalPath(), part);
}

int CDocument::_WritePartContent(const unsigned short* path, ISDPart* part) {
    const std::unique_ptr<CSDSerializer, SerializerRelease> serializer(CreateSerialize());
    if (!serializer) throw std::bad_alloc();
    serializer->SetDiagnostics(&diagnostics_);
    serializer->SetFidelity(fidelity_);
    return serializer->SerializeToFile(path, part->GetRootClass()) ? 1 : 0;
}

namespace {

/// The records that a save gives to its package. One that fails takes them back, so that the next finds the
/// document and its package as they were.
class SaveRecords {
public:
    using Records = std::vector<std::pair<SDPackage::IPart*, CODFPart*>>;

    SaveRecords(SDPackage::IPackage& package, Records& records) : package_(package), records_(records) {
        for (const auto& [record, part] : records)
            parts_.emplace(record, part);
        before_.swap(records_);
    }
    SaveRecords(const SaveRecords&) = delete;
    SaveRecords& operator=(const SaveRecords&) = delete;
    ~SaveRecords() {
        if (isDone_) return;
        package_.GetWriteList()->clear();
        for (SDPackage::IPart* const record : made_)
            delete record; // which takes itself out of the package
        records_.swap(before_);
    }

    /// A new record, for which the package shall be asked next.
    SDPackage::IPart* make() {
        made_.reserve(made_.size() + 1);
        return made_.emplace_back(package_.CreatePart());
    }
    /// Enters a record for `part`. False when the package has another part in that place.
    bool enter(SDPackage::IPart* record, CODFPart* part) {
        package_.AddPart(record);
        package_.GetRootPart()->AddPart(record);
        records_.emplace_back(record, part);
        parts_.emplace(record, part);
        const auto holder = parts_.find(package_.GetPart(record->GetPackagePath()));
        return holder == parts_.end() || holder->second == part;
    }
    void keep() noexcept { isDone_ = true; }

private:
    SDPackage::IPackage& package_;
    Records& records_;
    Records before_;
    std::vector<SDPackage::IPart*> made_;
    std::unordered_map<const SDPackage::IPart*, const CODFPart*> parts_; ///< by their records, old and new
    bool isDone_ = false;
};

} // namespace

int CDocument::_MakePackagePart(const unsigned short* path) {
    if (!package_) return 1;
    package_->SetDocType(docType_);
    SDPackage::IPart* const root = package_->GetRootPart();
    _SDPartToPackagePart(rootPart_, root);
    // A save that failed has left a set here.
    SDPackage::IRelationships* set = package_->CreateRelationships(root->GetPackagePath());
    root->SetRelationships(set ? set : package_->GetRelationships(root->GetPackagePath()));
    bool isPartial = false;
    std::vector<ISDPart*> parts;
    // The records of the next package take the place of those that were read.
    SaveRecords records(*package_, partMap_);
    Enter(root, rootPart_);
    rootPart_->GetChildParts(&parts);
    for (ISDPart* const part : parts) {
        if (!part) continue;
        SDPackage::IPart* const ipart = records.make();
        _SDPartToPackagePart(part, ipart);
        if (records.enter(ipart, static_cast<CODFPart*>(part))) continue;
        diagnostics_.add(NoteCode::MemberDuplicate, Severity::Error, MemberName(part->GetPackagePath()),
                         "another part has this name; this one is not saved");
        isPartial = true;
    }
    ownFolder_.clear(); // the package removes it
    // The plain result tells nothing of the package; the status does.
    if (!package_->Save(path, nullptr, 0)) {
        diagnostics_.setStatus(Status::CouldNotWrite);
        return 1;
    }
    if (isPartial) diagnostics_.setStatus(Status::Damaged);
    records.keep();
    for (auto& [ipart, part] : partMap_)
        ipart = nullptr;
    package_.reset();
    folderClaim_.reset();
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
    isComplete_ = true;
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
