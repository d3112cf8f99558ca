#include <odfmodel/package/handlers.h>
#include <odfmodel/package/package.h>

#include "package/open/odf_index.h"
#include "package/open/open_packaging_index.h"
#include "package/package_state.h"
#include "platform/files.h"
#include "platform/temporary.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/serial/default_handler.h>
#include <odfmodel/serial/sax_reader.h>

namespace SDPackage {

namespace {

using ODF::NoteCode;
using ODF::Severity;
using ODF::Status;
namespace platform = ODF::platform;

/// The type that a file's name tells; 0 when no readable file is there.
DocumentType TypeByExtension(const PackageState& state, const unsigned short* path) {
    return path && platform::IsReadable(path) ? TypeOfExtension(ExtensionOf(ToView(path)), state.keepsFile())
                                              : SDDocType::DocTypeUnknown;
}

/// Finds the document type by any main content type that is known: drawings and themes, which packages of
/// other types hold too, count only where there is nothing else.
class MainTypeHandler final : public CSDDefaultHandler {
public:
    void startElement(const unsigned short* /*uri*/, const unsigned short* localName,
                      const unsigned short* /*qName*/, CSDAttribute* attributes) override {
        const Units name = ToView(localName);
        if ((name != u"Override" && name != u"Default") || !attributes || !IsSubordinate(type_)) return;
        const DocumentType found = TypeOfMainContent(ToView(attributes->GetValue(ToUnits(u"ContentType"))));
        if (found != SDDocType::DocTypeUnknown) type_ = found;
    }
    DocumentType GetDocType() const noexcept { return type_; }

private:
    DocumentType type_ = SDDocType::DocTypeUnknown;
};

/// The type that the content types tell. `read` feeds them to a handler, 0 when they can't be read.
template<typename Read>
DocumentType TypeByContent(const PackageState& state, Read read) {
    CDocTypeHandler listed;
    MainTypeHandler all;
    if (state.keepsFile()) return read(all) != 0 ? all.GetDocType() : SDDocType::DocTypeUnknown;
    return read(listed) != 0 ? listed.GetDocType() : SDDocType::DocTypeUnknown;
}

DocumentType TypeByContent(const PackageState& state, IndexReader& reader) {
    return TypeByContent(state, [&](CSDDefaultHandler& handler) {
        return reader.readUnseen(CTulStringW(kContentTypesName), handler);
    });
}

/// Reads the index that belongs to the document type. An ODF index is only taken where `takesOdf`.
int ReadIndex(PackageState& state, IndexReader& reader, bool takesOdf) {
    if (IsOpenPackaging(state.documentType)) {
        state.isSound = ReadOpenPackagingIndex(state, reader) != 0;
        return state.isSound ? state.succeed() : 0;
    }
    if (!takesOdf || !IsOdf(state.documentType)) return state.fail(Status::UnknownType);
    ReadOdfIndex(state, reader);
    state.isSound = !state.registry.parts().empty();
    return state.succeed();
}

/// Puts a copy of the package with renewed user data in its place. 0 when the copy can't be made.
int RenewUserData(PackageState& state, const unsigned short* path, const unsigned short* folder) {
    CTulStringW repacked;
    if (state.package.RepackUserData(state.userDataPart.get(), state.unzip.get(), repacked) == 0) return 0;
    state.unzip->CloseFile();
    state.unzip->keepCompressed = state.keepCompressed;
    if (!MoveOver(repacked, path)) {
        state.note(NoteCode::WriteFailed, Severity::Warning, {},
                   "the package with new user data can't be put in place");
        platform::RemoveFile(repacked);
    }
    return state.unzip->OpenAndExtract(path, folder);
}

} // namespace

int IPackage::Open(const unsigned short* path, const unsigned short* folder, int keepCompressed,
                   CSDUnZip* unzip) {
    PackageState& state = *state_;
    std::unique_ptr<CSDUnZip> reader(unzip ? unzip : std::make_unique<CSDUnZip>().release());
    state.startOver(keepCompressed);
    state.bind(std::move(reader));
    if (!path || !platform::IsReadable(path)) return state.fail(Status::NotReadable);
    if (SetTempFolder(folder) == 0 && keepCompressed == 0)
        return state.fail(Status::NoTemporaryFolder, NoteCode::WriteFailed, {},
                          "can't make a folder in " + platform::TemporaryDirectoryName() + ": " +
                              platform::LastFault());

    state.unzip->keepCompressed = keepCompressed;
    if (state.unzip->OpenAndExtract(path, state.storage.folder()) == 0)
        return state.fail(Status::NotAnArchive);
    if (state.usesUserData() && RenewUserData(state, path, state.storage.folder()) == 0)
        return state.fail(Status::NotReadable);
    LockFiles(state.storage.folder());
    IndexReader index(state);
    state.documentType = TypeByExtension(state, path);
    if (state.documentType == SDDocType::DocTypeUnknown) state.documentType = TypeByContent(state, index);
    return ReadIndex(state, index, true);
}

int IPackage::OpenMemory(void* data, unsigned size, const unsigned short* name,
                         const unsigned short* folder) {
    PackageState& state = *state_;
    state.startOver(1);
    state.bindNew();
    SetTempFolder(folder);
    state.unzip->keepCompressed = 1;
    if (state.unzip->OpenZipFileNonDecompress(data, size) == 0) return state.fail(Status::NotAnArchive);
    if (state.usesUserData() && ImportUserData(state.userDataPart.get(), state.unzip.get()) == 0) return 0;
    if (folder && state.unzip->Decompress(state.storage.folder()) == 0)
        return state.fail(Status::CouldNotWrite);
    LockFiles(state.storage.folder());
    IndexReader index(state);
    state.documentType = TypeByExtension(state, name);
    if (state.documentType == SDDocType::DocTypeUnknown) state.documentType = TypeByContent(state, index);
    return ReadIndex(state, index, false);
}

int IPackage::OpenFolder(const unsigned short* folder, DocumentType type) {
    PackageState& state = *state_;
    state.startOver(0);
    state.storage.borrowFolder(folder);
    state.bindNew();
    if (state.unzip->OpenFolder(folder) == 0) return state.fail(Status::NotReadable);
    LockFiles(folder);
    IndexReader index(state);
    state.documentType = type != SDDocType::DocTypeUnknown ? type : TypeByContent(state, index);
    return ReadIndex(state, index, true);
}

IPackage::DocumentType IPackage::DetectDocumentType(const unsigned short* path) {
    PackageState& state = *state_;
    const DocumentType byExtension = TypeByExtension(state, path);
    if (byExtension != SDDocType::DocTypeUnknown) return byExtension;
    state.bindOther();
    if (!path || state.unzip->OpenZipFileNonDecompress(path) == 0) return SDDocType::DocTypeUnknown;
    return TypeByContent(state, [&](CSDDefaultHandler& handler) {
        return ReadFromArchive(state, CTulStringW(kContentTypesName), handler);
    });
}

namespace {

/// Reads the registry of the archive that was just opened.
int ReadRegistry(PackageState& state, bool isOpen, Map* overrides, Map* defaults) {
    if (!isOpen) return state.fail(Status::NotAnArchive);
    CContentTypesHandler handler(&state.package, overrides, defaults);
    if (ReadFromArchive(state, CTulStringW(kContentTypesName), handler) == 0)
        return state.fail(Status::BadIndex);
    state.documentType = handler.GetDocType();
    return state.succeed();
}

} // namespace

int IPackage::ReadContentTypes(void* data, unsigned size, Map* overrides, Map* defaults) {
    state_->bindOther();
    return ReadRegistry(*state_, state_->unzip->OpenZipFileNonDecompress(data, size) != 0, overrides,
                        defaults);
}

int IPackage::ReadContentTypes(const unsigned short* path, Map* overrides, Map* defaults) {
    LockFiles(state_->storage.folder());
    state_->bindOther();
    const bool isOpen = path && state_->unzip->OpenZipFileNonDecompress(path) != 0;
    if (ReadRegistry(*state_, isOpen, overrides, defaults) == 0) return 0;
    state_->sourcePath = path;
    return 1;
}

int IPackage::ReadContentTypesLargeMemory(void* mapping, unsigned size, Map* overrides, Map* defaults) {
    state_->bindOther();
    const bool isOpen = state_->unzip->LargeMemoryOpenZipFileNonDecompress(mapping, size) != 0;
    return ReadRegistry(*state_, isOpen, overrides, defaults);
}

int IPackage::ReadRelationships(const unsigned short* itemName, RelationshipVector* out) {
    if (!out) return 0;
    CRelationshipListHandler handler(*out);
    return ReadFromArchive(*state_, itemName, handler);
}

} // namespace SDPackage
