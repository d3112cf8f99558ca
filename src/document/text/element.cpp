#include "document/text/element.h"

#include "core/object_access.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace ODF::reading {
namespace {

struct ElementRow {
    std::string_view name;
    Element element;
};

constexpr ElementRow kElements[] = {
    {"office:body", Element::Body},
    {"office:automatic-styles", Element::AutomaticStyles},
    {"office:styles", Element::Styles},
    {"office:text", Element::Text},
    {"office:spreadsheet", Element::Spreadsheet},
    {"office:presentation", Element::Presentation},
    {"office:drawing", Element::Drawing},
    {"office:chart", Element::Text},
    {"office:image", Element::Drawing},
    {"text:p", Element::Paragraph},
    {"text:h", Element::Heading},
    {"text:list", Element::List},
    {"text:list-item", Element::ListItem},
    {"text:list-header", Element::ListHeader},
    {"text:numbered-paragraph", Element::NumberedParagraph},
    {"table:table", Element::Table},
    {"table:table-row", Element::Row},
    {"table:table-cell", Element::Cell},
    {"table:covered-table-cell", Element::CoveredCell},
    {"draw:page", Element::Page},
    {"presentation:notes", Element::PageNotes},
    {"text:s", Element::Space},
    {"text:tab", Element::Tab},
    {"text:line-break", Element::LineBreak},
    {"text:change", Element::Change},
    {"text:note", Element::Note},
    {"text:note-citation", Element::NoteCitation},
    {"text:note-body", Element::NoteBody},
    {"text:variable-set", Element::Field},
    {"text:variable-get", Element::Field},
    {"text:variable-input", Element::Field},
    {"text:user-field-get", Element::Field},
    {"text:expression", Element::Field},
    {"text:number", Element::Skipped}, // made again from the list's style
    {"text:measure", Element::Skipped},
    {"office:annotation", Element::Skipped},
    {"office:change-info", Element::Skipped},
    {"office:forms", Element::Skipped},
    {"office:event-listeners", Element::Skipped},
    {"office:dde-source", Element::Skipped},
    {"office:binary-data", Element::Skipped},
    {"draw:object", Element::Skipped},
    {"draw:object-ole", Element::Skipped},
    {"svg:title", Element::Skipped},
    {"svg:desc", Element::Skipped},
    {"text:ruby-text", Element::Skipped},
    {"text:script", Element::Skipped},
    {"table:tracked-changes", Element::Skipped},
    {"table:detective", Element::Skipped},
    {"table:content-validations", Element::Skipped},
    {"table:dde-links", Element::Skipped},
    {"text:tracked-changes", Element::TrackedChanges},
    {"text:changed-region", Element::ChangedRegion},
    {"text:insertion", Element::Insertion},
    {"text:deletion", Element::Deletion},
    {"style:style", Element::Style},
    {"text:list-style", Element::ListStyle},
    {"text:outline-style", Element::OutlineStyle},
    {"text:list-level-style-number", Element::NumberLevel},
    {"text:list-level-style-bullet", Element::BulletLevel},
    {"text:list-level-style-image", Element::ImageLevel},
    {"text:outline-level-style", Element::OutlineLevel},
    {"draw:a", Element::Other},
    {"draw:layer-set", Element::Skipped},
    {"dr3d:scene", Element::Shape},
    {"math:mi", Element::MathToken},
    {"math:mn", Element::MathToken},
    {"math:mo", Element::MathToken},
    {"math:ms", Element::MathToken},
    {"math:mtext", Element::MathToken},
    {"math:ci", Element::MathToken},
    {"math:cn", Element::MathToken},
};

Element Find(std::string_view name) {
    const auto* const row = std::find_if(std::begin(kElements), std::end(kElements),
                                         [&](const ElementRow& r) { return r.name == name; });
    if (row != std::end(kElements)) return row->element;
    return name.starts_with("draw:") ? Element::Shape : Element::Other;
}

} // namespace

Element Elements::find(const CSDObject& object) {
    if (ObjectAccess::isForeign(object)) {
        const auto& foreign = static_cast<const CForeignElement&>(object);
        const std::string_view prefix = PrefixOfNamespace(foreign.GetNamespace());
        return prefix.empty() ? Element::Other : Find(std::string(prefix) + ":" + foreign.GetLocalName());
    }
    const auto [at, isNew] = known_.try_emplace(object.GetID(), Element::Other);
    if (isNew)
        if (const auto info = ClassOf(object)) at->second = Find(info->elementName());
    return at->second;
}

std::optional<std::string> Attributes::find(std::string_view name) const {
    CTulStringW value;
    if (GetAttributeText(object_, name, value)) return value.utf8();
    if (!ObjectAccess::extras(object_)) return std::nullopt;
    const std::size_t colon = name.find(':');
    return GetForeignAttribute(object_, NamespaceOfPrefix(name.substr(0, colon)), name.substr(colon + 1));
}

unsigned Attributes::number(std::string_view name, unsigned otherwise) const {
    const std::string text = get(name);
    unsigned value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) return std::numeric_limits<unsigned>::max();
    return result.ec == std::errc() ? value : otherwise;
}

} // namespace ODF::reading
