#pragma once

#include <odfmodel/serial/unzip.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// Member name to its plain bytes.
using Members = std::map<std::string, std::string>;

/// One `manifest:file-entry`.
struct ManifestEntry {
    std::string path;
    std::string mediaType = "text/xml";
};

std::string Manifest(const std::vector<ManifestEntry>& entries);
/// Writes an archive that holds `members` and nothing else.
void WritePackage(const std::string& path, const Members& members);
/// Writes an ODF package: `members` with a manifest that lists them all as XML below "/" of `mediaType`, and
/// what `more` says besides.
void WriteOdf(const std::string& path, std::string_view mediaType, Members members,
              const std::vector<ManifestEntry>& more = {});
/// The members of the archive that a reader is bound to.
Members ReadMembers(const CSDUnZip& unzip);
/// The members of a package in clear; empty when it can't be opened.
Members ReadPackage(const std::string& path, const std::string& password = {});

inline constexpr std::string_view kTextType = "application/vnd.oasis.opendocument.text";
inline constexpr std::string_view kFormulaType = "application/vnd.oasis.opendocument.formula";

/// A `content.xml` of a text document around what is in `office:text`.
std::string TextContent(std::string_view body);

} // namespace test
