#pragma once

namespace sd {

/// Document types of the packages that are read and written. The ranges carry meaning: 0x1xxxxxx is an Open
/// Packaging Conventions package, 0x2xxxxxx an ODF package.
struct SDDocType {
    enum DocumentType : int {
        DocTypeUnknown = 0,
        DocTypeTheme = 0x1000005,
        DocTypeEffect = 0x1000006,
        DocTypeGraphicML = 0x1000007,
        DocTypePresentation = 0x1000010,
        DocTypePresentationMacro = 0x1000011,
        DocTypePresentationTemplate = 0x1000012,
        DocTypePresentationMacroTemplate = 0x1000013,
        DocTypeSlideShow = 0x1000014,
        DocTypeSlideShowMacro = 0x1000015,
        DocTypePresentationAddIn = 0x1000016,
        DocTypeWorkbook = 0x1000020,
        DocTypeWorkbookMacro = 0x1000021,
        DocTypeWorkbookBinary = 0x1000022,
        DocTypeWorkbookTemplate = 0x1000023,
        DocTypeWorkbookMacroTemplate = 0x1000024,
        DocTypeWorkbookAddIn = 0x1000025,
        DocTypeWordDocument = 0x1000030,
        DocTypeWordDocumentMacro = 0x1000031,
        DocTypeWordTemplate = 0x1000032,
        DocTypeWordMacroTemplate = 0x1000033,
        DocTypeTulPresentation = 0x1000040, ///< main parts in the form of the user data module
        DocTypeTulWorkbook = 0x1000041,
        DocTypeTulWordDocument = 0x1000042,
        DocTypeOdfPresentation = 0x2000050,
        DocTypeOdfSpreadsheet = 0x2000060,
        DocTypeOdfText = 0x2000070,
        DocTypeOdfFormula = 0x2000080,
        DocTypeOdfGraphics = 0x2000090
    };
};

} // namespace sd
