#include <odfmodel/package/user_data.h>

#include "package/index/index_writer.h"
#include "package/paths.h"
#include "package/user_data/families.h"

#include <odfmodel/package/content_types.h>

#include <memory>

namespace SDPackage {

namespace {

/// `path` with the module's prefix ahead of its file name.
CTulStringW Prefixed(Units path, const CTulStringW& prefix) {
    std::u16string result(FolderOf(path));
    result += prefix.view();
    result += FileNameOf(path);
    return result;
}

/// A stream of the storage under the module's name, ended with the scope.
using StreamHandle = std::unique_ptr<IStream, void (*)(IStream*)>;
StreamHandle Own(IStream* stream) {
    return {stream, [](IStream* ended) { ended->Release(); }};
}

int CallModule(const UserDataModule& table, IStream* stream, int fill) {
    void* const handle = table.Open(stream);
    const int result = table.Write(handle, stream, fill);
    table.Close(handle);
    return result != 0 ? 1 : 0;
}

} // namespace

UserDataConverter::UserDataConverter() : table_(std::make_unique<UserDataModule>()) {
    table_->Load();
}

UserDataConverter::~UserDataConverter() = default;

int UserDataConverter::IsAvailable() {
    return table_->Load();
}

int UserDataConverter::ExchangeStorage(const unsigned short* path, int toModule, int create) {
    IStorage* const storage = create != 0 ? CreateStorage(path) : OpenStorage(path);
    if (!storage) return 0;
    if (toModule != 0)
        ReadStream(storage);
    else
        WriteStream(storage);
    return storage->Release();
}

int UserDataConverter::ReadStream(IStorage* storage) {
    if (!storage || IsAvailable() == 0) return 0;
    const unsigned short* const name = table_->GetUserStreamName();
    if (const StreamHandle stream = Own(storage->OpenStream(name)))
        return CallModule(*table_, stream.get(), 0);
    Own(storage->CreateStream(name));
    return 0;
}

int UserDataConverter::WriteStream(IStorage* storage) {
    if (!storage || IsAvailable() == 0) return 0;
    const unsigned short* const name = table_->GetUserStreamName();
    StreamHandle stream = Own(storage->OpenStream(name));
    if (!stream) stream = Own(storage->CreateStream(name));
    return stream ? CallModule(*table_, stream.get(), 1) : 0;
}

CTulStringW UserDataConverter::GetPrefix() {
    return IsAvailable() != 0 ? CTulStringW(table_->GetUserPrefixName()) : CTulStringW();
}

void UserDataConverter::RewriteContentTypes(IContentTypes* registry) {
    if (!registry) return;
    const bool hasData = registry->FindPartName(ToUnits(kUserDataType.data())) != nullptr;
    for (const UserFamily& family : kUserFamilies) {
        const CTulStringW mainPart = PartNameOf(family.mainPart);
        if (registry->RemoveOverride(mainPart) == 0) continue;
        registry->AddOverride(PartNameOf(Prefixed(family.mainPart, GetPrefix()).view()),
                              ToUnits(family.contentType.data()));
        if (!hasData) registry->AddOverride(PartNameOf(family.dataItem), ToUnits(kUserDataType.data()));
        return;
    }
}

void UserDataConverter::RewriteRelationship(RelationshipRecord& record) {
    constexpr Units kStandardType =
        u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument";
    constexpr Units kUserType = u"http://schemas.tul/office/2017/relationships/officeDocument";
    if (record.type != kStandardType) return;
    record.type = CTulStringW(kUserType);
    for (const UserFamily& family : kUserFamilies)
        if (record.target == family.mainPart) {
            record.target = Prefixed(family.mainPart, GetPrefix());
            return;
        }
}

void UserDataConverter::RewriteItemName(CTulStringW& name) {
    for (const UserFamily& family : kUserFamilies)
        for (const Units item : {family.mainPart, family.relationshipsItem})
            if (name == item) {
                name = Prefixed(item, GetPrefix());
                return;
            }
}

int UserDataConverter::WriteRelationships(ByteVector& out, RelationshipVector& records) {
    const auto append = [&out](Units text) {
        const std::string utf8 = ODF::ToUtf8(text);
        out.insert(out.end(), utf8.begin(), utf8.end());
    };
    for (const Units text : kRelationshipsStart)
        append(text);
    for (RelationshipRecord& record : records) {
        RewriteRelationship(record);
        IRelationship relationship;
        relationship.SetId(record.id.c_str());
        relationship.SetType(record.type.c_str());
        relationship.SetTarget(record.target.c_str());
        relationship.SetTargetMode(record.targetMode);
        append(relationship.ToXml().view());
    }
    append(kRelationshipsEnd);
    return 1;
}

CTulStringW UserDataConverter::UserDataItemName(sd::SDDocType::DocumentType type) {
    for (const UserFamily& family : kUserFamilies)
        for (const int member : family.types)
            if (member == static_cast<int>(type)) return CTulStringW(family.dataItem);
    return {};
}

} // namespace SDPackage
