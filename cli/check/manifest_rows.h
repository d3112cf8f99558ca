#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace command {

/// Attributes of one row of a manifest, by their name without prefix.
using ManifestRow = std::map<std::string, std::string>;
inline constexpr const char* kWholeManifest = "(manifest)";
/// Rows by the path of what they are about, in their order; those of the manifest as a whole are at
/// `kWholeManifest`.
using ManifestRows = std::map<std::string, std::vector<ManifestRow>>;

/// Reads a manifest without the library's own reader. Left out is what follows the member: its size and how
/// it is encrypted. `fault` tells why a manifest ends early.
ManifestRows ReadManifestRows(std::string_view xml, std::string& fault);

} // namespace command
