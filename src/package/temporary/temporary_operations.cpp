#include <odfmodel/package/package.h>

#include "package/package_state.h"
#include "platform/files.h"
#include "platform/temporary.h"

namespace SDPackage {

namespace platform = ODF::platform;

int IPackage::SetTempFolder(const unsigned short* folder) {
    if (!folder) return state_->storage.makeFolder() ? 1 : 0;
    CTulStringW name(folder);
    name.Replace(CTulStringW(u"%20"), CTulStringW(u" "));
    name.Replace(CTulStringW(u"%22"), CTulStringW(u"\""));
    state_->storage.takeFolder(name);
    return 1;
}

const unsigned short* IPackage::GetTempFolder() const {
    return state_->storage.folder();
}

void IPackage::LockFiles(const unsigned short* pattern) {
    state_->storage.lock(pattern);
}

void IPackage::UnlockFiles() {
    state_->storage.unlock();
}

const std::vector<CTulStringW>& IPackage::GetLockedFiles() const {
    return state_->storage.locked();
}

void IPackage::DeleteFolderTree(const unsigned short* pattern) {
    platform::RemoveTree(pattern);
}

CTulStringW IPackage::MakeTempArchiveName(const unsigned short* target) {
    return platform::CreateTemporaryFile({}, platform::Path(target).extension()).text();
}

CTulStringW IPackage::MakeTempWorkName(const unsigned short* tag) {
    return platform::CreateTemporaryFile(ODF::ToUtf8(tag) + '_', "_secureTempFile.tmp", 6).text();
}

} // namespace SDPackage
