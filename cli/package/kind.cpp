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
    {Type::DocTypeWorkbook, "workbook (Open Packaging)"},
    {Type::DocTypeWorkbookMacro, "workbook with macros (Open Packaging)"},
    {Type::DocTypeWorkbookBinary, "binary workbook (Open Packaging)"},
    {Type::DocTypeWorkbookTemplate, "workbook template (Open Packaging)"},
    {Type::DocTypeWorkbookMacroTemplate, "workbook template with macros (Open Packaging)"},
    {Type::DocTypeWordDocument, "word document (Open Packaging)"},
    {Type::DocTypeWordTemplate, "word template (Open Packaging)"},
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
    std::string_view kind; ///< behind the common head of the media types
    std::string_view name;
};

constexpr std::string_view kMediaHead = "application/vnd.oasis.opendocument.";
constexpr MediaRow kMediaTypes[] = {
    {"text", "text document"},
    {"text-master", "master document"},
    {"text-web", "web page"},
    {"spreadsheet", "spreadsheet"},
    {"presentation", "presentation"},
    {"graphics", "drawing"},
    {"chart", "chart"},
    {"formula", "formula"},
    {"image", "image"},
    {"database", "database"},
};

} // namespace

std::string_view NameOf(DocumentType type) {
    const auto* const row =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& r) { return r.type == type; });
    return row == std::end(kTypes) ? "unknown" : row->name;
}

std::string NameOfMediaType(std::string_view mediaType) {
    if (!mediaType.starts_with(kMediaHead)) return {};
    std::string_view kind = mediaType.substr(kMediaHead.size());
    constexpr std::string_view kTemplate = "-template";
    const bool isTemplate = kind.ends_with(kTemplate);
    if (isTemplate) kind.remove_suffix(kTemplate.size());
    for (const MediaRow& row : kMediaTypes)
        if (row.kind == kind) return std::string(row.name) + (isTemplate ? " template" : "");
    return {};
}

bool IsOpenPackaging(DocumentType type) {
    return (type & 0xF000000) == 0x1000000;
}

DocumentType DetectType(const std::string& path) {
    SDPackage::IPackage package;
    return package.DetectDocumentType(path);
}

} // namespace command
