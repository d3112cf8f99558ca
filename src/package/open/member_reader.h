#pragma once

#include "package/handles.h"
#include "package/package_state.h"

class CSDDefaultHandler;

namespace SDPackage {

/// Feeds the member `itemName` of the open archive to `handler`, after the package's callback has seen it. 0
/// when the member isn't there, can't be read whole or isn't well formed, or the callback refuses it.
int ReadFromArchive(const PackageState& state, const CTulStringW& itemName, CSDDefaultHandler& handler);

/// Reads one index member after the other while a package is opened: from the archive when the members stay
/// there, else from the extracted files.
class IndexReader {
public:
    explicit IndexReader(const PackageState& state);
    ~IndexReader();
    IndexReader(const IndexReader&) = delete;
    IndexReader& operator=(const IndexReader&) = delete;

    /// Parses the member and feeds `handler`; 0 as in `ReadFromArchive`.
    int read(const CTulStringW& itemName, CSDDefaultHandler& handler);
    /// The same past the package's callback.
    int readUnseen(const CTulStringW& itemName, CSDDefaultHandler& handler);

private:
    friend int ReadFromArchive(const PackageState& state, const CTulStringW& itemName,
                               CSDDefaultHandler& handler);

    void install(const CTulStringW& itemName, CSDDefaultHandler& handler);
    int readFile(const CTulStringW& itemName);
    int readMember(const CTulStringW& itemName, CSDDefaultHandler& handler, bool isSeen = true);
    /// As the archive spells the name: with a leading `/` or in another case where the package keeps its
    /// file.
    CTulStringW spelled(const CTulStringW& itemName) const;

    const PackageState& state_;
    ReaderHandle reader_;
};

inline constexpr Units kContentTypesName = u"[Content_Types].xml";
inline constexpr Units kManifestName = u"META-INF/manifest.xml";

} // namespace SDPackage
