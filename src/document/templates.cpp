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

constexpr auto kTextMembers = Members(kTextContent, kTextStyles);
constexpr auto kMasterTextMembers = Members(kMasterTextContent, kTextStyles);
constexpr auto kSpreadsheetMembers = Members(kSpreadsheetContent, kSpreadsheetStyles);
constexpr auto kPresentationMembers = Members(kPresentationContent, kPresentationStyles);
constexpr auto kDrawingMembers = Members(kDrawingContent, kDrawingStyles);
constexpr auto kChartMembers = Members(kChartContent, kChartStyles);
constexpr auto kImageMembers = Members(kImageContent, kImageStyles);
/// A formula has no styles.
constexpr std::array kFormulaMembers{Member("content.xml", kFormulaContent), Member("meta.xml", kSharedMeta),
                                     Member("settings.xml", kSharedSettings)};

struct TemplateRow {
    std::string_view mediaType;
    std::span<const TemplateMember> members;
};

constexpr TemplateRow kTemplates[] = {
    {"application/vnd.oasis.opendocument.text", kTextMembers},
    {"application/vnd.oasis.opendocument.text-master", kMasterTextMembers},
    {"application/vnd.oasis.opendocument.text-web", kTextMembers},
    {"application/vnd.oasis.opendocument.spreadsheet", kSpreadsheetMembers},
    {"application/vnd.oasis.opendocument.presentation", kPresentationMembers},
    {"application/vnd.oasis.opendocument.graphics", kDrawingMembers},
    {"application/vnd.oasis.opendocument.chart", kChartMembers},
    {"application/vnd.oasis.opendocument.image", kImageMembers},
    {"application/vnd.oasis.opendocument.formula", kFormulaMembers},
};

} // namespace

std::span<const TemplateMember> Templates(std::string_view packageMediaType) noexcept {
    const auto row =
        std::find_if(std::begin(kTemplates), std::end(kTemplates),
                     [&](const TemplateRow& candidate) { return candidate.mediaType == packageMediaType; });
    return row == std::end(kTemplates) ? std::span<const TemplateMember>() : row->members;
}

} // namespace ODF
