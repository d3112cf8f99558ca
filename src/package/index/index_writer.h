#pragma once

#include "package/kept_file.h"
#include "package/parts/part_registry.h"

#include <odfmodel/package/package.h>

#include <vector>

class CSDSerializer;

namespace SDPackage {

/// The parts that get a member in an ODF package: of two names that are one in the archive (they differ in
/// their separators alone) the first in name order.
std::vector<std::pair<CTulStringW, IPart*>> OdfMembers(const PartMap& parts);

/// The folder entries that follow from the parts: each folder with the media type of its first part that has
/// one.
Map MakeFolderEntries(const PartMap& parts);

/// Writes the text of `META-INF/manifest.xml`.
void WriteManifest(CSDSerializer& serializer, const PartMap& parts, const Map& folderEntries);

/// Writes the text of the `.rels` member that holds the links of `source`.
void WriteRelationshipSet(CSDSerializer& serializer, IRelationships& set, const CTulStringW& source);
/// The same with the file's own words for the links that are as they were, in the order of the file, and the
/// others after them.
void WriteKeptRelationshipSet(CSDSerializer& serializer, IRelationships& set, const CTulStringW& source,
                              const std::vector<KeptLink>& kept, const PartRegistry& registry);
/// The parts of the same text for writers of their own.
inline constexpr std::u16string_view kRelationshipsStart[] = {
    u"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>", u"<Relationships",
    u" xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"};
inline constexpr std::u16string_view kRelationshipsEnd = u"</Relationships>";

/// The name of the `.rels` member of `source`: "_rels/.rels" for "/".
std::u16string RelationshipsMemberName(std::u16string_view source);

} // namespace SDPackage
