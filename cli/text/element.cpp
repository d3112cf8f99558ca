#include "text/element.h"

#include <odfmodel/core/reflection.h>

#include <algorithm>
#include <charconv>

namespace command {
namespace {

struct Row {
    std::string_view name;
    Element element;
};

constexpr Row kElements[] = {
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
    {"text:number", Element::Skipped}, // made anew from the list's style
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

Element Find(const std::string& name) {
    const auto* const row = std::find_if(std::begin(kElements), std::end(kElements),
                                         [&](const Row& r) { return r.name == name; });
    if (row != std::end(kElements)) return row->element;
    return name.starts_with("draw:") ? Element::Shape : Element::Other;
}

} // namespace

Element ElementNames::find(const unsigned short* uri, const unsigned short* localName) {
    const Key key{ToView(uri), ToView(localName)};
    if (const auto known = known_.find(key); known != known_.end()) return known->second;
    const std::string_view prefix = ODF::PrefixOfNamespace(ODF::ToUtf8(key.uri));
    const Element element =
        prefix.empty() ? Element::Other : Find(std::string(prefix) + ":" + ODF::ToUtf8(key.local));
    constexpr std::size_t kMaxKnown = 4096; // more names only a hostile file has
    if (known_.size() < kMaxKnown)
        known_.emplace(Key{names_.emplace_back(key.uri), names_.emplace_back(key.local)}, element);
    return element;
}

const AttributeNames::Name& AttributeNames::of(std::string_view name) {
    if (const auto known = known_.find(name); known != known_.end()) return known->second;
    const std::size_t colon = name.find(':');
    Name parts{CTulStringW(ODF::NamespaceOfPrefix(name.substr(0, colon))),
               CTulStringW(name.substr(colon + 1))};
    return known_.emplace(name, std::move(parts)).first->second;
}

std::optional<std::string> Attributes::find(std::string_view name) const {
    const AttributeNames::Name& parts = names_.of(name);
    const unsigned short* const value = list_.GetValue(parts.uri, parts.local);
    return value ? std::optional(ODF::ToUtf8(value)) : std::nullopt;
}

unsigned Attributes::number(std::string_view name, unsigned otherwise) const {
    const std::string text = get(name);
    unsigned value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : otherwise;
}

} // namespace command
