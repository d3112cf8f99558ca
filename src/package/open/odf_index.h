#pragma once

#include "package/open/member_reader.h"

namespace SDPackage {

/// Reads the manifest into parts and folder entries. There is no failure: without a manifest there are no
/// parts.
void ReadOdfIndex(PackageState& state, IndexReader& reader);

/// Enters one file entry of the manifest: a folder type among the folder entries, a member that is there
/// among the parts. All else is passed over.
void AddManifestEntry(PackageState& state, const CTulStringW& mediaType, const CTulStringW& fullPath);

} // namespace SDPackage
