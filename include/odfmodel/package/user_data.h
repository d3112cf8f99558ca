#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>
#include <odfmodel/package/document_type.h>
#include <odfmodel/package/relationship.h>
#include <odfmodel/package/storage.h>
#include <odfmodel/package/types.h>

#include <memory>

namespace SDPackage {

class IContentTypes;

/// The entry points of the user data module, an optional library of someone else that owns the content of one
/// member of an Open Packaging package. The module exports six C functions under the names of the fields.
class ODFMODEL_API UserDataModule {
public:
    UserDataModule() = default;
    UserDataModule(const UserDataModule&) = delete;
    UserDataModule& operator=(const UserDataModule&) = delete;
    /// Unloads the module.
    ~UserDataModule();

    /// Gives a handle for work on `stream`, which may be null.
    void* (*Open)(IStream* stream) = nullptr;
    /// Must exist; nothing here calls it.
    void (*Create)() = nullptr;
    /// With `fill` 1 the module fills the stream, with 0 it takes in what the stream holds. 0 means failure.
    int (*Write)(void* handle, IStream* stream, int fill) = nullptr;
    void (*Close)(void* handle) = nullptr;
    /// The prefix of this module; null means that it can't be used.
    const unsigned short* (*GetUserPrefixName)() = nullptr;
    /// The name of the stream in the storage; null means that it can't be used.
    const unsigned short* (*GetUserStreamName)() = nullptr;
    /// Null while nothing is loaded; the entry points are valid only while it is set.
    void* module = nullptr;

    /// Loads the module that the user's settings name: the value "module" of the key
    /// `Software\TUL\Shared\Serializer`. 1 when it is ready.
    int Load();
    void Unload() noexcept;
};

/// The record of the user data member.
class ODFMODEL_API UserDataPart {
public:
    UserDataPart() = default;
    UserDataPart(const UserDataPart&) = delete;
    UserDataPart& operator=(const UserDataPart&) = delete;
    virtual ~UserDataPart();

    /// Loads the module again; 1 when it can be used.
    int Init();
    /// 1 when the module is there or can be loaded now.
    int IsAvailable();
    /// Makes the names from the name of the stream; null or empty stands for "userData".
    void SetStreamName(const unsigned short* stream);
    void SetStreamName(const PlainText auto& stream) { SetStreamName(CTulStringW(stream).c_str()); }
    /// The name in the form of the module: "/ppt/media/a.bin" becomes /ppt/media/Ab/Aba.bin with the prefix
    /// Ab. The name itself without a module.
    void ToUserForm(const CTulStringW& in, CTulStringW& out);

    /// "/", the stream's name and the extension.
    const CTulStringW& GetName() const noexcept { return name_; }
    /// The member's name in the package with its leading "/".
    const CTulStringW& GetPartName() const noexcept { return partName_; }
    /// The file that holds the compound storage; empty at first.
    const CTulStringW& GetLocalPath() const noexcept { return localPath_; }
    void SetLocalPath(const CTulStringW& path) { localPath_ = path; }

private:
    std::unique_ptr<UserDataModule> table_;
    CTulStringW name_;
    CTulStringW extension_;
    CTulStringW partName_;
    CTulStringW localPath_;
};

/// Moves the user data between a storage file and the module, and knows how the index of a package changes
/// when its main part takes the form of the module.
class ODFMODEL_API UserDataConverter {
public:
    UserDataConverter();
    UserDataConverter(const UserDataConverter&) = delete;
    UserDataConverter& operator=(const UserDataConverter&) = delete;
    ~UserDataConverter();

    /// 1 when the module is loaded or can be loaded now.
    int IsAvailable();
    /// Opens the storage file, or creates it with `create`, and lets the module take its stream in
    /// (`toModule`) or fill it. 0 when the storage can't be opened or not be written; what the module returns
    /// isn't told.
    int ExchangeStorage(const unsigned short* path, int toModule, int create);
    /// Lets the module take the stream in. Without such a stream an empty one is made and the result is 0.
    int ReadStream(IStorage* storage);
    /// Lets the module fill the stream, which is made when it is missing.
    int WriteStream(IStorage* storage);
    /// The module's prefix; empty without a module.
    CTulStringW GetPrefix();

    void RewriteContentTypes(IContentTypes* registry);
    void RewriteRelationship(RelationshipRecord& record);
    void RewriteItemName(CTulStringW& name);
    /// Appends the text of a `.rels` member in UTF-8 to `out`; the records are rewritten. 1 for success.
    int WriteRelationships(ByteVector& out, RelationshipVector& records);
    /// The member that holds the user data of a document of that type; empty for a type without one.
    static CTulStringW UserDataItemName(sd::SDDocType::DocumentType type);

private:
    std::unique_ptr<UserDataModule> table_;
};

/// Frees the memory that a conversion handed out; the record is empty afterwards.
ODFMODEL_API void ReleaseMemoryArchive(MemoryArchive& archive);

} // namespace SDPackage
