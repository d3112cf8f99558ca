#include <odfmodel/package/handlers.h>
#include <odfmodel/package/package.h>

#include "package/handles.h"
#include "package/open/member_reader.h"
#include "package/package_state.h"
#include "platform/files.h"

#include <odfmodel/platform/memory_mapping.h>
#include <odfmodel/serial/zip.h>

#include <limits>

namespace SDPackage {

namespace {

namespace platform = ODF::platform;
using ODF::Status;

constexpr Units kRootRelationships = u"_rels/.rels";
/// What an archive may grow beyond twice its size: small ones get a whole user data member.
constexpr std::uint64_t kSlack = std::uint64_t{1} << 20;

/// A temporary file, deleted with the object.
class WorkFile {
public:
    explicit WorkFile(const char* tag) : path_(IPackage::MakeTempWorkName(tag)) {}
    WorkFile(const WorkFile&) = delete;
    WorkFile& operator=(const WorkFile&) = delete;
    ~WorkFile() {
        if (!path_.IsEmpty()) platform::RemoveFile(path_);
    }

    const CTulStringW& path() const noexcept { return path_; }

private:
    CTulStringW path_;
};

/// One package on its way into the form of the user data module, from an open archive into a new one.
class Conversion {
public:
    Conversion(PackageState& state, bool isLarge) : state_(state), isLarge_(isLarge) {}

    /// Reads the index of the open archive and says where each member goes.
    bool prepare() {
        state_.package.GetContentTypes()->Clear();
        CContentTypesHandler handler(&state_.package);
        if (ReadFromArchive(state_, CTulStringW(kContentTypesName), handler) == 0)
            return fault(Status::BadIndex);
        state_.documentType = handler.GetDocType();
        dataItem_ = UserDataConverter::UserDataItemName(state_.documentType);
        if (dataItem_.IsEmpty()) return fault(Status::UnknownType);
        if (data_.path().IsEmpty() || types_.path().IsEmpty()) return fault(Status::NoTemporaryFolder);
        return state_.unzip->itemTable && sortMembers();
    }

    /// Writes all members; false at the first that fails.
    bool write(CSDZip& zip) {
        for (auto& [name, index] : copies_) {
            state_.userDataConverter->RewriteItemName(name);
            if (!copy(zip, index, name)) return fault(Status::CouldNotWrite);
        }
        return (writeContentTypes(zip) && writeRelationships(zip) && writeUserData(zip)) ||
               fault(Status::CouldNotWrite);
    }

private:
    bool fault(Status status) const { return state_.fail(status) != 0; }

    bool sortMembers() {
        bool hasRelationships = false;
        for (const auto& [name, item] : *state_.unzip->itemTable) {
            if (item.index < 0) continue;
            if (name == dataItem_) {
                hasData_ = state_.package.ExtractItem(item.index, data_.path()) != 0;
                if (!hasData_) return fault(Status::BadIndex);
            } else if (name == kContentTypesName) {
                state_.userDataConverter->RewriteContentTypes(state_.package.GetContentTypes());
            } else if (name == kRootRelationships) {
                hasRelationships = readRelationships();
            } else {
                copies_.emplace_back(name, item.index);
            }
        }
        // Without the links of the package nobody would find its main part again.
        return hasRelationships || fault(Status::BadIndex);
    }

    bool readRelationships() {
        RelationshipVector records;
        return state_.package.ReadRelationships(ToUnits(kRootRelationships.data()), &records) != 0 &&
               state_.userDataConverter->WriteRelationships(relationships_, records) != 0;
    }

    bool copy(CSDZip& zip, int index, const CTulStringW& name) const {
        const CSDUnZip& source = *state_.unzip;
        if (isLarge_ && source.IsVariableMemoryMap() != 0)
            return zip.CopyItemLargeMemory(source.zipHandle, source.GetMemoryMapHandle(),
                                           source.GetMemoryMapSize(), index, name) != 0;
        return zip.CopyItem(source.zipHandle, index, name) != 0;
    }

    bool writeContentTypes(CSDZip& zip) const {
        {
            const SerializerHandle serializer(CreateSerialize());
            if (!serializer || !serializer->OpenFile(types_.path().c_str())) return false;
            state_.package.GetContentTypes()->Write(serializer.get());
            state_.package.GetContentTypes()->Clear();
            if (serializer->Close() < 0) return false;
        }
        const CTulStringW name(kContentTypesName);
        return (isLarge_ ? zip.CompressLargeMemory(name, types_.path(), 1)
                         : zip.Compress(name, types_.path(), 1)) != 0;
    }

    bool writeRelationships(CSDZip& zip) {
        const CTulStringW name(kRootRelationships);
        const int size = static_cast<int>(relationships_.size());
        return (isLarge_ ? zip.CompressLargeMemory(name, relationships_.data(), size)
                         : zip.Compress(name, relationships_.data(), size)) != 0;
    }

    bool writeUserData(CSDZip& zip) const {
        IStorage* const storage = hasData_ ? OpenStorage(data_.path()) : CreateStorage(data_.path());
        if (!storage) return false;
        state_.userDataConverter->ReadStream(storage);
        return storage->Release() != 0 && zip.Compress(dataItem_, data_.path(), 1) != 0;
    }

    PackageState& state_;
    bool isLarge_;
    WorkFile data_{"Data"};
    WorkFile types_{"ContentType"};
    CTulStringW dataItem_;
    bool hasData_ = false;
    std::vector<std::pair<CTulStringW, int>> copies_;
    ByteVector relationships_;
};

/// The size of the mapping for the new archive; 0 when archives of that size can't be built in memory.
int CapacityFor(unsigned sourceSize) {
    const std::uint64_t capacity = std::uint64_t{sourceSize} * 2 + kSlack;
    return capacity > static_cast<std::uint64_t>(std::numeric_limits<int>::max())
               ? 0
               : static_cast<int>(capacity);
}

/// Converts the archive that the package was just bound to into the one that `create` makes and `close` ends.
template<typename Create, typename Close>
int Convert(PackageState& state, bool isOpen, bool isLarge, Create create, Close close) {
    if (!isOpen) return state.fail(Status::NotAnArchive);
    Conversion conversion(state, isLarge);
    if (!conversion.prepare()) return 0;
    CSDZip zip;
    zip.SetDiagnostics(state.diagnostics);
    if (create(zip) == 0) return state.fail(Status::CouldNotWrite);
    if (!conversion.write(zip)) {
        zip.Discard();
        return 0;
    }
    return close(zip) != 0 ? 1 : state.fail(Status::CouldNotWrite);
}

} // namespace

int IPackage::ConvertUserDataFile(const unsigned short* path) {
    PackageState& state = *state_;
    if (!path || HasUserDataModule() == 0) return 0;
    state.bindNew();
    LockFiles(state.storage.folder());
    const bool isOpen = state.unzip->OpenForItems(path) != 0;
    const auto close = [&](CSDZip& zip) {
        const int result = zip.CloseFile();
        state.bind(nullptr);
        return result;
    };
    if (Convert(
            state, isOpen, false, [&](CSDZip& zip) { return zip.CreareZipFile(path); }, close) == 0)
        return 0;
    const auto open = [&](CSDUnZip& unzip) { return unzip.OpenZipFileNonDecompress(path); };
    if (state.rebind(open) == 0) return 0;
    LockFiles(path);
    state.sourcePath = path;
    return 1;
}

int IPackage::ConvertUserDataMemory(void* data, unsigned size, MemoryArchive* out) {
    PackageState& state = *state_;
    if (!out || HasUserDataModule() == 0) return 0;
    *out = {};
    state.bindNew();
    const bool isOpen = state.unzip->OpenZipFileNonDecompress(data, size) != 0;
    const int capacity = CapacityFor(size);
    ODF::MemoryMapping mapping = ODF::MemoryMapping::create(static_cast<std::size_t>(capacity));
    ODF::MemoryView view(mapping.handle(), static_cast<std::size_t>(capacity), true);
    int used = 0;
    if (Convert(
            state, isOpen, false, [&](CSDZip& zip) { return zip.CreareZipFile(view.data(), capacity); },
            [&](CSDZip& zip) { return zip.CloseMemoryFile(used); }) == 0)
        return 0;
    const auto byteCount = static_cast<unsigned>(used);
    if (state.rebind(
            [&](CSDUnZip& unzip) { return unzip.OpenZipFileNonDecompress(view.data(), byteCount); }) == 0)
        return 0;
    *out = {mapping.release(), view.release(), byteCount};
    return 1;
}

int IPackage::ConvertUserDataLargeMemory(void* mapping, unsigned size, MemoryArchive* out) {
    PackageState& state = *state_;
    if (!out || HasUserDataModule() == 0) return 0;
    *out = {};
    state.bindNew();
    const bool isOpen = state.unzip->LargeMemoryOpenZipFileNonDecompress(mapping, size) != 0;
    const int capacity = CapacityFor(size);
    ODF::MemoryMapping made = ODF::MemoryMapping::create(static_cast<std::size_t>(capacity));
    int used = 0;
    if (Convert(
            state, isOpen, true,
            [&](CSDZip& zip) { return zip.LargeMemoryCreareZipFile(made.handle(), capacity); },
            [&](CSDZip& zip) { return zip.CloseLargeMemoryFile(used); }) == 0)
        return 0;
    const auto byteCount = static_cast<unsigned>(used);
    if (state.rebind([&](CSDUnZip& unzip) {
            return unzip.LargeMemoryOpenZipFileNonDecompress(made.handle(), byteCount);
        }) == 0)
        return 0;
    ODF::MemoryMapping::adopt(mapping).close();
    *out = {made.release(), nullptr, byteCount};
    return 1;
}

void ReleaseMemoryArchive(MemoryArchive& archive) {
    ODF::MemoryMapping mapping = ODF::MemoryMapping::adopt(archive.mapping);
    if (archive.view) ODF::MemoryView::unmapReleased(archive.view, mapping.size());
    archive = {};
}

} // namespace SDPackage
