#pragma once

#include <odfmodel/core/limits.h>
#include <odfmodel/core/serializer.h>
#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <string_view>

class CSDDefaultHandler;
class CSDObject;
class CSDUnZip;

namespace ODF {
class Diagnostics;
} // namespace ODF

/// Reads XML, either into a tree of element objects or into a content handler. A reader may be used for one
/// document after the other. External entities and DTDs are never loaded. Made by `CreateSaxReader`.
class ODFMODEL_API CSDSaxReader {
public:
    CSDSaxReader(const CSDSaxReader&) = delete;
    CSDSaxReader& operator=(const CSDSaxReader&) = delete;
    virtual ~CSDSaxReader();

    /// Parses the file at `path` into the tree under `root`. False when the file can't be read or ends at a
    /// fault; `root` then holds what was read up to it.
    virtual bool ParseFile(const unsigned short* path, CSDObject* root) = 0;
    /// Parses the file at `path` and feeds the installed content handler; false when it can't be read or
    /// isn't well formed.
    virtual bool ParseWithHandler(const unsigned short* path) = 0;
    /// Prepares a parse in chunks with the installed handler.
    virtual bool BeginChunks() = 0;
    /// Feeds the next `byteCount` bytes of the document; false at the first fault. `cursor` is passed
    /// through.
    virtual bool ParseChunk(const void* data, int byteCount, int cursor) = 0;
    /// Ends the chunked parse; also after a failed `ParseChunk`.
    virtual void EndChunks() = 0;
    /// Sets a parser feature. The one that is known, loading of external DTDs, is off and stays off.
    virtual void SetFeature(const unsigned short* feature, bool value) = 0;
    /// Installs `handler`, which stays the caller's and must live until the parse has ended.
    virtual void SetContentHandler(CSDDefaultHandler* handler) = 0;
    /// Parses the member `itemName` of the archive and feeds the installed handler.
    virtual bool ParseItem(const unsigned short* itemName, CSDUnZip* unzip) = 0;

    /// Parses XML in memory into the tree under `root`; otherwise as `ParseFile`.
    virtual bool ParseMemory(const void* data, std::size_t byteCount, CSDObject* root) = 0;
    /// Parses XML in memory and feeds the installed content handler; otherwise as `ParseWithHandler`.
    virtual bool ParseMemoryWithHandler(const void* data, std::size_t byteCount) = 0;
    /// Whether the last document that was parsed into a tree began with the element that the root object
    /// stands for.
    virtual bool HasMatchedRoot() const = 0;
    /// The bounds of the following parses.
    virtual void SetLimits(const ODF::Limits& limits) = 0;
    /// Where faults and unknown content are noted, with `member` as the name of what is parsed. Not owned;
    /// null for nowhere.
    virtual void SetDiagnostics(ODF::Diagnostics* diagnostics, std::string_view member) = 0;

    /// What of a document the following trees keep; `Fidelity::Listed` at first. With
    /// `Fidelity::Everything` a document whose root isn't the one expected is refused.
    virtual void SetFidelity(ODF::Fidelity fidelity) = 0;
    /// What the last tree that was parsed took of the bounds on objects and on bytes of text.
    virtual ODF::TreeCost GetCost() const = 0;

    bool ParseFile(std::u16string_view path, CSDObject* root) {
        return ParseFile(CTulStringW(path).c_str(), root);
    }
    bool ParseFile(std::string_view path, CSDObject* root) {
        return ParseFile(CTulStringW(path).c_str(), root);
    }
    bool ParseFile(const ODF::FilePath auto& path, CSDObject* root) {
        return ParseFile(CTulStringW(path).c_str(), root);
    }
    bool ParseWithHandler(const ODF::FilePath auto& path) {
        return ParseWithHandler(CTulStringW(path).c_str());
    }
    bool ParseWithHandler(std::u16string_view path) { return ParseWithHandler(CTulStringW(path).c_str()); }
    bool ParseWithHandler(std::string_view path) { return ParseWithHandler(CTulStringW(path).c_str()); }
    void SetFeature(std::string_view feature, bool value) { SetFeature(CTulStringW(feature).c_str(), value); }

protected:
    CSDSaxReader() = default;
};

/// A new reader, owned by the caller until `ReleaseSaxReader`; never null.
ODFMODEL_API CSDSaxReader* CreateSaxReader();
/// Destroys the reader, but not an installed handler. Null is allowed.
ODFMODEL_API void ReleaseSaxReader(CSDSaxReader* reader);
/// A new serializer, owned by the caller until `ReleaseSerialize`; null when there is no memory.
ODFMODEL_API CSDSerializer* CreateSerialize();
/// Finishes the output, closes the file and destroys the serializer. Null is allowed.
ODFMODEL_API void ReleaseSerialize(CSDSerializer* serializer);
