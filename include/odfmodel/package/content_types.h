#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>
#include <odfmodel/package/text.h>

#include <map>

class CSDSerializer;

namespace SDPackage {

/// The content type registry of an Open Packaging package. Part names and extensions are matched exactly
/// unless an operation says otherwise. A null text counts as an empty one; returned texts live until their
/// entry goes.
class ODFMODEL_API IContentTypes {
public:
    IContentTypes() = default;
    IContentTypes(const IContentTypes&) = delete;
    IContentTypes& operator=(const IContentTypes&) = delete;

    /// The part name of the first override, in binary order, with that content type, ignoring case; null when
    /// none.
    virtual const unsigned short* FindPartName(const unsigned short* contentType);
    /// The content type of a part that was reached by a relationship of that type (null for none): its
    /// override, else for XML the type that belongs to the relationship, else the default of its extension;
    /// null when none.
    virtual const unsigned short* GetContentType(const unsigned short* partName,
                                                 const unsigned short* relationType);
    /// 1 for an override whose name ends in .bin, ignoring case, else 0.
    virtual int GetKind(const unsigned short* partName);
    /// Adds an entry; one that is there already stays as it is.
    virtual void AddOverride(const unsigned short* partName, const unsigned short* contentType);
    virtual void AddDefault(const unsigned short* extension, const unsigned short* contentType);
    /// Writes the whole text of `[Content_Types].xml`.
    virtual void Write(CSDSerializer* serializer);
    virtual void Clear();
    /// 1 when an entry was removed, else 0.
    virtual int RemoveOverride(const unsigned short* partName);
    virtual ~IContentTypes();

    const unsigned short* FindPartName(const PlainText auto& type) {
        return FindPartName(CTulStringW(type).c_str());
    }
    const unsigned short* GetContentType(const PlainText auto& name, const unsigned short* relationType) {
        return GetContentType(CTulStringW(name).c_str(), relationType);
    }
    const unsigned short* GetContentType(const PlainText auto& name, const PlainText auto& relationType) {
        return GetContentType(CTulStringW(name).c_str(), CTulStringW(relationType).c_str());
    }
    int GetKind(const PlainText auto& name) { return GetKind(CTulStringW(name).c_str()); }
    void AddOverride(const PlainText auto& name, const PlainText auto& type) {
        AddOverride(CTulStringW(name).c_str(), CTulStringW(type).c_str());
    }
    void AddDefault(const PlainText auto& extension, const PlainText auto& type) {
        AddDefault(CTulStringW(extension).c_str(), CTulStringW(type).c_str());
    }
    int RemoveOverride(const PlainText auto& name) { return RemoveOverride(CTulStringW(name).c_str()); }

private:
    struct Entry {
        CTulStringW partName;  // empty in a default
        CTulStringW extension; // empty in an override, without a dot
        CTulStringW contentType;
        int kind = 0; // 0 an override, 1 an override that ends in .bin, 2 a default
    };

    std::map<CTulStringW, Entry> overrides_;
    std::map<CTulStringW, Entry> defaults_;
};

/// The registry of a binary workbook: the relationship alone decides about a .bin part.
class ODFMODEL_API IBinaryContentTypes : public IContentTypes {
public:
    using IContentTypes::GetContentType;
    using IContentTypes::GetKind;

    const unsigned short* GetContentType(const unsigned short* partName,
                                         const unsigned short* relationType) override;
    /// 1 for every name that holds ".bin", else as in the base.
    int GetKind(const unsigned short* partName) override;
};

} // namespace SDPackage
