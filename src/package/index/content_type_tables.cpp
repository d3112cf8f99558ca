#include "package/index/content_type_tables.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace SDPackage {

namespace {

struct Row {
    Units relationType;
    Units contentType;
};

constexpr bool ByType(const Row& a, const Row& b) noexcept {
    return a.relationType < b.relationType;
}

// Both tables are in the binary order of the relationship type.

constexpr Row kXmlTypes[] = {
    {u"http://schemas.microsoft.com/office/2006/relationships/xlMacrosheet",
     u"application/vnd.ms-excel.macrosheet+xml"},
    {u"http://schemas.microsoft.com/office/2011/relationships/chartColorStyle",
     u"application/vnd.ms-office.chartcolorstyle+xml"},
    {u"http://schemas.microsoft.com/office/2011/relationships/chartStyle",
     u"application/vnd.ms-office.chartstyle+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/calcChain",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.calcChain+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/chart",
     u"application/vnd.openxmlformats-officedocument.drawingml.chart+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/chartUserShapes",
     u"application/vnd.openxmlformats-officedocument.drawingml.chartshapes+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/chartsheet",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.chartsheet+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/commentAuthors",
     u"application/vnd.openxmlformats-officedocument.presentationml.commentAuthors+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/connections",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.connections+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/custom-properties",
     u"application/vnd.openxmlformats-officedocument.custom-properties+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/customXmlProps",
     u"application/vnd.openxmlformats-officedocument.customXmlProperties+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/diagramColors",
     u"application/vnd.openxmlformats-officedocument.drawingml.diagramColors+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/diagramData",
     u"application/vnd.openxmlformats-officedocument.drawingml.diagramData+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/diagramLayout",
     u"application/vnd.openxmlformats-officedocument.drawingml.diagramLayout+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/diagramQuickStyle",
     u"application/vnd.openxmlformats-officedocument.drawingml.diagramStyle+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/dialogsheet",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.dialogsheet+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/drawing",
     u"application/vnd.openxmlformats-officedocument.drawing+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/endnotes",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.endnotes+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties",
     u"application/vnd.openxmlformats-officedocument.extended-properties+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/externalLink",
     u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/externalLink"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/fontTable",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.fontTable+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/footer",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.footer+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/footnotes",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.footnotes+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/glossaryDocument",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.document.glossary+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/handoutMaster",
     u"application/vnd.openxmlformats-officedocument.presentationml.handoutMaster+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/header",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.header+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/notesMaster",
     u"application/vnd.openxmlformats-officedocument.presentationml.notesMaster+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/notesSlide",
     u"application/vnd.openxmlformats-officedocument.presentationml.notesSlide+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/numbering",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.numbering+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/pivotCacheDefinition",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.pivotCacheDefinition+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/pivotCacheRecords",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.pivotCacheRecords+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/pivotTable",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.pivotTable+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/presProps",
     u"application/vnd.openxmlformats-officedocument.presentationml.presProps+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/queryTable",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.queryTable+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/revisionHeaders",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.revisionHeaders+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/revisionLog",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.revisionLog+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/settings",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.settings+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.sharedStrings+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/sheetMetadata",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.sheetMetadata+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/slide",
     u"application/vnd.openxmlformats-officedocument.presentationml.slide+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/slideLayout",
     u"application/vnd.openxmlformats-officedocument.presentationml.slideLayout+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/slideMaster",
     u"application/vnd.openxmlformats-officedocument.presentationml.slideMaster+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/slideUpdateInfo",
     u"application/vnd.openxmlformats-officedocument.presentationml.slideUpdateInfo+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/table",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.table+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/tableSingleCells",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.tableSingleCells+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/tableStyles",
     u"application/vnd.openxmlformats-officedocument.presentationml.tableStyles+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/tags",
     u"application/vnd.openxmlformats-officedocument.presentationml.tags+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/theme",
     u"application/vnd.openxmlformats-officedocument.theme+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/themeOverride",
     u"application/vnd.openxmlformats-officedocument.themeOverride+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/usernames",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.userNames+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/viewProps",
     u"application/vnd.openxmlformats-officedocument.presentationml.viewProps+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/volatileDependencies",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.volatileDependencies+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/webSettings",
     u"application/vnd.openxmlformats-officedocument.wordprocessingml.webSettings+xml"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"},
    {u"http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/signature",
     u"application/vnd.openxmlformats-package.digital-signature-xmlsignature+xml"},
    {u"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties",
     u"application/vnd.openxmlformats-package.core-properties+xml"},
};
static_assert(std::is_sorted(std::begin(kXmlTypes), std::end(kXmlTypes), ByType));

constexpr Row kBinaryTypes[] = {
    {u"http://schemas.microsoft.com/office/2006/relationships/activeXControlBinary",
     u"application/vnd.ms-office.activeX"},
    {u"http://schemas.microsoft.com/office/2006/relationships/attachedToolbars",
     u"application/vnd.ms-excel.attachedToolbars"},
    {u"http://schemas.microsoft.com/office/2006/relationships/vbaProject",
     u"application/vnd.ms-excel.vbaProject"},
    {u"http://schemas.microsoft.com/office/2006/relationships/vbaProjectSignature",
     u"application/vnd.ms-excel.vbaProjectSignature"},
    {u"http://schemas.microsoft.com/office/2006/relationships/wsSortMap",
     u"application/vnd.ms-excel.wsSortMap"},
    {u"http://schemas.microsoft.com/office/2006/relationships/xlBinaryIndex",
     u"application/vnd.ms-excel.binIndexWs"},
    {u"http://schemas.microsoft.com/office/2006/relationships/xlIntlMacrosheet",
     u"application/vnd.ms-excel.intlmacrosheet"},
    {u"http://schemas.microsoft.com/office/2006/relationships/xlMacrosheet",
     u"application/vnd.ms-excel.macrosheet"},
    {u"http://schemas.microsoft.com/office/2007/relationships/slicer", u"application/vnd.ms-excel.slicer"},
    {u"http://schemas.microsoft.com/office/2007/relationships/slicerCache",
     u"application/vnd.ms-excel.slicerCache"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/calcChain",
     u"application/vnd.ms-excel.calcChain"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/chartsheet",
     u"application/vnd.ms-excel.chartsheet"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/comments",
     u"application/vnd.ms-excel.comments"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/connections",
     u"application/vnd.ms-excel.connections"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/dialogsheet",
     u"application/vnd.ms-excel.dialogsheet"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/externalLink",
     u"application/vnd.ms-excel.externalLink"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument",
     u"application/vnd.ms-excel.sheet.binary.macroEnabled.main"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/pivotCacheDefinition",
     u"application/vnd.ms-excel.pivotCacheDefinition"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/pivotCacheRecords",
     u"application/vnd.ms-excel.pivotCacheRecords"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/pivotTable",
     u"application/vnd.ms-excel.PivotTable"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/printerSettings",
     u"application/vnd.openxmlformats-officedocument.spreadsheetml.printerSettings"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/queryTable",
     u"application/vnd.ms-excel.queryTable"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/revisionHeaders",
     u"application/vnd.ms-excel.revisionHeaders"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/revisionLog",
     u"application/vnd.ms-excel.revisionLog"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings",
     u"application/vnd.ms-excel.sharedStrings"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/sheetMetadata",
     u"application/vnd.ms-excel.sheetMetadata"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles",
     u"application/vnd.ms-excel.styles"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/table",
     u"application/vnd.ms-excel.table"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/tableSingleCells",
     u"application/vnd.ms-excel.tableSingleCells"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/usernames",
     u"application/vnd.ms-excel.userNames"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/volatileDependencies",
     u"application/vnd.ms-excel.volatileDependencies"},
    {u"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet",
     u"application/vnd.ms-excel.worksheet"},
};
static_assert(std::is_sorted(std::begin(kBinaryTypes), std::end(kBinaryTypes), ByType));

Units Find(std::span<const Row> rows, Units relationType) noexcept {
    const auto row = std::lower_bound(rows.begin(), rows.end(), Row{relationType, {}}, ByType);
    return row != rows.end() && row->relationType == relationType ? row->contentType : Units();
}

} // namespace

Units ContentTypeOfRelationship(Units relationType) noexcept {
    return Find(kXmlTypes, relationType);
}

Units BinaryContentTypeOfRelationship(Units relationType) noexcept {
    return Find(kBinaryTypes, relationType);
}

} // namespace SDPackage
