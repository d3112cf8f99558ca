#include "package/open/odf_index.h"

#include "platform/files.h"

#include <odfmodel/package/handlers.h>

namespace SDPackage {

namespace {

using ODF::NoteCode;
using ODF::Severity;

bool MemberIsThere(const PackageState& state, const CTulStringW& fullPath, const ODF::platform::Path& local) {
    if (state.keepCompressed != 0) return state.unzip && state.unzip->GetItemIndex(fullPath) >= 0;
    return ODF::platform::IsFile(local) && ODF::platform::IsReadable(local);
}

/// Gives each part the media type of the folder entry that it is directly in.
void JoinFolders(PackageState& state) {
    // An entry may be written with and without a leading separator; the later one in key order counts.
    std::map<Units, const CTulStringW*> folders;
    for (const auto& [folder, mediaType] : state.folderEntries)
        folders[WithoutLeadingSeparator(folder.view())] = &mediaType;
    for (const auto& [path, part] : state.registry.parts()) {
        const auto folder = folders.find(FolderOf(path.view()));
        if (folder != folders.end()) part->SetRelationType(folder->second->c_str());
    }
}

} // namespace

void AddManifestEntry(PackageState& state, const CTulStringW& mediaType, const CTulStringW& fullPath) {
    const Units path = fullPath.view();
    if (IsFolderType(mediaType.view())) {
        state.folderEntries.try_emplace(WithBackslashes(path), mediaType);
        return;
    }
    if (path.empty() || path.back() == u'/') return;
    if (IsSeparator(path.front()) || HasParentStep(path)) {
        state.note(NoteCode::MemberSkipped, Severity::Warning, MemberName(path),
                   "the manifest names a place outside the package");
        return;
    }
    const ODF::platform::Path local = state.storage.pathOf(path);
    if (!MemberIsThere(state, fullPath, local)) {
        state.note(NoteCode::MemberMissing, Severity::Warning, MemberName(path),
                   "the manifest names a member that isn't there");
        return;
    }
    const CTulStringW packagePath(WithBackslashes(path));
    if (state.registry.find(packagePath)) {
        state.note(
            NoteCode::MemberDuplicate, Severity::Warning, MemberName(path),
            "the manifest names this member twice, or two that differ in case alone; the first one counts");
        return;
    }
    std::unique_ptr<IPart> part(state.package.CreatePart());
    part->SetContentType(mediaType.c_str());
    part->SetPackagePath(packagePath.c_str());
    part->SetLocalPath(local.text().c_str());
    part->SetPartName(CTulStringW(FileNameOf(path)).c_str());
    if (state.package.GetRootPart()->AddPart(part.get())) state.package.AddPart(part.release());
}

void ReadOdfIndex(PackageState& state, IndexReader& reader) {
    IPart& root = state.registry.root();
    root.SetLocalPath(state.storage.folder());
    root.SetRelationships(state.package.CreateRelationships(root.GetPackagePath()));
    CManifestHandler handler(&state.package);
    if (reader.read(CTulStringW(kManifestName), handler) == 0)
        state.note(NoteCode::ManifestFault, Severity::Error, MemberName(kManifestName),
                   state.registry.parts().empty() ? "the manifest can't be read"
                                                  : "the manifest ends at a fault; what follows it is lost");
    JoinFolders(state);
}

} // namespace SDPackage
