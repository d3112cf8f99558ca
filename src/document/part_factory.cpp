#include "document/part_factory.h"

#include <odfmodel/document/part_factories.h>

namespace ODF {
namespace {

constexpr std::u16string_view kFormulaType = u"application/vnd.oasis.opendocument.formula";

struct PartRow {
    ODF_MedType name;
    CODFPart* (*create)(CSDNamedObject*);
};
constexpr PartRow kParts[] = {
    {ODF_MedTypeContent, &COfficeDocumentContentRootPart::CreateClass},
    {ODF_MedTypeStyles, &COfficeDocumentStylesRootPart::CreateClass},
    {ODF_MedTypeMeta, &COfficeDocumentMetaRootPart::CreateClass},
    {ODF_MedTypeSettings, &COfficeDocumentSettingsRootPart::CreateClass},
};

} // namespace

std::u16string_view MediaTypeOf(sd::SDDocType::DocumentType type) noexcept {
    switch (type) {
    case sd::SDDocType::DocTypeOdfPresentation:
        return u"application/vnd.oasis.opendocument.presentation";
    case sd::SDDocType::DocTypeOdfSpreadsheet:
        return u"application/vnd.oasis.opendocument.spreadsheet";
    case sd::SDDocType::DocTypeOdfText:
        return u"application/vnd.oasis.opendocument.text";
    case sd::SDDocType::DocTypeOdfFormula:
        return kFormulaType;
    case sd::SDDocType::DocTypeOdfGraphics:
        return u"application/vnd.oasis.opendocument.graphics";
    default:
        return {};
    }
}

ODFPartFactory::ODFPartFactory(sd::SDDocType::DocumentType type) noexcept
    : isOdf_(!MediaTypeOf(type).empty()) {}

CODFPart* ODFPartFactory::Create(std::u16string_view name, std::u16string_view relationType) const {
    if (isOdf_) {
        for (const PartRow& row : kParts) {
            if (name != ToView(ODFUtil::GetMediaType(row.name))) continue;
            const bool isFormula = row.name == ODF_MedTypeContent && relationType == kFormulaType;
            return isFormula ? CMathMathRootPart::CreateClass(nullptr) : row.create(nullptr);
        }
    }
    return CBinayrPart::CreateClass(nullptr);
}

} // namespace ODF
