#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace command {

inline constexpr std::string_view kManifestName = "META-INF/manifest.xml";
inline constexpr std::string_view kMimetypeName = "mimetype";

/// One line of a package's manifest.
struct ManifestEntry {
    std::string path;
    std::string mediaType;
    std::string algorithm; ///< how the member is encrypted; empty for one in clear

    bool isRoot() const { return path == "/"; }
    bool isFolder() const { return path.ends_with('/'); }
};

/// Reads the entries of `META-INF/manifest.xml`, in its namespace or the older one, as far as it is well
/// formed.
std::vector<ManifestEntry> ReadManifest(std::string_view xml);
/// The media type of the package itself; empty when the manifest has none.
std::string MediaTypeOf(const std::vector<ManifestEntry>& entries);
/// How the package is encrypted, such as "AES-256-CBC"; empty for one in clear.
std::string EncryptionOf(const std::vector<ManifestEntry>& entries);

} // namespace command
