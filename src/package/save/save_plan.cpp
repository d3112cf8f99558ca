#include <odfmodel/package/package.h>

#include "package/package_state.h"
#include "platform/files.h"

#include <odfmodel/serial/zip.h>

#include <algorithm>

namespace SDPackage {

namespace {

using ODF::NoteCode;
using ODF::Severity;
using ODF::Status;

/// What the plan operations differ in.
struct PlanForm {
    bool copiesFromMapping = false; ///< a source that is in a mapping is copied from there
    bool packsIntoMapping = false;  ///< new members go through the operations for archives in mappings
};

class Plan {
public:
    Plan(PackageState& state, const ZipItemVector& items, PlanForm form)
        : state_(state), items_(items), form_(form) {}

    /// Adds all members; false, with the archive given up, at the first that fails.
    bool addTo(CSDZip& zip) const {
        for (const ZipItemSpec& item : items_) {
            state_.yield();
            if (add(zip, item)) continue;
            zip.Discard();
            state_.fail(Status::CouldNotWrite, NoteCode::WriteFailed, MemberName(ToView(item.name)),
                        "the member can't be put into the new archive");
            return false;
        }
        return true;
    }

private:
    bool add(CSDZip& zip, const ZipItemSpec& item) const {
        if (!item.name) return false;
        if (item.sourceIndex != -1) return copy(zip, item);
        if (item.size != -1) {
            return (form_.packsIntoMapping ? zip.CompressLargeMemory(item.name, item.data, item.size)
                                           : zip.Compress(item.name, item.data, item.size)) != 0;
        }
        if (!item.path) return false;
        const int stored = state_.package.IsMediaFile(item.path) ? 1 : 0;
        return (form_.packsIntoMapping ? zip.CompressLargeMemory(item.name, item.path, stored)
                                       : zip.Compress(item.name, item.path, stored)) != 0;
    }

    bool copy(CSDZip& zip, const ZipItemSpec& item) const {
        const CSDUnZip* const source = state_.unzip.get();
        if (!source || !source->zipHandle) return false;
        if (form_.copiesFromMapping && source->IsVariableMemoryMap() != 0)
            return zip.CopyItemLargeMemory(source->zipHandle, source->GetMemoryMapHandle(),
                                           source->GetMemoryMapSize(), item.sourceIndex, item.name) != 0;
        return zip.CopyItem(source->zipHandle, item.sourceIndex, item.name) != 0;
    }

    PackageState& state_;
    const ZipItemVector& items_;
    PlanForm form_;
};

/// Makes an archive with `create`, fills it and ends it with `close`; 0 at the first of them that fails.
template<typename Create, typename Close>
int BuildArchive(PackageState& state, const ZipItemVector& items, PlanForm form, Create create, Close close) {
    CSDZip zip;
    zip.SetDiagnostics(state.diagnostics);
    if (create(zip) == 0) return state.fail(Status::CouldNotWrite);
    if (!Plan(state, items, form).addTo(zip)) return 0;
    return close(zip) != 0 ? 1 : state.fail(Status::CouldNotWrite);
}

} // namespace

int IPackage::SaveItems(const unsigned short* path, ZipItemVector* items, int keepSource) {
    if (!path || !items) return 0;
    PackageState& state = *state_;
    UnlockFiles();
    CSDZip zip;
    zip.SetDiagnostics(state.diagnostics);
    // The archive is built next to the target, so whether the target can be replaced shows at once.
    const bool isReplaceable = zip.CreareZipFile(path) != 0;
    if (!isReplaceable) {
        state.fail(Status::CouldNotWrite, NoteCode::WriteFailed, {}, "the target can't be replaced");
        if (keepSource != 0) return 1;
        if (!state.sourcePath.IsEmpty()) LockFiles(state.sourcePath);
        return 0;
    }
    if (!Plan(state, *items, {true, false}).addTo(zip)) return 0;
    if (zip.CloseFile() == 0) return state.fail(Status::CouldNotWrite);
    if (keepSource != 0) return state.succeed();
    if (state.rebind([&](CSDUnZip& unzip) { return unzip.OpenZipFileNonDecompress(path); }) == 0) return 0;
    LockFiles(path);
    state.sourcePath = path;
    return 1;
}

int IPackage::WriteItems(const unsigned short* path, ZipItemVector* items) {
    if (!path || !items) return 0;
    return BuildArchive(
        *state_, *items, {}, [&](CSDZip& zip) { return zip.CreareZipFile(path); },
        [](CSDZip& zip) { return zip.CloseFile(); });
}

int IPackage::SaveItemsToMemory(void* buffer, int* size, unsigned /*reserved*/, ZipItemVector* items) {
    if (!size || !items) return 0;
    UnlockFiles();
    int used = 0;
    if (BuildArchive(
            *state_, *items, {}, [&](CSDZip& zip) { return zip.CreareZipFile(buffer, *size); },
            [&](CSDZip& zip) { return zip.CloseMemoryFile(used); }) == 0)
        return 0;
    *size = used;
    return state_->rebind(
        [&](CSDUnZip& unzip) { return unzip.OpenZipFileNonDecompress(buffer, static_cast<unsigned>(used)); });
}

int IPackage::SaveItemsToLargeMemory(void* mapping, int* size, unsigned /*reserved*/, ZipItemVector* items,
                                     int keepSource) {
    if (!size || !items) return 0;
    UnlockFiles();
    int used = 0;
    if (BuildArchive(
            *state_, *items, {true, true},
            [&](CSDZip& zip) { return zip.LargeMemoryCreareZipFile(mapping, *size); },
            [&](CSDZip& zip) { return zip.CloseLargeMemoryFile(used); }) == 0)
        return 0;
    *size = used;
    if (keepSource != 0) return state_->succeed();
    return state_->rebind([&](CSDUnZip& unzip) {
        return unzip.LargeMemoryOpenZipFileNonDecompress(mapping, static_cast<unsigned>(used));
    });
}

int IPackage::WriteItemsToMemory(void* buffer, int* size, unsigned /*reserved*/, ZipItemVector* items) {
    if (!size || !items) return 0;
    return BuildArchive(
        *state_, *items, {}, [&](CSDZip& zip) { return zip.CreareZipFile(buffer, *size); },
        [](CSDZip& zip) { return zip.CloseFile(); });
}

int IPackage::WriteItemsToLargeMemory(void* mapping, int* size, unsigned /*reserved*/, ZipItemVector* items) {
    if (!size || !items) return 0;
    int used = 0;
    if (BuildArchive(
            *state_, *items, {true, false},
            [&](CSDZip& zip) { return zip.LargeMemoryCreareZipFile(mapping, *size); },
            [&](CSDZip& zip) { return zip.CloseLargeMemoryFile(used); }) == 0)
        return 0;
    *size = used;
    return 1;
}

int IPackage::RepackFromFiles(const unsigned short* path, FileMap* files) {
    if (!path || !files) return 0;
    PackageState& state = *state_;
    if (state.unzip) state.unzip->CloseFile();
    UnlockFiles();
    CSDZip zip;
    zip.SetDiagnostics(state.diagnostics);
    if (zip.CreareZipFile(path) == 0) return state.fail(Status::CouldNotWrite);
    for (const auto& [name, file] : *files) {
        state.yield();
        if (ODF::platform::IsFile(file) && ODF::platform::IsReadable(file))
            zip.Compress(name, file, IsMediaFile(file) ? 1 : 0);
        else
            state.note(NoteCode::MemberMissing, Severity::Warning, MemberName(name.view()),
                       "the file can't be read and is left out");
    }
    const int result = zip.CloseFile();
    LockFiles(state.storage.folder());
    return result != 0 ? state.succeed() : state.fail(Status::CouldNotWrite);
}

} // namespace SDPackage
