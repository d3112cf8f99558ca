#pragma once

#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <string_view>

class CSDAttribute;
class CSDObject;

namespace ODF {
class Diagnostics;
} // namespace ODF

/// Writes XML: a tree of element objects, or raw text. One serializer serves one output: `SerializeToFile`,
/// or `OpenFile` or `OpenMemory` followed by `WriteRaw` calls. Made by `CreateSerialize`.
class ODFMODEL_API CSDSerializer {
public:
    CSDSerializer(const CSDSerializer&) = delete;
    CSDSerializer& operator=(const CSDSerializer&) = delete;
    virtual ~CSDSerializer();

    /// Called back from `WriteElement`: writes the element `name` with its attributes and its character
    /// content `text` (null for none), then its children. A null `name` writes the bare character data alone.
    /// `flag` is always 1.
    virtual bool WriteObject(const unsigned short* name, CSDObject* object, CSDAttribute* attributes,
                             const unsigned short* text, int flag);
    /// Appends `text` as it is, encoded as UTF-8, without any escaping. `length` counts 16-bit units.
    virtual void WriteRaw(const unsigned short* text, int length);
    /// Writes the file at `path` from the tree under `root`; creates missing folders. False when the file
    /// can't be written whole.
    virtual bool SerializeToFile(const unsigned short* path, CSDObject* root);
    /// Binds the output to a caller's buffer.
    virtual bool OpenMemory(void* buffer, int byteCapacity);
    /// Creates or overwrites the file, with its missing folders, and binds the output to it.
    virtual bool OpenFile(const unsigned short* path);
    /// Ends the output; the number of bytes written, or -1 when not everything could be written.
    virtual int Close();

    /// Where faults are noted; not owned, null for nowhere.
    virtual void SetDiagnostics(ODF::Diagnostics* diagnostics);

    /// What of a tree is written; `Fidelity::Listed` at first.
    virtual void SetFidelity(ODF::Fidelity fidelity);

    void WriteRaw(std::u16string_view text) { WriteRaw(ToUnits(text.data()), static_cast<int>(text.size())); }
    void WriteRaw(std::string_view utf8) { WriteRaw(CTulStringW(utf8).view()); }
    bool SerializeToFile(std::u16string_view path, CSDObject* root) {
        return SerializeToFile(CTulStringW(path).c_str(), root);
    }
    bool SerializeToFile(std::string_view path, CSDObject* root) {
        return SerializeToFile(CTulStringW(path).c_str(), root);
    }
    bool OpenFile(std::u16string_view path) { return OpenFile(CTulStringW(path).c_str()); }
    bool SerializeToFile(const ODF::FilePath auto& path, CSDObject* root) {
        return SerializeToFile(CTulStringW(path).c_str(), root);
    }
    bool OpenFile(const ODF::FilePath auto& path) { return OpenFile(CTulStringW(path).c_str()); }
    bool OpenFile(std::string_view path) { return OpenFile(CTulStringW(path).c_str()); }

protected:
    CSDSerializer() = default;
};
