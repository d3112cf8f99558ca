#include <odfmodel/document/odf_document.h>

#include "document/part_factory.h"

#include <odfmodel/document/part_factories.h>
#include <odfmodel/elements/math/presentation.h>
#include <odfmodel/elements/office/document.h>

namespace ODF {
namespace {

template<typename Root>
Root* RootOf(CODFPart* part) {
    return part ? part->RootAs<Root>() : nullptr;
}

} // namespace

CODFDoc::CODFDoc() = default;
CODFDoc::~CODFDoc() = default;

void CODFDoc::FindRoots() {
    contentClass_ = RootOf<COfficeDocumentContent>(FindTopPart(u"content.xml"));
    metaClass_ = RootOf<COfficeDocumentMeta>(FindTopPart(u"meta.xml"));
    stylesClass_ = RootOf<COfficeDocumentStyles>(FindTopPart(u"styles.xml"));
    settingsClass_ = RootOf<COfficeDocumentSettings>(FindTopPart(u"settings.xml"));
}

int CODFDoc::Open(const unsigned short* path) {
    contentClass_ = nullptr;
    metaClass_ = nullptr;
    stylesClass_ = nullptr;
    settingsClass_ = nullptr;
    if (!CDocument::Open(path)) return 0;
    FindRoots();
    return 1;
}

int CODFDoc::Save(const unsigned short* path) {
    return CDocument::Save(path) ? 1 : 0;
}

int CODFDoc::CreateMainPart(DocumentType type) {
    const std::u16string_view mediaType = MediaTypeOf(type);
    if (mediaType.empty()) return 0;
    SetDocType(type);
    _CreateRootAndMainPart();
    std::vector<ISDPart*> parts;
    if (GetRootPart()->GetChildParts(&parts) == 0) return 0;
    const auto name = [](CODFPart* part, ODF_MedType key) {
        part->SetPackagePath(ODFUtil::GetMediaType(key));
        part->SetPartname(ODFUtil::GetMediaType(key));
    };
    for (ISDPart* const child : parts) {
        auto* const part = static_cast<CODFPart*>(child);
        part->SetContentType(u"text/xml");
        part->SetRelationtype(mediaType);
        if (auto* const content = part->RootAs<COfficeDocumentContent>()) {
            contentClass_ = content;
            name(part, ODF_MedTypeContent);
        } else if (auto* const meta = part->RootAs<COfficeDocumentMeta>()) {
            metaClass_ = meta;
            name(part, ODF_MedTypeMeta);
        } else if (auto* const settings = part->RootAs<COfficeDocumentSettings>()) {
            settingsClass_ = settings;
            name(part, ODF_MedTypeSettings);
        } else if (auto* const styles = part->RootAs<COfficeDocumentStyles>()) {
            stylesClass_ = styles;
            name(part, ODF_MedTypeStyles);
        }
    }
    return 1;
}

CSDObject* CODFDoc::Get3rdPartyPart(CTulStringW directory, const unsigned short* const name) {
    if (!name) return nullptr;
    for (const auto& [ipart, part] : Parts()) {
        CTulStringW folders = part->GetPackagePathOnly();
        folders.Replace(u"\\", u"");
        if (folders == directory && ToView(part->GetPartname()) == ToView(name)) return part->GetRootClass();
    }
    return nullptr;
}

CODFMathDoc::CODFMathDoc() = default;
CODFMathDoc::~CODFMathDoc() = default;

int CODFMathDoc::Open(const unsigned short* path) {
    contentClass_ = nullptr;
    metaClass_ = nullptr;
    stylesClass_ = nullptr;
    settingsClass_ = nullptr;
    if (!CDocument::Open(path)) return 0;
    contentClass_ = RootOf<CMathMath>(FindTopPart(u"content.xml"));
    metaClass_ = RootOf<COfficeDocumentMeta>(FindTopPart(u"meta.xml"));
    stylesClass_ = RootOf<COfficeDocumentStyles>(FindTopPart(u"styles.xml"));
    settingsClass_ = RootOf<COfficeDocumentSettings>(FindTopPart(u"settings.xml"));
    return 1;
}

int CODFMathDoc::Save(const unsigned short* path) {
    return CDocument::Save(path) ? 1 : 0;
}

} // namespace ODF
