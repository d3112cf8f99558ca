#include "package/index/index_writer.h"

#include "package/paths.h"
#include "package/xml_text.h"

#include <odfmodel/serial/sax_reader.h>

#include <memory>
#include <set>
#include <unordered_set>

namespace SDPackage {

namespace {

void WriteFileEntry(CSDSerializer& serializer, Units mediaType, Units fullPath) {
    std::u16string line(u"<manifest:file-entry manifest:media-type=\"");
    line += EscapeAttribute(mediaType).view();
    line += u"\" manifest:full-path=\"";
    line += EscapeAttribute(fullPath).view();
    line += u"\"/>";
    serializer.WriteRaw(line);
}

void WriteLink(CSDSerializer& serializer, const IPartList::Entry& entry, const CTulStringW& source) {
    const auto& [id, part] = entry;
    CTulStringW target(part->GetPackagePath());
    if (part->GetTargetMode() == TargetModeInternal)
        MakeRelativeTarget(source, part->GetPackagePath(), target);
    IRelationship relationship;
    relationship.SetId(id.c_str());
    relationship.SetType(part->GetRelationType());
    relationship.SetTarget(target.c_str());
    relationship.SetTargetMode(part->GetTargetMode());
    serializer.WriteRaw(relationship.ToXml().view());
}

} // namespace

std::vector<std::pair<CTulStringW, IPart*>> OdfMembers(const PartMap& parts) {
    std::vector<std::pair<CTulStringW, IPart*>> members;
    std::unordered_set<std::u16string> names;
    for (const auto& [path, part] : parts) {
        if (!part) continue;
        CTulStringW name(part->GetPackagePath());
        if (names.insert(WithSlashes(name.view())).second) members.emplace_back(std::move(name), part);
    }
    return members;
}

Map MakeFolderEntries(const PartMap& parts) {
    Map entries;
    for (const auto& [path, part] : parts) {
        if (!part || *part->GetRelationType() == 0) continue;
        const std::u16string folder = WithBackslashes(FolderOf(ToView(part->GetPackagePath())));
        entries.try_emplace(CTulStringW(WithoutLeadingSeparator(folder)), part->GetRelationType());
    }
    return entries;
}

void WriteManifest(CSDSerializer& serializer, const PartMap& parts, const Map& folderEntries) {
    serializer.WriteRaw(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    serializer.WriteRaw(u"<manifest:manifest");
    serializer.WriteRaw(u" xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">");
    for (const auto& [folder, mediaType] : folderEntries) {
        std::u16string fullPath = WithSlashes(folder.view());
        if (!fullPath.ends_with(u'/')) fullPath += u'/';
        WriteFileEntry(serializer, mediaType.view(), fullPath);
    }
    for (const auto& [path, part] : OdfMembers(parts))
        WriteFileEntry(serializer, ToView(part->GetContentType()), WithSlashes(path.view()));
    serializer.WriteRaw(u"</manifest:manifest>");
}

void WriteRelationshipSet(CSDSerializer& serializer, IRelationships& set, const CTulStringW& source) {
    for (const Units text : kRelationshipsStart)
        serializer.WriteRaw(text);
    const std::unique_ptr<IPartList> list(set.GetPartList(nullptr));
    for (int i = 0; list && i < list->Count(); ++i)
        WriteLink(serializer, *list->GetEntry(i), source);
    serializer.WriteRaw(kRelationshipsEnd);
}

void WriteKeptRelationshipSet(CSDSerializer& serializer, IRelationships& set, const CTulStringW& source,
                              const std::vector<KeptLink>& kept, const PartRegistry& registry) {
    for (const Units text : kRelationshipsStart)
        serializer.WriteRaw(text);
    std::set<CTulStringW> written;
    for (const KeptLink& link : kept) {
        const IPart* const part = set.GetPartById(link.id);
        const PartOrigin* const origin = part && part == link.part ? registry.origin(*part) : nullptr;
        if (!origin || !written.insert(link.id).second) continue;
        const bool isRetyped = origin->relationType != part->GetRelationType();
        CTulStringW line;
        line.Format(u"<Relationship Id=\"%s\" Type=\"%s\" Target=\"%s\"%s/>", EscapeAttribute(link.id.view()),
                    EscapeAttribute(isRetyped ? ToView(part->GetRelationType()) : link.type.view()),
                    EscapeAttribute(link.target.view()),
                    part->GetTargetMode() == TargetModeExternal ? u" TargetMode=\"External\"" : u"");
        serializer.WriteRaw(line.view());
    }
    const std::unique_ptr<IPartList> list(set.GetPartList(nullptr));
    for (int i = 0; list && i < list->Count(); ++i)
        if (!written.contains(list->GetEntry(i)->first)) WriteLink(serializer, *list->GetEntry(i), source);
    serializer.WriteRaw(kRelationshipsEnd);
}

std::u16string RelationshipsMemberName(Units source) {
    const std::u16string path = FoldPath(source);
    const Units folder = FolderOf(path);
    std::u16string name(folder.substr(1));
    return name + u"_rels/" + std::u16string(FileNameOf(path)) + u".rels";
}

} // namespace SDPackage
