#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/core/target_mode.h>
#include <odfmodel/export.h>
#include <odfmodel/package/relationships.h>
#include <odfmodel/package/text.h>

namespace SDPackage {

class PartRegistry;

/// The record of one part: one object for each member that the package knows, and one for the root, which
/// stands for the package itself. The first thirteen operations go to the part's relationships and answer 0
/// or null, doing nothing, when it has none. Texts are never null; they live until they are set again or the
/// part goes.
class ODFMODEL_API IPart {
public:
    IPart() = default;
    IPart(const IPart&) = delete;
    IPart& operator=(const IPart&) = delete;

    virtual IPart* GetPartById(const unsigned short* id);
    virtual IPart* GetPartByContentType(const unsigned short* contentType);
    virtual const unsigned short* GetIdByPart(IPart* part);
    virtual IPart* Reserved(void* a, void* b);
    virtual IPart* AddPart(IPart* part, const unsigned short* id);
    virtual IPart* AddPart(IPart* part);
    virtual void RemovePart(IPart* part);
    virtual void DeleteById(const unsigned short* id);
    virtual void ReservedOperation(void* a);
    virtual void Clear();
    virtual int Count(const unsigned short* contentType);
    virtual IPartList* GetPartList(const unsigned short* contentType);
    virtual void ReleasePartList(IPartList* list);
    virtual bool HasRelationships() const;

    /// Internal unless the link that led to this part says external.
    virtual TargetMode GetTargetMode() const;
    virtual const unsigned short* GetContentType() const;
    /// In Open Packaging packages 1 for a part whose override ends in .bin, else 0; 0 in ODF packages.
    virtual int GetPartType() const;
    /// The relationship type that led to the part; in ODF packages the media type of the folder that holds
    /// it.
    virtual const unsigned short* GetRelationType() const;
    /// The member's name; ODF packages that were opened have `\` between folders.
    virtual const unsigned short* GetPackagePath() const;
    /// Where the part's bytes lie on disk; for the root, the folder of all parts.
    virtual const unsigned short* GetLocalPath() const;
    /// File name with extension, without folders.
    virtual const unsigned short* GetPartName() const;
    /// The part's outgoing links, owned by the package; null for none.
    virtual IRelationships* GetRelationships() const;

    virtual void SetTargetMode(TargetMode mode);
    virtual void SetContentType(const unsigned short* contentType);
    virtual void SetPartType(int type);
    /// Null is ignored.
    virtual void SetRelationType(const unsigned short* type);
    /// A part that was given to a package stays listed there under the path that it had then.
    virtual void SetPackagePath(const unsigned short* path);
    virtual void SetLocalPath(const unsigned short* path);
    virtual void SetPartName(const unsigned short* name);

    /// Non-zero: the rules of the user data module apply to the part. 0 at construction.
    virtual void SetUserFlag(int flag);
    virtual int GetUserFlag() const;
    virtual void SetRelationships(IRelationships* relationships);
    /// Leaves the relationships alone. A part that belongs to a package takes itself out of it.
    virtual ~IPart();

    IPart* GetPartById(const PlainText auto& id) { return GetPartById(CTulStringW(id).c_str()); }
    IPart* GetPartByContentType(const PlainText auto& type) {
        return GetPartByContentType(CTulStringW(type).c_str());
    }
    IPart* AddPart(IPart* part, const PlainText auto& id) { return AddPart(part, CTulStringW(id).c_str()); }
    void DeleteById(const PlainText auto& id) { DeleteById(CTulStringW(id).c_str()); }
    int Count(const PlainText auto& type) { return Count(CTulStringW(type).c_str()); }
    IPartList* GetPartList(const PlainText auto& type) { return GetPartList(CTulStringW(type).c_str()); }
    void SetContentType(const PlainText auto& type) { SetContentType(CTulStringW(type).c_str()); }
    void SetRelationType(const PlainText auto& type) { SetRelationType(CTulStringW(type).c_str()); }
    void SetPackagePath(const PlainText auto& path) { SetPackagePath(CTulStringW(path).c_str()); }
    void SetLocalPath(const PlainText auto& path) { SetLocalPath(CTulStringW(path).c_str()); }
    void SetPartName(const PlainText auto& name) { SetPartName(CTulStringW(name).c_str()); }

private:
    friend class PartRegistry;

    IRelationships* relationships_ = nullptr;
    TargetMode targetMode_ = TargetModeInternal;
    int partType_ = 0;
    CTulStringW contentType_;
    CTulStringW relationType_;
    CTulStringW packagePath_;
    CTulStringW localPath_;
    CTulStringW partName_;
    int userFlag_ = 0;
    PartRegistry* registry_ = nullptr; // that owns this part
};

} // namespace SDPackage
