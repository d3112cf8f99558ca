#include "package/document_types.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace SDPackage {

namespace {

struct ExtensionRow {
    Units extension;
    DocumentType type;
};

constexpr ExtensionRow kExtensions[] = {
    {u".thmx", SDDocType::DocTypeTheme},
    {u".qvm", SDDocType::DocTypeTheme},
    {u".eftx", SDDocType::DocTypeEffect},
    {u".qve", SDDocType::DocTypeEffect},
    {u".gvml", SDDocType::DocTypeGraphicML},
    {u".pptx", SDDocType::DocTypePresentation},
    {u".pane", SDDocType::DocTypePresentation},
    {u".qva", SDDocType::DocTypePresentation},
    {u".qvk", SDDocType::DocTypePresentation},
    {u".qvs", SDDocType::DocTypePresentation},
    {u".qvj", SDDocType::DocTypePresentation},
    {u".potx", SDDocType::DocTypePresentationTemplate},
    {u".qvt", SDDocType::DocTypePresentationTemplate},
    {u".ppsx", SDDocType::DocTypeSlideShow},
    {u".xlsx", SDDocType::DocTypeWorkbook},
    {u".xlsm", SDDocType::DocTypeWorkbookMacro},
    {u".xlsb", SDDocType::DocTypeWorkbookBinary},
    {u".xltx", SDDocType::DocTypeWorkbookTemplate},
    {u".xltm", SDDocType::DocTypeWorkbookMacroTemplate},
    {u".docx", SDDocType::DocTypeWordDocument},
    {u".dotx", SDDocType::DocTypeWordTemplate},
    {u".odp", SDDocType::DocTypeOdfPresentation},
    {u".ods", SDDocType::DocTypeOdfSpreadsheet},
    {u".odt", SDDocType::DocTypeOdfText},
    {u".odf", SDDocType::DocTypeOdfFormula},
    {u".odg", SDDocType::DocTypeOdfGraphics},
};

/// What is known only to packages that keep their file's own.
constexpr ExtensionRow kMoreExtensions[] = {
    {u".docm", SDDocType::DocTypeWordDocumentMacro}, {u".dotm", SDDocType::DocTypeWordMacroTemplate},
    {u".pptm", SDDocType::DocTypePresentationMacro}, {u".potm", SDDocType::DocTypePresentationMacroTemplate},
    {u".ppsm", SDDocType::DocTypeSlideShowMacro},    {u".ppam", SDDocType::DocTypePresentationAddIn},
    {u".xlam", SDDocType::DocTypeWorkbookAddIn},
};

struct ContentRow {
    Units contentType;
    DocumentType type;
};

constexpr Units kThemeManager = u"application/vnd.openxmlformats-officedocument.themeManager+xml";

/// Main content types by document type.
constexpr ContentRow kMainTypes[] = {
    {u"application/vnd.openxmlformats-officedocument.presentationml.presentation.main+xml",
     SDDocType::DocTypePresentation},
    {u"application/vnd.openxmlformats-officedocument.presentationml.slideshow.main+xml",
     SDDocType::DocTypeSlideShow},
    {u"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml",
     SDDocType::DocTypeWordDocument},
    {u"application/vnd.openxmlformats-officedocument.wordprocessingml.template.main+xml",
     SDDocType::DocTypeWordTemplate},
    {u"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml",
     SDDocType::DocTypeWorkbook},
    {u"application/vnd.ms-excel.sheet.macroEnabled.main+xml", SDDocType::DocTypeWorkbookMacro},
    {u"application/vnd.ms-excel.sheet.binary.macroEnabled.main", SDDocType::DocTypeWorkbookBinary},
    {u"application/vnd.openxmlformats-officedocument.spreadsheetml.template.main+xml",
     SDDocType::DocTypeWorkbookTemplate},
    {u"application/vnd.ms-excel.template.macroEnabled.main+xml", SDDocType::DocTypeWorkbookMacroTemplate},
    {u"application/vnd.openxmlformats-officedocument.presentationml.template.main+xml",
     SDDocType::DocTypePresentationTemplate},
    {u"application/vnd.ms-word.document.macroEnabled.main+xml", SDDocType::DocTypeWordDocumentMacro},
    {u"application/vnd.ms-word.template.macroEnabledTemplate.main+xml", SDDocType::DocTypeWordMacroTemplate},
    {u"application/vnd.ms-powerpoint.presentation.macroEnabled.main+xml",
     SDDocType::DocTypePresentationMacro},
    {u"application/vnd.ms-powerpoint.template.macroEnabled.main+xml",
     SDDocType::DocTypePresentationMacroTemplate},
    {u"application/vnd.ms-powerpoint.slideshow.macroEnabled.main+xml", SDDocType::DocTypeSlideShowMacro},
    {u"application/vnd.ms-powerpoint.addin.macroEnabled.main+xml", SDDocType::DocTypePresentationAddIn},
    {u"application/vnd.ms-excel.addin.macroEnabled.main+xml", SDDocType::DocTypeWorkbookAddIn},
    {kThemeManager, SDDocType::DocTypeTheme},
    {kThemeManager, SDDocType::DocTypeEffect},
    {u"application/vnd.openxmlformats-officedocument.drawing+xml", SDDocType::DocTypeGraphicML},
    {u"application/vnd.oasis.opendocument.presentation", SDDocType::DocTypeOdfPresentation},
    {u"application/vnd.oasis.opendocument.text", SDDocType::DocTypeOdfText},
    {u"application/vnd.oasis.opendocument.spreadsheet", SDDocType::DocTypeOdfSpreadsheet},
    {u"application/vnd.oasis.opendocument.formula", SDDocType::DocTypeOdfFormula},
    {u"application/vnd.oasis.opendocument.graphics", SDDocType::DocTypeOdfGraphics},
};

/// Document types by the content types that tell them; the last three are the user data form's.
constexpr ContentRow kDetection[] = {
    {u"application/vnd.openxmlformats-officedocument.presentationml.presentation.main+xml",
     SDDocType::DocTypePresentation},
    {u"application/vnd.openxmlformats-officedocument.presentationml.slideshow.main+xml",
     SDDocType::DocTypeSlideShow},
    {u"application/vnd.openxmlformats-officedocument.presentationml.template.main+xml",
     SDDocType::DocTypePresentationTemplate},
    {u"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml",
     SDDocType::DocTypeWordDocument},
    {u"application/vnd.openxmlformats-officedocument.wordprocessingml.template.main+xml",
     SDDocType::DocTypeWordTemplate},
    {u"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml",
     SDDocType::DocTypeWorkbook},
    {u"application/vnd.ms-excel.sheet.macroEnabled.main+xml", SDDocType::DocTypeWorkbookMacro},
    {u"application/vnd.ms-excel.sheet.binary.macroEnabled.main", SDDocType::DocTypeWorkbookBinary},
    {kThemeManager, SDDocType::DocTypeTheme},
    {u"application/vnd.openxmlformats-officedocument.drawing+xml", SDDocType::DocTypeGraphicML},
    {u"application/vnd.tul-officedocument.presentationml.presentation.main+xml",
     SDDocType::DocTypeTulPresentation},
    {u"application/vnd.tul-officedocument.spreadsheetml.sheet.main+xml", SDDocType::DocTypeTulWorkbook},
    {u"application/vnd.tul-officedocument.wordprocessingml.document.main+xml",
     SDDocType::DocTypeTulWordDocument},
};
constexpr std::size_t kUserFormRows = 3;

constexpr Units kFolderTypePrefix = u"application/vnd.oasis.opendocument.";
constexpr Units kFolderTypes[] = {u"presentation", u"text",     u"spreadsheet",
                                  u"formula",      u"graphics", u"chart"};

} // namespace

DocumentType TypeOfExtension(Units extension, bool withAll) noexcept {
    for (const ExtensionRow& row : kExtensions)
        if (EqualIgnoringCase(row.extension, extension)) return row.type;
    for (const ExtensionRow& row : kMoreExtensions)
        if (withAll && EqualIgnoringCase(row.extension, extension)) return row.type;
    return SDDocType::DocTypeUnknown;
}

Units MainContentType(DocumentType type) noexcept {
    for (const ContentRow& row : kMainTypes)
        if (row.type == type) return row.contentType;
    return {};
}

DocumentType TypeOfContent(Units contentType, bool withUserForm) noexcept {
    const auto* const end = std::end(kDetection) - (withUserForm ? 0 : kUserFormRows);
    const auto* const row = std::find_if(std::begin(kDetection), end, [&](const ContentRow& candidate) {
        return candidate.contentType == contentType;
    });
    return row == end ? SDDocType::DocTypeUnknown : row->type;
}

DocumentType TypeOfMainContent(Units contentType) noexcept {
    for (const ContentRow& row : kMainTypes)
        if (EqualIgnoringCase(row.contentType, contentType)) return row.type;
    return SDDocType::DocTypeUnknown;
}

bool IsSubordinate(DocumentType type) noexcept {
    return type == SDDocType::DocTypeUnknown || type == SDDocType::DocTypeTheme ||
           type == SDDocType::DocTypeEffect || type == SDDocType::DocTypeGraphicML;
}

bool IsOdf(DocumentType type) noexcept {
    switch (type) {
    case SDDocType::DocTypeOdfPresentation:
    case SDDocType::DocTypeOdfSpreadsheet:
    case SDDocType::DocTypeOdfText:
    case SDDocType::DocTypeOdfFormula:
    case SDDocType::DocTypeOdfGraphics:
        return true;
    default:
        return false;
    }
}

bool IsOpenPackaging(DocumentType type) noexcept {
    switch (type) {
    case SDDocType::DocTypeTheme:
    case SDDocType::DocTypeEffect:
    case SDDocType::DocTypeGraphicML:
    case SDDocType::DocTypePresentation:
    case SDDocType::DocTypePresentationTemplate:
    case SDDocType::DocTypeSlideShow:
    case SDDocType::DocTypeWorkbook:
    case SDDocType::DocTypeWorkbookMacro:
    case SDDocType::DocTypeWorkbookBinary:
    case SDDocType::DocTypeWorkbookTemplate:
    case SDDocType::DocTypeWorkbookMacroTemplate:
    case SDDocType::DocTypeWordDocument:
    case SDDocType::DocTypeWordTemplate:
    case SDDocType::DocTypeWordDocumentMacro:
    case SDDocType::DocTypeWordMacroTemplate:
    case SDDocType::DocTypePresentationMacro:
    case SDDocType::DocTypePresentationMacroTemplate:
    case SDDocType::DocTypeSlideShowMacro:
    case SDDocType::DocTypePresentationAddIn:
    case SDDocType::DocTypeWorkbookAddIn:
        return true;
    default:
        return false;
    }
}

bool IsWordFamily(DocumentType type) noexcept {
    constexpr std::array<int, 6> kFamily = {0x1000030, 0x1000031, 0x1000032, 0x1000033, 0x2000070, 0x2000071};
    return std::find(kFamily.begin(), kFamily.end(), static_cast<int>(type)) != kFamily.end();
}

bool IsFolderType(Units mediaType) noexcept {
    if (!mediaType.starts_with(kFolderTypePrefix)) return false;
    const Units kind = mediaType.substr(kFolderTypePrefix.size());
    return std::find(std::begin(kFolderTypes), std::end(kFolderTypes), kind) != std::end(kFolderTypes);
}

} // namespace SDPackage
