#pragma once

#include <odfmodel/core/object.h>
#include <odfmodel/core/part.h>
#include <odfmodel/export.h>
#include <odfmodel/package/part.h>
#include <odfmodel/package/text.h>

#include <memory>

namespace ODF {

// What parts are described with is at global scope, since the core's interface speaks of it; here it has
// the names of its neighbours too.
using ::_foCompSeqProcElem;
using ::ISDPart;
using ::ISDSeqProcElem;
using ::PartType;

/// One file of a package on the side of the element trees: the properties that the package holds for the same
/// file, the root element of its tree when it is XML, and the list of its child parts. Reading and writing
/// are the document's work, see `CDocument`.
///
/// A part owns neither its root element nor its child parts: the document does. Operations that have no
/// meaning for ODF answer with the fixed value that their comment gives.
class ODFMODEL_API CODFPart : public ISDPart {
public:
    /// An XML part without a tree.
    CODFPart();
    ~CODFPart() override;

    void Parse(const char* const data, unsigned size) override; ///< does nothing
    void Parse(const unsigned short* path) override;            ///< does nothing
    void Serialize(const unsigned short* path) override;        ///< does nothing
    void Release(int) override;                                 ///< does nothing
    CSDNamedObject* GetRootClass() override;
    /// Typed access: the root element, borrowed, or null for a part without a tree.
    template<typename Root>
    Root* RootAs() {
        return rootClass_ && rootClass_->GetID() == Root::kId ? static_cast<Root*>(rootClass_) : nullptr;
    }
    const unsigned short* GetPackageRoot() const override;
    void SetPackageRoot(const unsigned short* root) override;
    CSDNamedObject* GetObjClassByID(const unsigned short*) const override;                    ///< null
    CSDNamedObject* GetObjClassByContentType(const unsigned short*) const override;           ///< null
    CSDNamedObject* GetObjClassByRelationType(const unsigned short*) const override;          ///< null
    int GetCountByContentType(const unsigned short*) const override;                          ///< -1
    int GetPatrsByContentType(const unsigned short*, std::vector<ISDPart*>*) const override;  ///< 0
    ISDPart* GetPartByContentType(const unsigned short*) const override;                      ///< null
    int GetCountByRelationType(const unsigned short*) const override;                         ///< 0
    int GetPatrsByRelationType(const unsigned short*, std::vector<ISDPart*>*) const override; ///< 0
    ISDPart* GetPartByRelationType(const unsigned short*) const override;                     ///< null
    ISDPart* GetPartByID(const unsigned short*) const override;                               ///< null
    const unsigned short* GetIDByPart(ISDPart*) const override;                               ///< null
    CSDNamedObject* GetInternalClassByID(const unsigned short*) const override;               ///< null
    void AddChildPart(const unsigned short* id, ISDPart* part) override;
    void AddChildPart(ISDPart* part);
    std::map<CTulStringW, ISDPart*>* GetChildParts() const override; ///< null
    int GetChildParts(std::vector<ISDPart*>* out) const override;
    int IsExistChildPart() const override;
    const unsigned short* GetContentType() const override;
    const unsigned short* GetRelationtype() const override;
    /// Path inside the package; "/" for the root part. Parts that were read have `\` between folders, parts
    /// made here have `/`.
    const unsigned short* GetPackagePath() const override;
    /// Path of the file on disk; for the root part, of the temporary folder.
    const unsigned short* GetLocalPath() const override;
    /// File name with extension.
    const unsigned short* GetPartname() const override;
    TargetMode GetTargetMode() const override;
    const unsigned short* GetGUID() const override; ///< null
    void SetContentType(const unsigned short* contentType) override;
    void SetRelationtype(const unsigned short* relationType) override;
    void SetPackagePath(const unsigned short* path) override;
    void SetLocalPath(const unsigned short* path) override;
    void SetPartname(const unsigned short* name) override;
    void SetTargetMode(TargetMode mode) override;
    void SetGUID(const unsigned short*) override;            ///< does nothing
    _SD_ExtlinkType _CheckExternalLinkType() const override; ///< 0
    void SetModifyPart(int modified) override;
    int GetModifyPart() override;
    CSDObject* CreateApplicationObj(const unsigned short* name, int& out) override; ///< null, `out` unchanged
    int GetApplyNewObject() override;                                               ///< 0
    void SetApplyNewObject(int) override;                                           ///< does nothing
    void EnableCQRMode(int) override;                                               ///< does nothing
    int IsEnabledCQRMode() override;                                                ///< 0
    /// Keeps `element`, not owned, unless it is null or one with its key is here already.
    void AddSeqProcElems(ISDSeqProcElem* element) override;
    const std::set<ISDSeqProcElem*, _foCompSeqProcElem>* GetSeqProcElems() const override;

    /// Sets the root element, not owned, and on it the link to this part.
    void SetRootClass(CSDNamedObject* root);
    PartType GetPartType() const noexcept { return partType_; }
    void SetPartType(PartType type) noexcept { partType_ = type; }
    const unsigned short* GetRelationshipID() const;
    void SetRelationshipID(const unsigned short* id);
    CODFPart* GetParentPart() const noexcept { return parentPart_; }
    void SetParentPart(CODFPart* parent) noexcept { parentPart_ = parent; }
    /// The folders of the package path, with the separator after them; empty for a file at the top.
    CTulStringW GetPackagePathOnly() const;
    /// Takes over target mode, types, paths and name; null is ignored. Later changes don't follow.
    void SetPackagePartInfo(SDPackage::IPart* part);
    /// Keeps the pair unless `first` is here already.
    void AddMediaType(CTulStringW first, CTulStringW second);
    const std::map<CTulStringW, CTulStringW>* GetMediaTypes() const noexcept { return mediaTypes_.get(); }

    void SetContentType(const SDPackage::PlainText auto& text) { SetContentType(CTulStringW(text).c_str()); }
    void SetRelationtype(const SDPackage::PlainText auto& text) {
        SetRelationtype(CTulStringW(text).c_str());
    }
    void SetPackagePath(const SDPackage::PlainText auto& text) { SetPackagePath(CTulStringW(text).c_str()); }
    void SetLocalPath(const SDPackage::PlainText auto& text) { SetLocalPath(CTulStringW(text).c_str()); }
    void SetPartname(const SDPackage::PlainText auto& text) { SetPartname(CTulStringW(text).c_str()); }
    void SetRelationshipID(const SDPackage::PlainText auto& text) {
        SetRelationshipID(CTulStringW(text).c_str());
    }

private:
    friend class CDocument;
    using SeqProcElems = std::set<ISDSeqProcElem*, _foCompSeqProcElem>;

    CSDNamedObject* rootClass_ = nullptr;
    std::vector<ISDPart*> childParts_;
    PartType partType_ = PartTypeXml;
    TargetMode targetMode_ = TargetModeInternal;
    CTulStringW relationshipID_;
    CTulStringW contentType_;
    CTulStringW relationType_;
    CTulStringW packagePath_;
    CTulStringW localPath_;
    CTulStringW partname_;
    CODFPart* parentPart_ = nullptr;
    CODFPart* nextDeleted_ = nullptr; ///< in the list of parts that their document is about to delete
    bool isDeleted_ = false;
    const unsigned short* packageRoot_ = nullptr;
    std::unique_ptr<SeqProcElems> seqProcElems_;
    std::unique_ptr<std::map<CTulStringW, CTulStringW>> mediaTypes_;
    int modifyPart_ = 0;
};

/// A file that is neither parsed nor serialised.
class ODFMODEL_API CBinayrPart : public CODFPart {
public:
    CBinayrPart();
    ~CBinayrPart() override;
    /// A new binary part, owned by the caller; the argument isn't looked at.
    static CODFPart* CreateClass(CSDNamedObject* root);
};

/// A picture that a caller adds. The counter is for callers who number the files that they add; each thread
/// has its own.
class ODFMODEL_API CImageRootPart : public CBinayrPart {
public:
    ~CImageRootPart() override;
    static CODFPart* CreatePart();
    /// File name with extension of `path`; valid on this thread until the next call on this class.
    static const unsigned short* GetFilename(CTulStringW path);
    static thread_local unsigned m_sIndex;
    static const unsigned& GetIndex();
    static void IncIndex();
};

/// A sound or film that a caller adds; otherwise as `CImageRootPart`.
class ODFMODEL_API CMediaRootPart : public CBinayrPart {
public:
    ~CMediaRootPart() override;
    static CODFPart* CreatePart();
    static const unsigned short* GetFilename(CTulStringW path);
    static thread_local unsigned m_sIndex;
    static const unsigned& GetIndex();
    static void IncIndex();
};

// The parts with a root element of their own. `CreateClass(root)` makes the part, owned by the caller, around
// `root` or, for null, around a new root element with its name set; the document that takes the part deletes
// both.

class ODFMODEL_API COfficeDocumentRootPart : public CODFPart {
public:
    static CODFPart* CreateClass(CSDNamedObject* root);
};
class ODFMODEL_API COfficeDocumentContentRootPart : public CODFPart {
public:
    static CODFPart* CreateClass(CSDNamedObject* root);
};
class ODFMODEL_API COfficeDocumentMetaRootPart : public CODFPart {
public:
    static CODFPart* CreateClass(CSDNamedObject* root);
};
class ODFMODEL_API COfficeDocumentSettingsRootPart : public CODFPart {
public:
    static CODFPart* CreateClass(CSDNamedObject* root);
};
class ODFMODEL_API COfficeDocumentStylesRootPart : public CODFPart {
public:
    static CODFPart* CreateClass(CSDNamedObject* root);
};
class ODFMODEL_API CMathMathRootPart : public CODFPart {
public:
    static CODFPart* CreateClass(CSDNamedObject* root);
};

} // namespace ODF
