#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/core/target_mode.h>
#include <odfmodel/export.h>

#include <map>
#include <set>
#include <vector>

class CSDNamedObject;
class CSDObject;

/// What a part holds.
enum PartType : unsigned {
    PartTypeXml = 0,    ///< XML with a tree of element objects
    PartTypeBinary = 1, ///< a file that is never parsed or serialised
};

/// How a part links to something outside its package; this library only knows 0, no such link.
enum _SD_ExtlinkType : unsigned { SD_ExtlinkTypeNone = 0 };

/// An element that a part may keep in a set ordered by a key.
class ODFMODEL_API ISDSeqProcElem {
public:
    /// The order key. A set holds one element for each key.
    virtual unsigned GetSeqOrder() const = 0;
    virtual ~ISDSeqProcElem();
};

/// Order of a part's set of elements: by their key, as unsigned numbers.
struct _foCompSeqProcElem {
    bool operator()(const ISDSeqProcElem* a, const ISDSeqProcElem* b) const {
        return a->GetSeqOrder() < b->GetSeqOrder();
    }
};

/// A part of a document as the element objects and the document see it. It is wider than what ODF needs; the
/// operations that have no meaning there give a fixed answer, see `ODF::CODFPart`.
class ODFMODEL_API ISDPart {
public:
    ISDPart() = default;
    ISDPart(const ISDPart&) = delete;
    ISDPart& operator=(const ISDPart&) = delete;
    virtual ~ISDPart();

    virtual void Parse(const char* const data, unsigned size) = 0;
    virtual void Parse(const unsigned short* path) = 0;
    virtual void Serialize(const unsigned short* path) = 0;
    virtual void Release(int) = 0;
    /// The root element of the part's tree, or null; not owned by the caller.
    virtual CSDNamedObject* GetRootClass() = 0;
    /// The text that `SetPackageRoot` was given, which is not copied.
    virtual const unsigned short* GetPackageRoot() const = 0;
    virtual void SetPackageRoot(const unsigned short* root) = 0;
    virtual CSDNamedObject* GetObjClassByID(const unsigned short* id) const = 0;
    virtual CSDNamedObject* GetObjClassByContentType(const unsigned short* contentType) const = 0;
    virtual CSDNamedObject* GetObjClassByRelationType(const unsigned short* relationType) const = 0;
    virtual int GetCountByContentType(const unsigned short* contentType) const = 0;
    virtual int GetPatrsByContentType(const unsigned short* contentType,
                                      std::vector<ISDPart*>* out) const = 0;
    virtual ISDPart* GetPartByContentType(const unsigned short* contentType) const = 0;
    virtual int GetCountByRelationType(const unsigned short* relationType) const = 0;
    virtual int GetPatrsByRelationType(const unsigned short* relationType,
                                       std::vector<ISDPart*>* out) const = 0;
    virtual ISDPart* GetPartByRelationType(const unsigned short* relationType) const = 0;
    virtual ISDPart* GetPartByID(const unsigned short* id) const = 0;
    virtual const unsigned short* GetIDByPart(ISDPart* part) const = 0;
    virtual CSDNamedObject* GetInternalClassByID(const unsigned short* id) const = 0;
    /// Appends `part` to the child parts, which this part doesn't own.
    virtual void AddChildPart(const unsigned short* id, ISDPart* part) = 0;
    virtual std::map<CTulStringW, ISDPart*>* GetChildParts() const = 0;
    /// Overwrites `out` with the child parts and returns their number; 0 leaves `out` alone.
    virtual int GetChildParts(std::vector<ISDPart*>* out) const = 0;
    virtual int IsExistChildPart() const = 0;
    virtual const unsigned short* GetContentType() const = 0;
    virtual const unsigned short* GetRelationtype() const = 0;
    virtual const unsigned short* GetPackagePath() const = 0;
    virtual const unsigned short* GetLocalPath() const = 0;
    virtual const unsigned short* GetPartname() const = 0;
    virtual TargetMode GetTargetMode() const = 0;
    virtual const unsigned short* GetGUID() const = 0;
    virtual void SetContentType(const unsigned short* contentType) = 0;
    virtual void SetRelationtype(const unsigned short* relationType) = 0;
    virtual void SetPackagePath(const unsigned short* path) = 0;
    virtual void SetLocalPath(const unsigned short* path) = 0;
    virtual void SetPartname(const unsigned short* name) = 0;
    virtual void SetTargetMode(TargetMode mode) = 0;
    virtual void SetGUID(const unsigned short* guid) = 0;
    virtual _SD_ExtlinkType _CheckExternalLinkType() const = 0;
    virtual void SetModifyPart(int modified) = 0;
    virtual int GetModifyPart() = 0;
    /// Asked for a child element that no class lists; null for none.
    virtual CSDObject* CreateApplicationObj(const unsigned short* name, int& out) = 0;
    virtual int GetApplyNewObject() = 0;
    virtual void SetApplyNewObject(int apply) = 0;
    virtual void EnableCQRMode(int enable) = 0;
    virtual int IsEnabledCQRMode() = 0;
    virtual void AddSeqProcElems(ISDSeqProcElem* element) = 0;
    /// The set of elements, which may be null.
    virtual const std::set<ISDSeqProcElem*, _foCompSeqProcElem>* GetSeqProcElems() const = 0;
};
