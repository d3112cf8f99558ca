#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>
#include <odfmodel/package/text.h>

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace SDPackage {

class IPart;

/// A snapshot of relationships: pairs of id and part. It doesn't own the parts.
class ODFMODEL_API IPartList {
public:
    using Entry = std::pair<CTulStringW, IPart*>;

    IPartList() = default;
    IPartList(const IPartList&) = default;
    IPartList& operator=(const IPartList&) = default;

    /// The first part under that id, with that content type or with exactly that package path; null when
    /// none.
    virtual IPart* GetPartById(const unsigned short* id) const;
    virtual IPart* GetPartByContentType(const unsigned short* contentType) const;
    virtual IPart* GetPartByPackagePath(const unsigned short* path) const;
    /// Appends and returns `part`; null for a null part or when that part is already here under that id.
    virtual IPart* Add(IPart* part, const unsigned short* id);
    virtual bool Contains(const unsigned short* id) const;
    /// The id of the first entry whose part has the package path of `part`; null when none.
    virtual const unsigned short* FindSame(IPart* part) const;
    virtual int Count() const;
    /// The part of entry `i`, from 0; null beyond the end.
    virtual IPart* GetPart(int i) const;
    /// Entry `i`, from 0; null beyond the end. Valid until the list changes.
    virtual const Entry* GetEntry(int i) const;
    virtual ~IPartList();

    IPart* GetPartById(const PlainText auto& id) const { return GetPartById(CTulStringW(id).c_str()); }
    IPart* GetPartByContentType(const PlainText auto& type) const {
        return GetPartByContentType(CTulStringW(type).c_str());
    }
    IPart* GetPartByPackagePath(const PlainText auto& path) const {
        return GetPartByPackagePath(CTulStringW(path).c_str());
    }
    IPart* Add(IPart* part, const PlainText auto& id) { return Add(part, CTulStringW(id).c_str()); }
    bool Contains(const PlainText auto& id) const { return Contains(CTulStringW(id).c_str()); }

private:
    friend class IRelationships;
    std::vector<Entry> entries_;
};

/// The outgoing links of one source: parts by relationship id, in ascending binary order of the id. It
/// doesn't own the parts.
class ODFMODEL_API IRelationships {
public:
    IRelationships() = default;
    IRelationships(const IRelationships&) = delete;
    IRelationships& operator=(const IRelationships&) = delete;

    /// The part under that id, or null.
    virtual IPart* GetPartById(const unsigned short* id);
    /// The first part in id order with exactly that content type, or null.
    virtual IPart* GetPartByContentType(const unsigned short* contentType);
    /// The id of the first entry that holds `part`, or null. Valid until that entry goes.
    virtual const unsigned short* GetIdByPart(IPart* part);
    virtual IPart* Reserved(void* a, void* b);
    /// Enters `part` under `id`, or under a new id "rId<n>" for null, and returns `part`. Null, with nothing
    /// changed, when the id is taken or `part` is null.
    virtual IPart* AddPart(IPart* part, const unsigned short* id);
    virtual IPart* AddPart(IPart* part);
    /// Removes every entry that holds `part`; the part lives on.
    virtual void RemovePart(IPart* part);
    /// Removes the entry and deletes its part, which also leaves its package and all other sets of that
    /// package.
    virtual void DeleteById(const unsigned short* id);
    virtual void ReservedOperation(void* a);
    /// Removes all entries; the parts live on.
    virtual void Clear();
    /// Entries whose part has that content type; all entries for null.
    virtual int Count(const unsigned short* contentType);
    /// A new list of the entries with that content type, of all for null. The caller owns it. Null for an
    /// empty set.
    virtual IPartList* GetPartList(const unsigned short* contentType);
    /// Deletes `list`; null is allowed.
    virtual void ReleasePartList(IPartList* list);
    virtual ~IRelationships();

    IPart* GetPartById(const PlainText auto& id) { return GetPartById(CTulStringW(id).c_str()); }
    IPart* GetPartByContentType(const PlainText auto& type) {
        return GetPartByContentType(CTulStringW(type).c_str());
    }
    IPart* AddPart(IPart* part, const PlainText auto& id) { return AddPart(part, CTulStringW(id).c_str()); }
    void DeleteById(const PlainText auto& id) { DeleteById(CTulStringW(id).c_str()); }
    int Count(const PlainText auto& type) { return Count(CTulStringW(type).c_str()); }
    IPartList* GetPartList(const PlainText auto& type) { return GetPartList(CTulStringW(type).c_str()); }

private:
    std::map<CTulStringW, IPart*> entries_;
};

} // namespace SDPackage
