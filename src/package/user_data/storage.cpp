#include <odfmodel/package/storage.h>

namespace SDPackage {

IStream::~IStream() = default;
IStorage::~IStorage() = default;

#ifndef ODFMODEL_USER_DATA

IStorage* OpenStorage(const unsigned short* /*path*/) {
    return nullptr;
}

IStorage* CreateStorage(const unsigned short* /*path*/) {
    return nullptr;
}

#endif

} // namespace SDPackage
