#include <odfmodel/package/package.h>

#include "package/handles.h"
#include "package/index/index_writer.h"
#include "package/open/member_reader.h"
#include "package/open/open_packaging_index.h"
#include "package/package_state.h"
#include "package/user_data/families.h"
#include "platform/files.h"

#include <odfmodel/serial/zip.h>

#include <memory>
#include <new>
#include <unordered_set>

namespace SDPackage {

namespace {

using ODF::NoteCode;
using ODF::Severity;
using ODF::Status;
namespace platform = ODF::platform;

constexpr Units kManifestKey = u"META-INF\\manifest.xml";

/// Extensions of data that is compressed already; bitmaps don't count in word documents.
constexpr Units kMediaExtensions[] = {u".AVI", u".WMV", u".JPEG", u".JPG", u".PNG", u".MP3", u".WAV"};
constexpr Units kBitmapExtension = u".BMP";

/// A package path as the key of the write list: without the leading `/`.
Units KeyOf(Units packagePath) {
    return packagePath.starts_with(u'/') ? packagePath.substr(1) : packagePath;
}

class Saving {
public:
    Saving(PackageState& state, const unsigned short* folder) : state_(state) {
        const CTulStringW rootFolder(state.registry.root().GetLocalPath());
        folder_ = folder ? CTulStringW(folder) : rootFolder;
        if (!folder_.IsEmpty()) state_.storage.adoptFolder(folder_, !folder || folder_ == rootFolder);
    }

    int writeIndex() {
        if (IsOdf(state_.documentType)) return writeOdfIndex();
        return IsOpenPackaging(state_.documentType) ? writeOpenPackagingIndex() : 1;
    }

    int writeArchive(const unsigned short* path, bool isPacked) {
        CSDZip zip;
        zip.SetDiagnostics(state_.diagnostics);
        if (!path || zip.CreareZipFile(path) == 0)
            return state_.fail(Status::CouldNotWrite, NoteCode::WriteFailed, {},
                               "the target can't be written");
        if (addMembers(zip, isPacked)) return zip.CloseFile() != 0 ? 1 : state_.fail(Status::CouldNotWrite);
        zip.Discard();
        return state_.fail(Status::CouldNotWrite);
    }

private:
    int writeOdfIndex() {
        const Map entries = MakeFolderEntries(state_.registry.parts());
        state_.folderEntries = entries;
        if (!writeMember(kManifestKey, kManifestName, [&](CSDSerializer& serializer) {
                WriteManifest(serializer, state_.registry.parts(), entries);
            }))
            return 0;
        for (const auto& [name, part] : OdfMembers(state_.registry.parts()))
            if (WithBackslashes(name.view()) != kManifestKey) state_.writeList[name] = part->GetLocalPath();
        return 1;
    }

    int writeOpenPackagingIndex() {
        IContentTypes& types = *state_.package.GetContentTypes();
        const bool usesUserData = state_.usesUserData();
        if (usesUserData)
            types.AddOverride(state_.userDataPart->GetPartName(), ToUnits(kUserDataType.data()));
        if (state_.keepsFile()) planFile();
        if (!writeMember(kContentTypesName, kContentTypesName,
                         [&](CSDSerializer& serializer) { types.Write(&serializer); }))
            return 0;
        for (const auto& [source, set] : state_.registry.relationshipSets()) {
            if (source.IsEmpty() || isGone(source)) continue; // no part has an empty name
            enterTargets(*set, usesUserData);
            const std::u16string name = RelationshipsMemberName(source.view());
            if (!writeMember(name, name, [&, &owner = source, &links = set](CSDSerializer& serializer) {
                    if (state_.keepsFile())
                        WriteKeptRelationshipSet(serializer, *links, owner, state_.kept.links[owner],
                                                 state_.registry);
                    else
                        WriteRelationshipSet(serializer, *links, owner);
                }))
                return 0;
        }
        return 1;
    }

    /// Finds what of the file is still there, before anything of the index is written: the write list and the
    /// content types tell about all parts that a chain of links leads to and of no other.
    void planFile() {
        for (const auto& [name, file] : state_.kept.written) {
            const auto entry = state_.writeList.find(name);
            if (entry != state_.writeList.end() && entry->second == file) state_.writeList.erase(entry);
        }
        const FileMap callers = state_.writeList;
        std::vector<IRelationships*> starts{state_.registry.root().GetRelationships()};
        state_.registry.forEach([&](const IPart& part) {
            const PartOrigin* const origin = state_.registry.origin(part);
            if (origin && !origin->isIsland) return;
            live_.insert(&part);
            starts.push_back(part.GetRelationships());
        });
        live_.merge(ReachedParts(std::move(starts)));
        for (const auto& [source, set] : state_.registry.relationshipSets())
            if (!source.IsEmpty() && !isGone(source)) enterTargets(*set, state_.usesUserData());
        tellContentTypes();
        for (const CTulStringW& name : state_.kept.others) {
            const CTulStringW key(KeyOf(name.view()));
            state_.writeList.try_emplace(key, state_.storage.pathOf(key.view()).text());
        }
        state_.kept.written.clear();
        for (const auto& [name, file] : state_.writeList)
            if (!callers.contains(name)) state_.kept.written.emplace(name, file);
    }

    /// Whether the set's source was a part of the file and is no longer one.
    bool isGone(const CTulStringW& source) const {
        if (!state_.keepsFile() || !state_.kept.sources.contains(source)) return false;
        const IPart* part = state_.package.GetPart(source);
        if (!part) part = state_.package.GetPart(UnescapeTarget(source));
        return !part || !live_.contains(part);
    }

    /// Takes the content types of parts that are gone out of the registry and enters those of new ones.
    void tellContentTypes() {
        IContentTypes& types = *state_.package.GetContentTypes();
        for (const KeptMember& member : state_.kept.members)
            if (!member.partName.IsEmpty() &&
                !state_.writeList.contains(CTulStringW(KeyOf(member.name.view()))))
                types.RemoveOverride(member.partName);
        if (!state_.kept.isOpen)
            types.AddDefault(ToUnits(u"rels"),
                             ToUnits(u"application/vnd.openxmlformats-package.relationships+xml"));
        for (const IPart* const part : live_) {
            if (part->GetTargetMode() != TargetModeInternal || *part->GetContentType() == 0) continue;
            const PartOrigin* const origin = state_.registry.origin(*part);
            if (origin && origin->contentType == part->GetContentType()) continue;
            const CTulStringW name(std::u16string(u"/").append(keyOf(*part).view()));
            const unsigned short* const told = types.GetContentType(name, nullptr);
            if (told && ToView(told) == ToView(part->GetContentType())) continue;
            types.RemoveOverride(name);
            types.AddOverride(name, part->GetContentType());
        }
    }

    /// The name of the part's member: that which it had, as long as the part is in its place.
    CTulStringW keyOf(const IPart& part) const {
        const PartOrigin* const origin = state_.registry.origin(part);
        return CTulStringW(KeyOf(origin && !origin->member.IsEmpty() ? origin->member.view()
                                                                     : ToView(part.GetPackagePath())));
    }

    /// Enters the internal parts that a set leads to in the write list.
    void enterTargets(IRelationships& set, bool usesUserData) {
        const std::unique_ptr<IPartList> list(set.GetPartList(nullptr));
        for (int i = 0; list && i < list->Count(); ++i) {
            const IPart& part = *list->GetPart(i);
            if (part.GetTargetMode() != TargetModeInternal) continue;
            CTulStringW path = keyOf(part);
            CTulStringW file(part.GetLocalPath());
            if (file.IsEmpty()) file = state_.storage.pathOf(path.view()).text();
            if (!platform::IsFile(file) && state_.registry.isAbsent(part)) {
                if (isNoted_.insert(&part).second)
                    state_.note(NoteCode::MemberMissing, Severity::Warning, MemberName(path.view()),
                                "a relationship leads to a member that the package never held");
                continue;
            }
            if (usesUserData && part.GetUserFlag() != 0)
                state_.userDataPart->ToUserForm(CTulStringW(part.GetPackagePath()), path);
            state_.writeList[CTulStringW(KeyOf(path.view()))] = file;
        }
    }

    /// Writes an index member to its file below the folder, or through the caller's memory into the caller's
    /// archive, and enters it in the write list.
    template<typename Write>
    bool writeMember(Units key, Units name, Write write) {
        if (folder_.IsEmpty()) return fault(name, "there is no folder for the package's index");
        const platform::Path file = state_.storage.pathOf(name);
        const SerializerHandle serializer(CreateSerialize());
        if (!serializer) return fault(name, "out of memory");
        serializer->SetDiagnostics(state_.diagnostics);
        CSDZip* const external = state_.externalZip;
        const bool isOpen = external ? serializer->OpenMemory(state_.scratchBuffer, state_.scratchSize)
                                     : serializer->OpenFile(file.text().c_str());
        if (!isOpen) return fault(name, "the package's index can't be written");
        write(*serializer);
        const int byteCount = serializer->Close();
        if (byteCount < 0) return fault(name, "the package's index can't be written whole");
        state_.writeList[CTulStringW(key)] = file.text();
        if (state_.keepsFile()) state_.kept.written[CTulStringW(key)] = file.text();
        if (external && external->Compress(CTulStringW(key), state_.scratchBuffer, byteCount) == 0)
            return fault(name, "the package's index doesn't go into the caller's archive");
        return true;
    }

    bool fault(Units name, std::string_view why) const {
        state_.fail(Status::CouldNotWrite, NoteCode::WriteFailed, MemberName(name), why);
        return false;
    }

    bool addMembers(CSDZip& zip, bool isPacked) {
        if (state_.usesUserData() && !addUserData(zip)) return false;
        for (const auto& [name, file] : state_.writeList) {
            if (HasParentStep(name.view())) return fault(name.view(), "the path leads out of the package");
            if (!bringToDisk(name, file)) return false;
            const int stored = isPacked && state_.package.IsMediaFile(file) ? 1 : 0;
            if (zip.Compress(name, file, stored) == 0) return fault(name.view(), "a part can't be saved");
            state_.yield();
        }
        return true;
    }

    bool addUserData(CSDZip& zip) {
        UserDataPart& part = *state_.userDataPart;
        state_.package.ExportUserData(&part, 0);
        const CTulStringW name(KeyOf(part.GetPartName().view()));
        return zip.Compress(name, part.GetLocalPath(), 0) != 0 ||
               fault(name.view(), "the user data can't be saved");
    }

    /// Extracts a member that has stayed in the archive until now.
    bool bringToDisk(const CTulStringW& name, const CTulStringW& file) {
        if ((state_.keepCompressed == 0 && !state_.kept.isOpen) || platform::IsFile(file)) return true;
        if (state_.isOther)
            return fault(name.view(), "the archive that holds this member was left for another one");
        if (!state_.unzip) return true; // the archive's own message follows
        CTulStringW member(WithSlashes(name.view()));
        if (state_.kept.isOpen && state_.unzip->GetItemIndex(member) < 0)
            member = CTulStringW(std::u16string(u"/").append(WithSlashes(name.view())));
        if (state_.unzip->GetItemIndex(member) < 0) return true; // the archive's own message follows
        return platform::CreateFolders(platform::Path(file).parent(), true) &&
                       state_.unzip->Decompress(member, file.c_str()) != 0
                   ? true
                   : fault(name.view(), "a member can't be taken over from the old archive");
    }

    PackageState& state_;
    CTulStringW folder_;
    std::unordered_set<const IPart*> live_; ///< parts that the package still holds; where it keeps its file
    std::unordered_set<const IPart*> isNoted_;
};

} // namespace

bool IPackage::IsMediaFile(const unsigned short* path) const {
    const Units extension = ExtensionOf(ToView(path));
    for (const Units media : kMediaExtensions)
        if (EqualIgnoringCase(extension, media)) return true;
    return EqualIgnoringCase(extension, kBitmapExtension) && !IsWordFamily(state_->documentType);
}

int IPackage::Save(const unsigned short* path, const unsigned short* folder, int packed) {
    if (!state_->isSound)
        return state_->fail(Status::NothingToSave, NoteCode::WriteFailed, {},
                            "nothing was read that could take the place of a package");
    try {
        Saving saving(*state_, folder);
        if (saving.writeIndex() == 0) return 0;
        if (state_->externalZip) return state_->succeed();
        LockFiles(state_->storage.folder());
        return saving.writeArchive(path, packed != 0) != 0 ? state_->succeed() : 0;
    } catch (const std::bad_alloc&) {
        return state_->fail(Status::OutOfMemory);
    }
}

void IPackage::WriteContentTypes(const unsigned short* folder, const unsigned short* fileName) {
    const CTulStringW name = fileName ? CTulStringW(fileName) : CTulStringW(kContentTypesName);
    const platform::Path file = platform::Path(folder) / platform::Path(name);
    const SerializerHandle serializer(CreateSerialize());
    if (!serializer) return;
    serializer->SetDiagnostics(state_->diagnostics);
    if (!serializer->OpenFile(file.text().c_str())) return;
    GetContentTypes()->Write(serializer.get());
    if (serializer->Close() < 0)
        state_->fail(Status::CouldNotWrite, NoteCode::WriteFailed, MemberName(name.view()),
                     "the content types can't be written whole");
    GetContentTypes()->Clear();
}

} // namespace SDPackage
