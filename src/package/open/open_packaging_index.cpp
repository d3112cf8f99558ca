#include "package/open/open_packaging_index.h"

#include <odfmodel/package/handlers.h>

#include <optional>

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

/// Finds the archive's own spelling of a member name. Names there may keep the escapes that targets lose, and
/// writers on other systems take no care of case.
class MemberNames {
public:
    explicit MemberNames(const ZipItemTable& table) : table_(table) {}

    /// Null when there is no such member. Valid as long as the table.
    const CTulStringW* find(Units name) {
        for (const CTulStringW& spelling : {CTulStringW(name), EscapeTarget(CTulStringW(name))}) {
            const auto item = table_.find(spelling);
            if (item != table_.end() && item->second.index >= 0) return &item->first;
        }
        if (byFoldedName_.empty())
            for (const auto& [member, item] : table_)
                if (item.index >= 0) byFoldedName_.try_emplace(member, &member);
        const auto folded = byFoldedName_.find(CTulStringW(name));
        return folded == byFoldedName_.end() ? nullptr : folded->second;
    }

private:
    const ZipItemTable& table_;
    std::map<CTulStringW, const CTulStringW*, IgnoreCaseLess> byFoldedName_;
};

class IndexBuilder {
public:
    IndexBuilder(PackageState& state, IndexReader& reader)
        : state_(state), reader_(reader), members_(*state.unzip->itemTable) {}

    int readAll() {
        for (const auto& [name, item] : *state_.unzip->itemTable)
            if (item.index >= 0 && !readOne(name)) return 0;
        linkSets();
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
        for (const RelationshipRecord& record : records)
            if (!addTarget(record, parsed->base, *set))
                return refuse(member, "two relationships have one id");
        return true;
    }

    bool refuse(const CTulStringW& member, std::string_view why) const {
        state_.note(NoteCode::General, Severity::Error, MemberName(member.view()), why);
        return false;
    }

    bool addTarget(const RelationshipRecord& record, Units base, IRelationships& set) {
        const bool isExternal = record.targetMode == TargetModeExternal;
        CTulStringW path = isExternal ? record.target : ResolveTarget(base, record.target.view());
        if (path == u"/") path = CTulStringW(u"//");
        IPart* part = state_.package.GetPart(path);
        if (!part) part = makePart(record, path, isExternal);
        return set.AddPart(part, record.id.c_str()) != nullptr;
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
        return state_.package.AddPart(part.release());
    }

    void placeOnDisk(IPart& part, Units name) {
        const CTulStringW* const member = members_.find(name);
        part.SetLocalPath(state_.storage.pathOf(member ? member->view() : name).text().c_str());
        if (member) return;
        state_.registry.markAbsent(part);
        state_.note(NoteCode::MemberMissing, Severity::Warning, MemberName(name),
                    "a relationship leads to a member that isn't there");
    }

    void linkSets() {
        for (const auto& [source, set] : state_.registry.relationshipSets()) {
            if (IPart* const part = state_.package.GetPart(source))
                part->SetRelationships(set.get());
            else if (source == u"/")
                state_.package.GetRootPart()->SetRelationships(set.get());
        }
    }

    PackageState& state_;
    IndexReader& reader_;
    MemberNames members_;
};

} // namespace

CTulStringW ResolveTarget(Units base, Units target) {
    // An absolute target is taken as it stands, unless its steps would lead out of the package.
    if (target.starts_with(u'/'))
        return HasParentStep(target) ? CTulStringW(FoldPath(target)) : CTulStringW(target);
    std::u16string whole(base);
    whole += target;
    return FoldPath(whole);
}

int ReadOpenPackagingIndex(PackageState& state, IndexReader& reader) {
    if (!state.unzip) return 0;
    CContentTypesHandler handler(&state.package);
    if (reader.read(CTulStringW(kContentTypesName), handler) == 0)
        return state.fail(Status::BadIndex, NoteCode::General, MemberName(kContentTypesName),
                          "the content types can't be read");
    if (!state.unzip->itemTable || state.unzip->itemTable->empty()) return state.fail(Status::BadIndex);
    IPart& root = state.registry.root();
    root.SetLocalPath(state.storage.folder());
    root.SetPackagePath(u"/");
    root.SetTargetMode(TargetModeInternal);
    return IndexBuilder(state, reader).readAll() != 0 ? 1 : state.fail(Status::BadIndex);
}

} // namespace SDPackage
