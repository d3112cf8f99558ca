#include "document/part_factory.h"

#include <odfmodel/document/part_factories.h>

namespace ODF {
namespace {

constexpr std::u16string_view kFormula = u"application/vnd.oasis.opendocument.formula";

struct Row {
    ODF_MedType name;
    CODFPart* (*create)(CSDNamedObject*);
};
constexpr Row kRows[] = {
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
        return kFormula;
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
        for (const Row& row : kRows) {
            if (name != ToView(ODFUtil::GetMediaType(row.name))) continue;
            const bool isFormula = row.name == ODF_MedTypeContent && relationType == kFormula;
            return isFormula ? CMathMathRootPart::CreateClass(nullptr) : row.create(nullptr);
        }
    }
    return CBinayrPart::CreateClass(nullptr);
}

} // namespace ODF
