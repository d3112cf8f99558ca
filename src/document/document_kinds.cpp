#include "document/document_kinds.h"

#include <algorithm>
#include <iterator>

namespace ODF {
namespace {

struct KindRow {
    DocumentKind kind;
    std::string_view mediaType;
    std::string_view body; ///< the element in the body; empty where another kind has the same
};

constexpr KindRow kKinds[] = {
    {DocumentKind::Text, "application/vnd.oasis.opendocument.text", "office:text"},
    {DocumentKind::Spreadsheet, "application/vnd.oasis.opendocument.spreadsheet", "office:spreadsheet"},
    {DocumentKind::Presentation, "application/vnd.oasis.opendocument.presentation", "office:presentation"},
    {DocumentKind::Drawing, "application/vnd.oasis.opendocument.graphics", "office:drawing"},
    {DocumentKind::Chart, "application/vnd.oasis.opendocument.chart", "office:chart"},
    {DocumentKind::Image, "application/vnd.oasis.opendocument.image", "office:image"},
    {DocumentKind::Formula, "application/vnd.oasis.opendocument.formula", ""},
    {DocumentKind::MasterText, "application/vnd.oasis.opendocument.text-master", ""},
    {DocumentKind::WebText, "application/vnd.oasis.opendocument.text-web", ""},
    {DocumentKind::Database, "application/vnd.oasis.opendocument.base", "office:database"},
    {DocumentKind::Database, "application/vnd.oasis.opendocument.database", ""},
};
constexpr std::string_view kTemplate = "-template";

} // namespace

KindOfDocument ToKind(std::string_view mediaType) noexcept {
    const bool isTemplate = mediaType.ends_with(kTemplate);
    if (isTemplate) mediaType.remove_suffix(kTemplate.size());
    const auto row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [&](const KindRow& candidate) { return candidate.mediaType == mediaType; });
    if (row == std::end(kKinds)) return {};
    return {row->kind, isTemplate};
}

std::string_view MediaTypeFor(DocumentKind kind) noexcept {
    const auto row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [kind](const KindRow& candidate) { return candidate.kind == kind; });
    return row == std::end(kKinds) ? std::string_view() : row->mediaType;
}

DocumentKind KindOfBody(std::string_view elementName) noexcept {
    if (elementName.empty()) return DocumentKind::Unknown;
    const auto row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [&](const KindRow& candidate) { return candidate.body == elementName; });
    return row == std::end(kKinds) ? DocumentKind::Unknown : row->kind;
}

} // namespace ODF
