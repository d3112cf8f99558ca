#include "document/templates.h"

#include "document/template_xml.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace ODF {
namespace {

using namespace template_xml;

constexpr TemplateMember Member(std::string_view name, std::string_view xml) {
    return {name, "text/xml", xml};
}

constexpr std::array<TemplateMember, 4> Members(std::string_view content, std::string_view styles) {
    return {Member("content.xml", content), Member("styles.xml", styles), Member("meta.xml", kSharedMeta),
            Member("settings.xml", kSharedSettings)};
}

constexpr auto kText = Members(kTextContent, kTextStyles);
constexpr auto kMasterText = Members(kMasterTextContent, kTextStyles);
constexpr auto kSpreadsheet = Members(kSpreadsheetContent, kSpreadsheetStyles);
constexpr auto kPresentation = Members(kPresentationContent, kPresentationStyles);
constexpr auto kDrawing = Members(kDrawingContent, kDrawingStyles);
constexpr auto kChart = Members(kChartContent, kChartStyles);
constexpr auto kImage = Members(kImageContent, kImageStyles);
/// A formula has no styles.
constexpr std::array kFormula{Member("content.xml", kFormulaContent), Member("meta.xml", kSharedMeta),
                              Member("settings.xml", kSharedSettings)};

struct TemplateRow {
    std::string_view mediaType;
    std::span<const TemplateMember> members;
};

constexpr TemplateRow kTemplates[] = {
    {"application/vnd.oasis.opendocument.text", kText},
    {"application/vnd.oasis.opendocument.text-master", kMasterText},
    {"application/vnd.oasis.opendocument.text-web", kText},
    {"application/vnd.oasis.opendocument.spreadsheet", kSpreadsheet},
    {"application/vnd.oasis.opendocument.presentation", kPresentation},
    {"application/vnd.oasis.opendocument.graphics", kDrawing},
    {"application/vnd.oasis.opendocument.chart", kChart},
    {"application/vnd.oasis.opendocument.image", kImage},
    {"application/vnd.oasis.opendocument.formula", kFormula},
};

} // namespace

std::span<const TemplateMember> Templates(std::string_view packageMediaType) noexcept {
    const auto row =
        std::find_if(std::begin(kTemplates), std::end(kTemplates),
                     [&](const TemplateRow& candidate) { return candidate.mediaType == packageMediaType; });
    return row == std::end(kTemplates) ? std::span<const TemplateMember>() : row->members;
}

} // namespace ODF
