#include <odfmodel/package/package.h>

#include "package/package_state.h"
#include "platform/files.h"
#include "platform/temporary.h"

#include <odfmodel/serial/zip.h>

namespace SDPackage {

namespace {

namespace platform = ODF::platform;
using ODF::NoteCode;
using ODF::Status;

/// A new file for a storage or an archive on its way; empty when there is no temporary directory.
platform::Path NewStagingFile() {
    return platform::CreateTemporaryFile("TOOXML", ".tmp");
}

/// The user data member's name in the archive.
CTulStringW ItemName(const UserDataPart& part) {
    return CTulStringW(WithoutLeadingSeparator(part.GetPartName().view()));
}

} // namespace

UserDataPart* IPackage::GetUserDataPart() {
    return state_->userDataPart.get();
}

void IPackage::SetUseUserData(int use) {
    state_->useUserData = use;
}

int IPackage::GetUseUserData() {
    return state_->useUserData;
}

void IPackage::SetUserDataPath(const unsigned short* path) {
    state_->userDataPart->SetLocalPath(path);
}

const unsigned short* IPackage::GetUserDataPath() {
    return state_->userDataPart->GetLocalPath();
}

int IPackage::HasUserDataModule() {
    return state_->userDataConverter->IsAvailable();
}

int IPackage::ExchangeStorage(const unsigned short* path, int toModule, int create) {
    return HasUserDataModule() != 0 ? state_->userDataConverter->ExchangeStorage(path, toModule, create) : 0;
}

CTulStringW IPackage::GetUserPrefix() {
    return state_->userDataConverter->GetPrefix();
}

int IPackage::ExportUserData(UserDataPart* part, int fromStorage) {
    if (!part) return 0;
    const bool isMissing = !platform::Exists(part->GetLocalPath());
    if (isMissing) {
        const platform::Path file = NewStagingFile();
        if (file.empty()) return state_->fail(Status::NoTemporaryFolder);
        state_->storage.keepUntilEnd(file);
        part->SetLocalPath(file.text());
    }
    if (ExchangeStorage(part->GetLocalPath(), fromStorage, isMissing ? 1 : 0) != 0) return 1;
    state_->note(NoteCode::General, ODF::Severity::Error, MemberName(ItemName(*part).view()),
                 "the user data can't be exchanged with its module");
    return 0;
}

int IPackage::ImportUserData(UserDataPart* part, CSDUnZip* unzip) {
    if (!part) return 0;
    const CTulStringW item = ItemName(*part);
    if (unzip && unzip->GetItemIndex(item) >= 0) {
        const platform::Path file = NewStagingFile();
        if (file.empty()) return state_->fail(Status::NoTemporaryFolder);
        state_->storage.keepUntilEnd(file);
        unzip->Decompress(item, file.text().c_str());
        part->SetLocalPath(file.text());
    }
    ExportUserData(part, 1);
    return 1;
}

int IPackage::RepackUserData(UserDataPart* part, CSDUnZip* unzip, CTulStringW& outPath) {
    if (!part || !unzip) return 0;
    const platform::Path file = NewStagingFile();
    if (file.empty()) return state_->fail(Status::NoTemporaryFolder);
    CSDZip zip;
    zip.SetDiagnostics(state_->diagnostics);
    const auto giveUp = [&] {
        zip.Discard();
        platform::RemoveFile(file);
        return state_->fail(Status::CouldNotWrite);
    };
    if (zip.CreareZipFile(file.text().c_str()) == 0) return giveUp();
    const CTulStringW userItem = ItemName(*part);
    if (unzip->itemTable)
        for (const auto& [name, item] : *unzip->itemTable)
            if (item.index != -1 && name != userItem && zip.CopyItem(unzip->zipHandle, item.index, name) == 0)
                return giveUp();
    ImportUserData(part, unzip);
    if (zip.Compress(userItem, part->GetLocalPath(), 0) == 0 || zip.CloseFile() == 0) return giveUp();
    outPath = file.text();
    return 1;
}

} // namespace SDPackage
