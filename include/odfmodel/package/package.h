#pragma once

/// @file
/// A package as files: members in a temporary folder, records of parts, and how they refer to one another. It
/// knows no element; for documents, `ODF::Document` is easier.
///
///     SDPackage::IPackage package;
///     const CTulStringW from("report.odt"), to("copy.odt");
///     if (package.Open(from.c_str(), nullptr, 0, nullptr) == 0) return 1;
///     for (const auto& [path, part] : *package.GetParts())
///         std::cout << path.utf8() << ' ' << CTulStringW(part->GetLocalPath()).utf8() << '\n';
///     if (package.Save(to.c_str(), nullptr, 0) == 0) return 1;

#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/string.h>
#include <odfmodel/core/target_mode.h>
#include <odfmodel/export.h>
#include <odfmodel/package/content_types.h>
#include <odfmodel/package/document_type.h>
#include <odfmodel/package/part.h>
#include <odfmodel/package/relationship.h>
#include <odfmodel/package/relationships.h>
#include <odfmodel/package/types.h>
#include <odfmodel/package/user_data.h>

#include <functional>
#include <memory>
#include <vector>

class CSDUnZip;
class CSDZip;

namespace ODF {
class Diagnostics;
} // namespace ODF

namespace SDPackage {

class CManifestHandler;
struct PackageState;

/// One document file on disk: a zip archive with an index that tells what its members are. It turns the
/// archive into a tree of part records with their types and links, and writes such a tree back. It knows
/// nothing of elements.
///
/// `int` results are non-zero for success; why something failed is in the diagnostics. A package belongs
/// to one thread at a time, different packages never meet. Pointers handed out are borrowed unless an
/// operation says otherwise; the ones to parts, relationships and the registry live until the package is
/// opened again or goes.
class ODFMODEL_API IPackage {
public:
    using DocumentType = sd::SDDocType::DocumentType;

    /// An empty package. It looks for the user data module; a missing one changes nothing.
    IPackage();
    IPackage(const IPackage&) = delete;
    IPackage& operator=(const IPackage&) = delete;

    /// Opens the package file at `path`. `folder` is where the members are extracted, null for a new
    /// temporary folder; with `keepCompressed` they stay in the archive. `unzip` is the reader to use, which
    /// the package takes over in any case, or null for a plain one. Non-zero when the index was read.
    virtual int Open(const unsigned short* path, const unsigned short* folder, int keepCompressed,
                     CSDUnZip* unzip);
    /// Opens an Open Packaging archive in memory, which stays the caller's and must outlive the package or
    /// its next open. `name` tells the type by its extension when a readable file is there; `folder` is
    /// where the members are extracted, null for nowhere.
    virtual int OpenMemory(void* data, unsigned size, const unsigned short* name,
                           const unsigned short* folder);
    /// Opens the extracted members in `folder`, which outlives the package. `type` 0 is found out.
    virtual int OpenFolder(const unsigned short* folder, DocumentType type);
    /// Writes the index into `folder`, null for the root part's local path, and all parts into a new archive
    /// at `path`. With `packed` members of media types are stored. The target is replaced only by a complete
    /// archive.
    virtual int Save(const unsigned short* path, const unsigned short* folder, int packed);

    /// The record of the user data member; never null.
    virtual UserDataPart* GetUserDataPart();
    /// Whether opening and saving pass through the user data module; 0 at construction.
    virtual void SetUseUserData(int use);
    virtual int GetUseUserData();
    /// Lets the module fill the part's storage file, or take it in with `fromStorage`.
    virtual int ExportUserData(UserDataPart* part, int fromStorage);
    /// Extracts the user data member and lets the module take it in.
    virtual int ImportUserData(UserDataPart* part, CSDUnZip* unzip);
    /// Makes a copy of the archive whose user data member is written again; `outPath` is its name, the
    /// caller's to delete.
    virtual int RepackUserData(UserDataPart* part, CSDUnZip* unzip, CTulStringW& outPath);
    virtual void SetUserDataPath(const unsigned short* path);
    virtual const unsigned short* GetUserDataPath();
    virtual int HasUserDataModule();
    /// Turns the package file at `path` into the form of the user data module; it stays as it was on failure.
    virtual int ConvertUserDataFile(const unsigned short* path);
    /// The same for an archive in memory or in a mapping; `out` receives the new archive, which belongs to
    /// the caller (see `ReleaseMemoryArchive`) and must outlive the package's use of it. A source mapping
    /// that was converted is closed.
    virtual int ConvertUserDataMemory(void* data, unsigned size, MemoryArchive* out);
    virtual int ConvertUserDataLargeMemory(void* mapping, unsigned size, MemoryArchive* out);
    virtual int ExchangeStorage(const unsigned short* path, int toModule, int create);
    /// The module's prefix; empty without a module.
    virtual CTulStringW GetUserPrefix();

    /// All parts by package path, ignoring case. Never null.
    virtual PartMap* GetParts();
    /// The root's first link to a part with the main content type of the document type; null when none.
    virtual IPart* GetMainPart();
    /// The same for the types of `AddMainDocumentType` in order; the first hit wins.
    virtual IPart* FindMainPart();
    /// The record that stands for the package itself; never null.
    virtual IPart* GetRootPart();
    virtual DocumentType GetDocType();
    /// The type by extension, else by the content of the package at `path`; 0 when unknown. The archive of a
    /// package that is open is closed.
    virtual DocumentType DetectDocumentType(const unsigned short* path);
    virtual void SetDocType(DocumentType type);
    virtual void AddMainDocumentType(DocumentType type);
    /// The registry, made on the first call: the variant for binary workbooks when that is the document type.
    virtual IContentTypes* GetContentTypes();
    /// A new empty set for that source; null when it has one.
    virtual IRelationships* CreateRelationships(const unsigned short* sourceName);
    virtual IRelationships* GetRelationships(const unsigned short* sourceName);
    /// A new empty part, owned by the caller until `AddPart`.
    virtual IPart* CreatePart();
    /// Takes `part` over and enters it under its package path. A part that stands under that path already
    /// stays there, and the new one is only owned. Returns `part`.
    virtual IPart* AddPart(IPart* part);
    /// The first part with that mode and local path, ignoring case; null when none.
    virtual IPart* FindPartByLocalPath(const unsigned short* localPath, TargetMode mode);
    /// The part of that package path, ignoring case; null when none.
    virtual IPart* GetPart(const unsigned short* packagePath);

    /// Reads `[Content_Types].xml` of an archive into the registry and into the two maps, which may be null,
    /// and takes the document type from it. The archive of a package that is open is closed.
    virtual int ReadContentTypes(void* data, unsigned size, Map* overrides, Map* defaults);
    virtual int ReadContentTypes(const unsigned short* path, Map* overrides, Map* defaults);
    virtual int ReadContentTypesLargeMemory(void* mapping, unsigned size, Map* overrides, Map* defaults);

    // Saving a plan. A failed member ends the operation with 0 and leaves a target file as it was. The "Save"
    // forms bind the package to the new archive, the "Write" forms leave it on the old one. In the memory
    // forms `size` is the capacity on entry; `reserved` isn't read.

    /// With `keepSource` the package stays on the old archive and the result is 1 even when the target can't
    /// be replaced, which then is as it was (the diagnostics tell).
    virtual int SaveItems(const unsigned short* path, ZipItemVector* items, int keepSource);
    /// Closes the open archive and writes `files` to `path`. A file that can't be read is left out and noted.
    virtual int RepackFromFiles(const unsigned short* path, FileMap* files);
    virtual int WriteItems(const unsigned short* path, ZipItemVector* items);
    virtual int SaveItemsToMemory(void* buffer, int* size, unsigned reserved, ZipItemVector* items);
    virtual int SaveItemsToLargeMemory(void* mapping, int* size, unsigned reserved, ZipItemVector* items,
                                       int keepSource);
    /// `size` isn't changed.
    virtual int WriteItemsToMemory(void* buffer, int* size, unsigned reserved, ZipItemVector* items);
    virtual int WriteItemsToLargeMemory(void* mapping, int* size, unsigned reserved, ZipItemVector* items);

    /// Extracts member `index` of the open archive to a file, or copies it into `buffer`: `size` is the
    /// capacity on entry and the byte count after it.
    virtual int ExtractItem(int index, const unsigned short* path);
    virtual int GetItem(int index, unsigned char* buffer, long* size);
    /// Reads one `.rels` member of the open archive.
    virtual int ReadRelationships(const unsigned short* itemName, RelationshipVector* out);
    /// The uncompressed size of a member in bytes.
    virtual int GetItemSize(int index, long* size);
    virtual int GetItemSize(const unsigned short* name, long* size, int* extra);
    /// Writes the registry to a file, "[Content_Types].xml" for a null `fileName`, and empties it.
    virtual void WriteContentTypes(const unsigned short* folder, const unsigned short* fileName);
    /// Takes `unzip` over; an old one is closed and deleted.
    virtual void SetUnZip(CSDUnZip* unzip);
    virtual CSDUnZip* GetUnZip();
    virtual void SetXmlCallback(XmlCallback callback);
    /// A caller's open archive: while it is set, `Save` puts the index members there and makes no archive.
    virtual CSDZip* GetExternalZip();
    virtual void SetExternalZip(CSDZip* zip);
    /// The caller's memory for one index member at a time while an external archive is set, and its size in
    /// bytes.
    virtual void* GetScratchBuffer();
    virtual void SetScratchBuffer(void* buffer);
    virtual int GetScratchSize();
    virtual void SetScratchSize(int size);
    /// Deletes the temporary folder and everything that the package owns.
    virtual ~IPackage();

    // Temporary storage.

    /// Takes `folder`, in which "%20" and "%22" stand for a blank and `"`, or for null a new empty folder
    /// that only this user can enter. 0 when there is no temporary directory. The folder goes with the
    /// package, unless it held something when it was taken.
    int SetTempFolder(const unsigned short* folder);
    const unsigned short* GetTempFolder() const;
    /// Notes all files of a folder, or one file, as those that this package relies on. Nothing keeps another
    /// process from deleting an open file here, and a handle for each of thousands of members would use up
    /// the process's supply, so that names are all that is kept.
    void LockFiles(const unsigned short* pattern);
    void UnlockFiles();
    const std::vector<CTulStringW>& GetLockedFiles() const;
    /// Deletes a folder with all it holds, read-only files too.
    static void DeleteFolderTree(const unsigned short* pattern);
    /// The name of a new empty file in the temporary directory, "<4 digits><extension of target>" or
    /// "<tag>_<6 digits>_secureTempFile.tmp"; empty when there is none. The caller deletes it.
    static CTulStringW MakeTempArchiveName(const unsigned short* target);
    static CTulStringW MakeTempWorkName(const unsigned short* tag);

    // What the package knows beside its parts.

    /// Folder entries of the manifest: folder with `\` after each step, and its media type.
    const Map& GetFolderEntries() const;
    /// Member name to file: what the next save writes besides the parts. It isn't emptied by a save.
    FileMap* GetWriteList();
    /// The package's own path where it has been stored.
    const unsigned short* GetSourcePath() const;
    /// True when a member of that media type or extension is stored by a save with `packed`.
    bool IsMediaFile(const unsigned short* path) const;

    /// Where the reasons of failures are noted; not owned, null for nowhere. Handed on to the archive and the
    /// readers. Each open clears it.
    void SetDiagnostics(ODF::Diagnostics* diagnostics);
    ODF::Diagnostics* GetDiagnostics() const;
    /// The bounds of the following opens.
    void SetLimits(const ODF::Limits& limits);
    const ODF::Limits& GetLimits() const;
    /// What the next open of an Open Packaging file keeps and the next save writes; `Fidelity::Listed` at
    /// first. With `Fidelity::Everything` relationships that nobody touches keep the type, the target and the
    /// place that they have in the file, members keep their names, members that no relationship leads to are
    /// kept, a new part gets its content type into the registry, and a part that no chain of links leads to
    /// any more goes, with its links and its content type. It also opens what is refused otherwise: files
    /// with macros and add-ins (".docm", ".xlam" and others), a `.rels` member without bytes, member names
    /// that begin with `/`. Of ODF packages it changes nothing.
    void SetFidelity(ODF::Fidelity fidelity);
    ODF::Fidelity GetFidelity() const;
    /// Called once for each member during saves and after each read of a member, so that the host can go on
    /// with its work; must return quickly. Empty for none.
    void SetHostTurn(std::function<void()> turn);

    // The same operations for literals, strings and views; an omitted folder stands for null.

    int Open(const PlainText auto& path, int keepCompressed = 0, CSDUnZip* unzip = nullptr) {
        return Open(CTulStringW(path).c_str(), nullptr, keepCompressed, unzip);
    }
    int Open(const PlainText auto& path, const PlainText auto& folder, int keepCompressed = 0,
             CSDUnZip* unzip = nullptr) {
        return Open(CTulStringW(path).c_str(), CTulStringW(folder).c_str(), keepCompressed, unzip);
    }
    int OpenMemory(void* data, unsigned size, const PlainText auto& name) {
        return OpenMemory(data, size, CTulStringW(name).c_str(), nullptr);
    }
    int OpenMemory(void* data, unsigned size, const PlainText auto& name, const PlainText auto& folder) {
        return OpenMemory(data, size, CTulStringW(name).c_str(), CTulStringW(folder).c_str());
    }
    int OpenFolder(const PlainText auto& folder, DocumentType type = sd::SDDocType::DocTypeUnknown) {
        return OpenFolder(CTulStringW(folder).c_str(), type);
    }
    int Save(const PlainText auto& path, int packed = 0) {
        return Save(CTulStringW(path).c_str(), nullptr, packed);
    }
    int Save(const PlainText auto& path, const PlainText auto& folder, int packed = 0) {
        return Save(CTulStringW(path).c_str(), CTulStringW(folder).c_str(), packed);
    }
    void SetUserDataPath(const PlainText auto& path) { SetUserDataPath(CTulStringW(path).c_str()); }
    int ConvertUserDataFile(const PlainText auto& path) {
        return ConvertUserDataFile(CTulStringW(path).c_str());
    }
    int ExchangeStorage(const PlainText auto& path, int toModule, int create) {
        return ExchangeStorage(CTulStringW(path).c_str(), toModule, create);
    }
    DocumentType DetectDocumentType(const PlainText auto& path) {
        return DetectDocumentType(CTulStringW(path).c_str());
    }
    IRelationships* CreateRelationships(const PlainText auto& sourceName) {
        return CreateRelationships(CTulStringW(sourceName).c_str());
    }
    IRelationships* GetRelationships(const PlainText auto& sourceName) {
        return GetRelationships(CTulStringW(sourceName).c_str());
    }
    IPart* FindPartByLocalPath(const PlainText auto& localPath, TargetMode mode) {
        return FindPartByLocalPath(CTulStringW(localPath).c_str(), mode);
    }
    IPart* GetPart(const PlainText auto& packagePath) { return GetPart(CTulStringW(packagePath).c_str()); }
    int ReadContentTypes(const PlainText auto& path, Map* overrides, Map* defaults) {
        return ReadContentTypes(CTulStringW(path).c_str(), overrides, defaults);
    }
    int SaveItems(const PlainText auto& path, ZipItemVector* items, int keepSource) {
        return SaveItems(CTulStringW(path).c_str(), items, keepSource);
    }
    int RepackFromFiles(const PlainText auto& path, FileMap* files) {
        return RepackFromFiles(CTulStringW(path).c_str(), files);
    }
    int WriteItems(const PlainText auto& path, ZipItemVector* items) {
        return WriteItems(CTulStringW(path).c_str(), items);
    }
    int ExtractItem(int index, const PlainText auto& path) {
        return ExtractItem(index, CTulStringW(path).c_str());
    }
    int ReadRelationships(const PlainText auto& itemName, RelationshipVector* out) {
        return ReadRelationships(CTulStringW(itemName).c_str(), out);
    }
    int GetItemSize(const PlainText auto& name, long* size, int* extra) {
        return GetItemSize(CTulStringW(name).c_str(), size, extra);
    }
    void WriteContentTypes(const PlainText auto& folder) {
        WriteContentTypes(CTulStringW(folder).c_str(), nullptr);
    }
    void WriteContentTypes(const PlainText auto& folder, const PlainText auto& fileName) {
        WriteContentTypes(CTulStringW(folder).c_str(), CTulStringW(fileName).c_str());
    }
    int SetTempFolder(const PlainText auto& folder) { return SetTempFolder(CTulStringW(folder).c_str()); }
    void LockFiles(const PlainText auto& pattern) { LockFiles(CTulStringW(pattern).c_str()); }
    static void DeleteFolderTree(const PlainText auto& pattern) {
        DeleteFolderTree(CTulStringW(pattern).c_str());
    }
    static CTulStringW MakeTempArchiveName(const PlainText auto& target) {
        return MakeTempArchiveName(CTulStringW(target).c_str());
    }
    static CTulStringW MakeTempWorkName(const PlainText auto& tag) {
        return MakeTempWorkName(CTulStringW(tag).c_str());
    }
    bool IsMediaFile(const PlainText auto& path) const { return IsMediaFile(CTulStringW(path).c_str()); }

private:
    friend class CManifestHandler;
    std::unique_ptr<PackageState> state_;
};

/// A new package; the caller deletes it.
ODFMODEL_API IPackage* CreatePackage();

} // namespace SDPackage
