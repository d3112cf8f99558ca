#include "package/kind.h"

#include <odfmodel/package/package.h>

#include <algorithm>

namespace command {
namespace {

using Type = sd::SDDocType;

struct TypeRow {
    DocumentType type;
    std::string_view name;
};

constexpr TypeRow kTypes[] = {
    {Type::DocTypeTheme, "theme"},
    {Type::DocTypeEffect, "theme effects"},
    {Type::DocTypeGraphicML, "drawing (Open Packaging)"},
    {Type::DocTypePresentation, "presentation (Open Packaging)"},
    {Type::DocTypePresentationTemplate, "presentation template (Open Packaging)"},
    {Type::DocTypeSlideShow, "slide show (Open Packaging)"},
    {Type::DocTypePresentationMacro, "presentation with macros (Open Packaging)"},
    {Type::DocTypePresentationMacroTemplate, "presentation template with macros (Open Packaging)"},
    {Type::DocTypeSlideShowMacro, "slide show with macros (Open Packaging)"},
    {Type::DocTypePresentationAddIn, "presentation add-in (Open Packaging)"},
    {Type::DocTypeWorkbook, "workbook (Open Packaging)"},
    {Type::DocTypeWorkbookMacro, "workbook with macros (Open Packaging)"},
    {Type::DocTypeWorkbookBinary, "binary workbook (Open Packaging)"},
    {Type::DocTypeWorkbookTemplate, "workbook template (Open Packaging)"},
    {Type::DocTypeWorkbookMacroTemplate, "workbook template with macros (Open Packaging)"},
    {Type::DocTypeWorkbookAddIn, "workbook add-in (Open Packaging)"},
    {Type::DocTypeWordDocument, "word document (Open Packaging)"},
    {Type::DocTypeWordTemplate, "word template (Open Packaging)"},
    {Type::DocTypeWordDocumentMacro, "word document with macros (Open Packaging)"},
    {Type::DocTypeWordMacroTemplate, "word template with macros (Open Packaging)"},
    {Type::DocTypeTulPresentation, "presentation (user data form)"},
    {Type::DocTypeTulWorkbook, "workbook (user data form)"},
    {Type::DocTypeTulWordDocument, "word document (user data form)"},
    {Type::DocTypeOdfPresentation, "presentation"},
    {Type::DocTypeOdfSpreadsheet, "spreadsheet"},
    {Type::DocTypeOdfText, "text document"},
    {Type::DocTypeOdfFormula, "formula"},
    {Type::DocTypeOdfGraphics, "drawing"},
};

struct MediaRow {
    std::string_view mediaType; ///< without the common head
    ODF::DocumentKind kind;
    std::string_view name;
};

constexpr std::string_view kMediaHead = "application/vnd.oasis.opendocument.";
constexpr MediaRow kMediaTypes[] = {
    {"text", ODF::DocumentKind::Text, "text document"},
    {"text-master", ODF::DocumentKind::MasterText, "master document"},
    {"text-web", ODF::DocumentKind::WebText, "web page"},
    {"spreadsheet", ODF::DocumentKind::Spreadsheet, "spreadsheet"},
    {"presentation", ODF::DocumentKind::Presentation, "presentation"},
    {"graphics", ODF::DocumentKind::Drawing, "drawing"},
    {"chart", ODF::DocumentKind::Chart, "chart"},
    {"formula", ODF::DocumentKind::Formula, "formula"},
    {"image", ODF::DocumentKind::Image, "image"},
    {"base", ODF::DocumentKind::Database, "database"},
    {"database", ODF::DocumentKind::Database, "database"},
};

} // namespace

std::string_view NameOf(DocumentType type) {
    const auto* const row =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& r) { return r.type == type; });
    return row == std::end(kTypes) ? "unknown" : row->name;
}

std::string_view NameOf(ODF::DocumentKind kind) {
    const auto* const row = std::find_if(std::begin(kMediaTypes), std::end(kMediaTypes),
                                         [&](const MediaRow& r) { return r.kind == kind; });
    return row == std::end(kMediaTypes) ? std::string_view() : row->name;
}

std::string NameOfMediaType(std::string_view mediaType) {
    if (!mediaType.starts_with(kMediaHead)) return {};
    mediaType.remove_prefix(kMediaHead.size());
    constexpr std::string_view kTemplate = "-template";
    const bool isTemplate = mediaType.ends_with(kTemplate);
    if (isTemplate) mediaType.remove_suffix(kTemplate.size());
    for (const MediaRow& row : kMediaTypes)
        if (row.mediaType == mediaType) return std::string(row.name) + (isTemplate ? " template" : "");
    return {};
}

bool IsOpenPackaging(DocumentType type) {
    return (type & 0xF000000) == 0x1000000;
}

DocumentType DetectType(const std::string& path) {
    SDPackage::IPackage package;
    package.SetFidelity(ODF::Fidelity::Everything);
    return package.DetectDocumentType(path);
}

} // namespace command
