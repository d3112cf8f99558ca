#pragma once

#include <odfmodel/document/document.h>

class CSDObject;

namespace ODF {

class CMathMath;
class COfficeDocumentContent;
class COfficeDocumentMeta;
class COfficeDocumentSettings;
class COfficeDocumentStyles;

/// A text, spreadsheet, presentation or drawing document: typed access to the root elements of its four main
/// parts. The getters give null while there is no such part.
class ODFMODEL_API CODFDoc : public CDocument {
public:
    CODFDoc();
    ~CODFDoc() override;

    using CDocument::Open;
    using CDocument::Save;
    int Open(const unsigned short* path) override;
    int Save(const unsigned short* path) override;

    /// Builds a new document of one of the ODF types: parts for content, styles, settings and meta, each with
    /// an empty root element. 0 for any other type.
    int CreateMainPart(DocumentType type);

    COfficeDocumentContent* GetContentClass() const noexcept { return contentClass_; }
    COfficeDocumentMeta* GetMetaClass() const noexcept { return metaClass_; }
    COfficeDocumentStyles* GetStylesClass() const noexcept { return stylesClass_; }
    COfficeDocumentSettings* GetSettingsClass() const noexcept { return settingsClass_; }

    /// The root element of the part `name` in a folder of the package, such as "Object 1" and "content.xml";
    /// folders within folders are joined without a separator. Null when there is none.
    CSDObject* Get3rdPartyPart(CTulStringW directory, const unsigned short* const name);
    CSDObject* Get3rdPartyPart(CTulStringW directory, const SDPackage::PlainText auto& name) {
        return Get3rdPartyPart(std::move(directory), CTulStringW(name).c_str());
    }

private:
    void FindRoots();

    COfficeDocumentContent* contentClass_ = nullptr;
    COfficeDocumentMeta* metaClass_ = nullptr;
    COfficeDocumentStyles* stylesClass_ = nullptr;
    COfficeDocumentSettings* settingsClass_ = nullptr;
};

/// A formula document; its content is a `math:math`.
class ODFMODEL_API CODFMathDoc : public CDocument {
public:
    CODFMathDoc();
    ~CODFMathDoc() override;

    using CDocument::Open;
    using CDocument::Save;
    int Open(const unsigned short* path) override;
    int Save(const unsigned short* path) override;

    CMathMath* GetContentClass() const noexcept { return contentClass_; }
    COfficeDocumentMeta* GetMetaClass() const noexcept { return metaClass_; }
    COfficeDocumentStyles* GetStylesClass() const noexcept { return stylesClass_; }
    COfficeDocumentSettings* GetSettingsClass() const noexcept { return settingsClass_; }

private:
    CMathMath* contentClass_ = nullptr;
    COfficeDocumentMeta* metaClass_ = nullptr;
    COfficeDocumentStyles* stylesClass_ = nullptr;
    COfficeDocumentSettings* settingsClass_ = nullptr;
};

} // namespace ODF
