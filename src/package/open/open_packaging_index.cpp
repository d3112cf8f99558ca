#include "package/open/open_packaging_index.h"

#include "package/open/own_names.h"
#include "platform/files.h"

#include <odfmodel/package/handlers.h>

#include <optional>
#include <string>
#include <unordered_set>

namespace SDPackage {

namespace {

using ODF::NoteCode;
using ODF::Severity;
using ODF::Status;

constexpr Units kFolder = u"_rels/";
constexpr Units kExtension = u".rels";

/// What the name of a `.rels` member tells, all with a leading `/`.
struct RelationshipsName {
    Units base;            ///< the folder that targets start from
    std::u16string source; ///< the part whose links these are
};

std::optional<RelationshipsName> ParseRelationshipsName(Units name) {
    const auto at = name.rfind(kFolder);
    if (at == Units::npos || at == 0 || name[at - 1] != u'/' || !name.ends_with(kExtension))
        return std::nullopt;
    RelationshipsName result;
    result.base = name.substr(0, at);
    const Units file = name.substr(at + kFolder.size());
    result.source =
        std::u16string(result.base) + std::u16string(file.substr(0, file.size() - kExtension.size()));
    return result;
}

class IndexBuilder {
public:
    IndexBuilder(PackageState& state, IndexReader& reader, const OwnContentTypes& types)
        : state_(state), reader_(reader), types_(types),
          members_(*state.unzip->itemTable, state.keepsFile()) {}

    int readAll() {
        for (const auto& [name, item] : *state_.unzip->itemTable)
            if (item.index >= 0 && !readOne(name)) return 0;
        linkSets();
        if (state_.keepsFile()) keepFile();
        return 1;
    }

private:
    bool readOne(const CTulStringW& member) {
        std::u16string name(member.view());
        if (!name.starts_with(u'/')) name.insert(name.begin(), u'/');
        const auto parsed = ParseRelationshipsName(name);
        if (!parsed) return true;
        RelationshipVector records;
        CRelationshipListHandler handler(records);
        if (reader_.read(member, handler) == 0) return refuse(member, "the relationships can't be read");
        IRelationships* const set = state_.package.CreateRelationships(CTulStringW(parsed->source).c_str());
        if (!set) return refuse(member, "a second set of relationships for one part");
        std::vector<KeptLink> links;
        for (const RelationshipRecord& record : records) {
            const IPart* const part = addTarget(record, parsed->base, *set);
            if (!part) return refuse(member, "two relationships have one id");
            if (state_.keepsFile()) links.push_back({record.id, record.type, record.writtenTarget, part});
        }
        indexMembers_.insert(&member);
        if (state_.keepsFile()) state_.kept.links[CTulStringW(parsed->source)] = std::move(links);
        return true;
    }

    bool refuse(const CTulStringW& member, std::string_view why) const {
        state_.note(NoteCode::General, Severity::Error, MemberName(member.view()), why);
        return false;
    }

    /// The part that the record leads to; null when the set has one of that id already.
    IPart* addTarget(const RelationshipRecord& record, Units base, IRelationships& set) {
        const bool isExternal = record.targetMode == TargetModeExternal;
        CTulStringW path = isExternal ? record.target : ResolveTarget(base, record.target.view());
        if (path == u"/") path = CTulStringW(u"//");
        IPart* part = state_.package.GetPart(path);
        // Two addresses that differ in case are two: parts beyond the first aren't listed, only linked.
        if (part && isExternal && state_.keepsFile() && path != part->GetPackagePath()) {
            IPart*& other = furtherAddresses_[path];
            if (!other) other = makePart(record, path, isExternal);
            part = other;
        }
        if (!part) part = makePart(record, path, isExternal);
        return set.AddPart(part, record.id.c_str());
    }

    IPart* makePart(const RelationshipRecord& record, const CTulStringW& path, bool isExternal) {
        IContentTypes* const types = state_.package.GetContentTypes();
        std::unique_ptr<IPart> part(state_.package.CreatePart());
        part->SetTargetMode(record.targetMode);
        part->SetContentType(types->GetContentType(path, record.type));
        part->SetPartType(types->GetKind(path));
        part->SetRelationType(record.type.c_str());
        part->SetPackagePath(path.c_str());
        if (isExternal)
            part->SetLocalPath(path.c_str());
        else
            placeOnDisk(*part, WithoutLeadingSeparator(path.view()));
        part->SetPartName(isExternal ? path : CTulStringW(FileNameOf(path.view())));
        IPart* const added = state_.package.AddPart(part.release());
        if (isExternal && state_.keepsFile()) setOrigin(*added, {});
        return added;
    }

    void setOrigin(IPart& part, const CTulStringW& member) {
        state_.registry.setOrigin(part, {part.GetPackagePath(), part.GetRelationType(), part.GetContentType(),
                                         part.GetTargetMode(), member, false});
    }

    void placeOnDisk(IPart& part, Units name) {
        const CTulStringW* const member = members_.find(name);
        part.SetLocalPath(
            state_.storage.pathOf(member ? WithoutLeadingSeparator(member->view()) : name).text().c_str());
        if (member) return keepMember(part, *member, name);
        state_.registry.markAbsent(part);
        if (state_.keepsFile()) setOrigin(part, {});
        state_.note(NoteCode::MemberMissing, Severity::Warning, MemberName(name),
                    "a relationship leads to a member that isn't there");
    }

    /// Remembers how the archive spells the member, where that isn't the part's own name.
    void keepMember(IPart& part, const CTulStringW& member, Units name) {
        if (!state_.keepsFile()) {
            // A member whose name has the escapes of the link keeps them: readers look for it so.
            if (member.view() != name && member == EscapeTarget(CTulStringW(name))) setOrigin(part, member);
            return;
        }
        if (const CTulStringW* const type = types_.typeOf(member)) part.SetContentType(type->c_str());
        setOrigin(part, member);
        const CTulStringW* const partName = types_.overrideOf(member);
        state_.kept.members.push_back({member, partName ? *partName : CTulStringW()});
        indexMembers_.insert(&member);
        const ODF::platform::Path local(part.GetLocalPath());
        // Names that begin with `/` were passed over by the extraction.
        if (member.view().starts_with(u'/') && state_.keepCompressed == 0 && !HasParentStep(name) &&
            ODF::platform::CreateFolders(local.parent(), true))
            state_.unzip->Decompress(member, local.text().c_str());
    }

    /// Remembers what a save needs to write the file's own index again.
    void keepFile() {
        state_.kept.isOpen = true;
        for (const auto& [name, item] : *state_.unzip->itemTable) {
            if (item.index < 0 || indexMembers_.contains(&name) ||
                EqualIgnoringCase(WithoutLeadingSeparator(name.view()), kContentTypesName))
                continue;
            state_.kept.others.push_back(name);
        }
        const auto reached = ReachedParts({state_.registry.root().GetRelationships()});
        std::vector<const IPart*> islands;
        for (const auto& [part, origin] : state_.registry.origins())
            if (!reached.contains(part)) islands.push_back(part);
        for (const IPart* const part : islands)
            state_.registry.setIsland(*part);
    }

    void linkSets() {
        for (const auto& [source, set] : state_.registry.relationshipSets()) {
            IPart* part = state_.package.GetPart(source);
            if (!part && state_.keepsFile()) part = state_.package.GetPart(UnescapeTarget(source));
            if (part && state_.keepsFile()) state_.kept.sources.insert(source);
            if (part)
                part->SetRelationships(set.get());
            else if (source == u"/")
                state_.package.GetRootPart()->SetRelationships(set.get());
        }
    }

    PackageState& state_;
    IndexReader& reader_;
    const OwnContentTypes& types_;
    MemberNames members_;
    std::map<CTulStringW, IPart*> furtherAddresses_;
    std::unordered_set<const CTulStringW*> indexMembers_; ///< names in the item table that have their place
};

} // namespace

CTulStringW ResolveTarget(Units base, Units target) {
    // An absolute target is taken as it is, unless its steps would lead out of the package.
    if (target.starts_with(u'/'))
        return HasParentStep(target) ? CTulStringW(FoldPath(target)) : CTulStringW(target);
    std::u16string whole(base);
    whole += target;
    return FoldPath(whole);
}

std::unordered_set<const IPart*> ReachedParts(std::vector<IRelationships*> open) {
    std::unordered_set<const IPart*> reached;
    while (!open.empty()) {
        IRelationships* const set = open.back();
        open.pop_back();
        const std::unique_ptr<IPartList> list(set ? set->GetPartList(nullptr) : nullptr);
        for (int i = 0; list && i < list->Count(); ++i) {
            IPart* const part = list->GetPart(i);
            if (reached.insert(part).second) open.push_back(part->GetRelationships());
        }
    }
    return reached;
}

int ReadOpenPackagingIndex(PackageState& state, IndexReader& reader) {
    if (!state.unzip) return 0;
    OwnContentTypes types;
    CContentTypesHandler handler(&state.package, state.keepsFile() ? &types.overrides : nullptr,
                                 state.keepsFile() ? &types.defaults : nullptr);
    if (reader.read(CTulStringW(kContentTypesName), handler) == 0)
        return state.fail(Status::BadIndex, NoteCode::General, MemberName(kContentTypesName),
                          "the content types can't be read");
    if (!state.unzip->itemTable || state.unzip->itemTable->empty()) return state.fail(Status::BadIndex);
    types.index();
    IPart& root = state.registry.root();
    root.SetLocalPath(state.storage.folder());
    root.SetPackagePath(u"/");
    root.SetTargetMode(TargetModeInternal);
    return IndexBuilder(state, reader, types).readAll() != 0 ? 1 : state.fail(Status::BadIndex);
}

} // namespace SDPackage
