#pragma once

#include <odfmodel/odfmodel.h>

#include <array>
#include <iterator>
#include <string>
#include <string_view>

namespace test {

/// One kind of document, and how a paragraph comes into an empty one.
struct Kind {
    const char* name; ///< also the extension
    sd::SDDocType::DocumentType type;
    std::string_view mediaType;
    ODF::CTextP* (*addParagraph)(ODF::COfficeBody& body);
};

inline const std::array<Kind, 4> kKinds{{
    {"odt", sd::SDDocType::DocTypeOdfText, "application/vnd.oasis.opendocument.text",
     [](ODF::COfficeBody& body) { return body.SetOfficeText()->SetTextP(); }},
    {"ods", sd::SDDocType::DocTypeOdfSpreadsheet, "application/vnd.oasis.opendocument.spreadsheet",
     [](ODF::COfficeBody& body) {
         ODF::CTableTable* const table = body.SetOfficeSpreadsheet()->SetTableTable();
         table->SetTableName(u"Sheet");
         return table->SetTableTableRow()->SetTableTableCell()->SetTextP();
     }},
    {"odp", sd::SDDocType::DocTypeOdfPresentation, "application/vnd.oasis.opendocument.presentation",
     [](ODF::COfficeBody& body) {
         return body.SetOfficePresentation()->SetDrawPage()->SetDrawFrame()->SetDrawTextBox()->SetTextP();
     }},
    {"odg", sd::SDDocType::DocTypeOdfGraphics, "application/vnd.oasis.opendocument.graphics",
     [](ODF::COfficeBody& body) {
         return body.SetOfficeDrawing()->SetDrawPage()->SetDrawFrame()->SetDrawTextBox()->SetTextP();
     }},
}};

inline const Kind& kTextKind = kKinds[0];

/// A new document of that kind that holds one paragraph; returns the paragraph.
inline ODF::CTextP* Build(ODF::CODFDoc& document, const Kind& kind, const CTulStringW& text) {
    if (document.CreateMainPart(kind.type) == 0) return nullptr;
    document.GetContentClass()->SetOfficeVersion(u"1.2");
    ODF::CTextP* const paragraph = kind.addParagraph(*document.GetContentClass()->SetOfficeBody());
    paragraph->SetText(text);
    return paragraph;
}

} // namespace test
