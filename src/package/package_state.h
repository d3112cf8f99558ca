#pragma once

#include "package/document_types.h"
#include "package/kept_file.h"
#include "package/parts/part_registry.h"
#include "package/temporary/temporary_storage.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/fidelity.h>
#include <odfmodel/package/package.h>
#include <odfmodel/serial/unzip.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace SDPackage {

/// What is behind a package's operations.
struct PackageState {
    explicit PackageState(IPackage& owner) : package(owner) {}

    IPackage& package;

    ODF::Diagnostics* diagnostics = nullptr;
    ODF::Limits limits;
    ODF::Fidelity fidelity = ODF::Fidelity::Listed;
    std::function<void()> hostTurn;
    XmlCallback xmlCallback = nullptr;

    DocumentType documentType = SDDocType::DocTypeUnknown;
    std::vector<DocumentType> mainDocumentTypes;
    std::unique_ptr<IContentTypes> contentTypes;
    Map folderEntries;
    FileMap writeList;
    KeptFile kept; ///< filled with `Fidelity::Everything` alone
    int keepCompressed = 0;
    CTulStringW sourcePath;
    bool isSound = true;  ///< the last open was none that failed or found nothing
    bool isOther = false; ///< the archive at hand isn't the one that the parts came from

    CSDZip* externalZip = nullptr;
    void* scratchBuffer = nullptr;
    int scratchSize = 0;

    // Destroyed last to first: the archive is closed before its folder is deleted.
    TemporaryStorage storage;
    PartRegistry registry;
    std::unique_ptr<CSDUnZip> unzip;

    int useUserData = 0;
    std::unique_ptr<UserDataConverter> userDataConverter;
    std::unique_ptr<UserDataPart> userDataPart;

    void note(ODF::NoteCode code, ODF::Severity severity, std::string_view member,
              std::string_view text) const {
        if (diagnostics) diagnostics->add(code, severity, member, text);
    }
    /// Sets the status; 0, so that a failed operation can return it.
    int fail(ODF::Status status) const {
        if (diagnostics) diagnostics->setStatus(status);
        return 0;
    }
    int fail(ODF::Status status, ODF::NoteCode code, std::string_view member, std::string_view text) const {
        note(code, ODF::Severity::Error, member, text);
        return fail(status);
    }
    int succeed() const {
        if (diagnostics) diagnostics->setStatus(ODF::Status::Ok);
        return 1;
    }

    /// Gives the host its turn.
    void yield() const {
        if (hostTurn) hostTurn();
    }

    /// Closes the archive and takes another reader over, null for none.
    void bind(std::unique_ptr<CSDUnZip> reader) {
        if (unzip) unzip->CloseFile();
        unzip = std::move(reader);
        if (!unzip) return;
        unzip->SetLimits(limits);
        unzip->SetDiagnostics(diagnostics);
    }
    void bindNew() { bind(std::make_unique<CSDUnZip>()); }
    /// For an archive that is only looked into.
    void bindOther() {
        isOther = isOther || !registry.parts().empty();
        bindNew();
    }

    /// Binds the package to an archive that was just written; `open` opens it in a new reader. On failure
    /// there is none.
    template<typename Open>
    int rebind(Open open) {
        bindNew();
        if (open(*unzip) != 0) return succeed();
        bind(nullptr);
        return fail(ODF::Status::NotReadable);
    }

    /// Whether the file's own index is kept.
    bool keepsFile() const noexcept { return fidelity == ODF::Fidelity::Everything; }
    /// Leaves what an earlier open has read and noted.
    void startOver(int keepsCompressed);
    /// Whether the user data member is written and read: it is asked for and its module can be used.
    bool usesUserData() const { return useUserData != 0 && userDataPart->IsAvailable() != 0; }
};

/// A package path as the diagnostics name a member.
inline std::string MemberName(Units packagePath) {
    return ODF::ToUtf8(WithSlashes(packagePath));
}

} // namespace SDPackage
