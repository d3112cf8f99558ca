#pragma once

#include <string>
#include <vector>

namespace test {

/// What a document lost on the way from one file to another, or got besides; empty when nothing. Both files
/// are read without the library as long as they are in clear.
///
/// Members of XML are compared by their canonical form, all others byte for byte, and so is their order. The
/// second package may have a `mimetype` and a manifest where the first has none, and its manifest may tell
/// more: rows for members that had none, attributes, media types that were empty. What decrypts a member may
/// differ, but not that it is encrypted. A flat document is compared as XML.
std::vector<std::string> PackageDifferences(const std::string& before, const std::string& after,
                                            const std::string& password = {});

} // namespace test
