#include "document/styles/references.h"

#include "core/object_access.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/style/containers.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace ODF {
namespace {

using enum NamedKind;
constexpr NamedKind kText = ToNamedKind(ST_StyleFamily::Text);
constexpr NamedKind kParagraph = ToNamedKind(ST_StyleFamily::Paragraph);
constexpr NamedKind kSection = ToNamedKind(ST_StyleFamily::Section);
constexpr NamedKind kRuby = ToNamedKind(ST_StyleFamily::Ruby);
constexpr NamedKind kTable = ToNamedKind(ST_StyleFamily::Table);
constexpr NamedKind kColumn = ToNamedKind(ST_StyleFamily::TableColumn);
constexpr NamedKind kRow = ToNamedKind(ST_StyleFamily::TableRow);
constexpr NamedKind kCell = ToNamedKind(ST_StyleFamily::TableCell);
constexpr NamedKind kGraphic = ToNamedKind(ST_StyleFamily::Graphic);
constexpr NamedKind kPresentation = ToNamedKind(ST_StyleFamily::Presentation);
constexpr NamedKind kPage = ToNamedKind(ST_StyleFamily::DrawingPage);
constexpr NamedKind kChart = ToNamedKind(ST_StyleFamily::Chart);

struct ReferenceRow {
    std::string_view attribute;
    std::string_view element; ///< empty for all that no earlier row has
    NamedKind kind;
};

constexpr ReferenceRow kReferences[] = {
    // The style of an element; of those that one element may have, the first is preferred.
    {"text:style-name", "text:p", kParagraph},
    {"text:style-name", "text:h", kParagraph},
    {"text:style-name", "text:list", List},
    {"text:style-name", "text:numbered-paragraph", List},
    {"text:style-name", "text:section", kSection},
    {"text:style-name", "text:index-title", kSection},
    {"text:style-name", "text:table-of-content", kSection},
    {"text:style-name", "text:illustration-index", kSection},
    {"text:style-name", "text:table-index", kSection},
    {"text:style-name", "text:object-index", kSection},
    {"text:style-name", "text:user-index", kSection},
    {"text:style-name", "text:alphabetical-index", kSection},
    {"text:style-name", "text:bibliography", kSection},
    {"text:style-name", "text:ruby", kRuby},
    {"text:style-name", "text:index-source-style", kParagraph},
    {"text:style-name", "text:index-title-template", kParagraph},
    {"text:style-name", "text:table-of-content-entry-template", kParagraph},
    {"text:style-name", "text:illustration-index-entry-template", kParagraph},
    {"text:style-name", "text:table-index-entry-template", kParagraph},
    {"text:style-name", "text:object-index-entry-template", kParagraph},
    {"text:style-name", "text:user-index-entry-template", kParagraph},
    {"text:style-name", "text:alphabetical-index-entry-template", kParagraph},
    {"text:style-name", "text:bibliography-entry-template", kParagraph},
    {"text:style-name", "", kText},
    {"table:style-name", "table:table", kTable},
    {"table:style-name", "table:table-column", kColumn},
    {"table:style-name", "table:table-row", kRow},
    {"table:style-name", "table:table-cell", kCell},
    {"table:style-name", "table:covered-table-cell", kCell},
    {"draw:style-name", "draw:page", kPage},
    {"draw:style-name", "style:master-page", kPage},
    {"draw:style-name", "style:handout-master", kPage},
    {"draw:style-name", "presentation:notes", kPage},
    {"draw:style-name", "", kGraphic},
    {"presentation:style-name", "", kPresentation},
    {"chart:style-name", "", kChart},
    // What else may be named.
    {"table:style-name", "", kCell}, // of a table template
    {"table:default-cell-style-name", "", kCell},
    {"draw:text-style-name", "", kParagraph},
    {"text:cond-style-name", "", kParagraph},
    {"text:paragraph-style-name", "", kParagraph},
    {"form:text-style-name", "", kParagraph},
    {"text:default-style-name", "", kParagraph},
    {"style:register-truth-ref-style-name", "", kParagraph},
    {"text:visited-style-name", "", kText},
    {"text:citation-style-name", "", kText},
    {"text:citation-body-style-name", "", kText},
    {"text:main-entry-style-name", "", kText},
    {"style:leader-text-style", "", kText},
    {"style:style-name", "style:drop-cap", kText},
    {"style:list-style-name", "", List},
    {"style:data-style-name", "", Data},
    {"style:parent-style-name", "", OwnFamily},
    {"style:next-style-name", "style:style", OwnFamily},
    {"style:next-style-name", "style:master-page", MasterPage},
    {"style:apply-style-name", "", OwnFamily},
    {"style:page-layout-name", "", PageLayout},
    {"style:master-page-name", "", MasterPage},
    {"text:master-page-name", "", MasterPage},
    {"draw:master-page-name", "", MasterPage},
    {"style:font-name", "", Font},
    {"style:font-name-asian", "", Font},
    {"style:font-name-complex", "", Font},
    {"draw:fill-gradient-name", "", Gradient},
    {"draw:fill-hatch-name", "", Hatch},
    {"draw:fill-image-name", "", FillImage},
    {"draw:opacity-name", "", Opacity},
    {"draw:marker-start", "", Marker},
    {"draw:marker-end", "", Marker},
    {"draw:stroke-dash", "", StrokeDash},
    {"presentation:presentation-page-layout-name", "", PresentationLayout},
};
constexpr std::size_t kStyleRows = 36; ///< of them, those that name the style of an element
static_assert(kReferences[kStyleRows - 1].kind == kChart);

struct KindRow {
    std::string_view element;
    NamedKind kind;
};
constexpr KindRow kKinds[] = {
    {"text:list-style", List},
    {"number:number-style", Data},
    {"number:currency-style", Data},
    {"number:percentage-style", Data},
    {"number:date-style", Data},
    {"number:time-style", Data},
    {"number:boolean-style", Data},
    {"number:text-style", Data},
    {"style:page-layout", PageLayout},
    {"style:master-page", MasterPage},
    {"style:font-face", Font},
    {"draw:gradient", Gradient},
    {"svg:linearGradient", Gradient},
    {"svg:radialGradient", Gradient},
    {"draw:hatch", Hatch},
    {"draw:fill-image", FillImage},
    {"draw:opacity", Opacity},
    {"draw:marker", Marker},
    {"draw:stroke-dash", StrokeDash},
    {"style:presentation-page-layout", PresentationLayout},
};

const ReferenceRow* FindReference(std::string_view attribute, std::string_view element,
                                  std::size_t count) noexcept {
    const auto end = std::begin(kReferences) + count;
    const auto row = std::find_if(std::begin(kReferences), end, [&](const ReferenceRow& at) {
        return at.attribute == attribute && (at.element.empty() || at.element == element);
    });
    return row == end ? nullptr : row;
}

std::string TextAt(const CSDObject& object, const ClassDescriptor& table, unsigned row) {
    return ObjectAccess::isWritten(object, table, row)
               ? ObjectAccess::attributeText(object, table, row).utf8()
               : std::string();
}

} // namespace

std::optional<NamedKind> KindOfNamed(const CSDObject& object) {
    if (object.GetID() == CStyleStyle::kId)
        return ToNamedKind(static_cast<const CStyleStyle&>(object).GetStyleFamily());
    const ClassDescriptor* const table = ObjectAccess::table(object);
    return table ? KindOfElement(table->elementName) : std::nullopt;
}

std::optional<NamedKind> KindOfElement(std::string_view elementName) noexcept {
    const auto row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [&](const KindRow& at) { return at.element == elementName; });
    return row == std::end(kKinds) ? std::nullopt : std::optional(row->kind);
}

std::string NameOfNamed(const CSDObject& object) {
    const ClassDescriptor* const table = ObjectAccess::table(object);
    if (!table) return {};
    for (const char* const attribute : {"style:name", "draw:name"})
        if (const int row = table->findAttribute(attribute); row >= 0)
            return TextAt(object, *table, static_cast<unsigned>(row));
    return {};
}

std::optional<StyleKey> KeyOf(const CSDObject& object) {
    const std::optional<NamedKind> kind = KindOfNamed(object);
    return kind ? std::optional(StyleKey(*kind, NameOfNamed(object))) : std::nullopt;
}

const std::vector<Reference>& References::of(const ClassDescriptor& table) {
    const auto [at, isNew] = known_.try_emplace(&table);
    if (isNew)
        for (std::uint16_t row = 0; row < table.attributeCount; ++row)
            if (const ReferenceRow* const found = FindReference(table.attributes[row].qualifiedName(),
                                                                table.elementName, std::size(kReferences)))
                at->second.push_back({row, found->kind});
    return at->second;
}

void References::visit(CSDObject& object, std::optional<NamedKind> family, const Visit& visit) {
    const ClassDescriptor* const table = ObjectAccess::table(object);
    if (!table) return;
    for (const Reference& reference : of(*table)) {
        const std::string name = NameAt(object, reference);
        if (name.empty()) continue;
        const NamedKind kind = reference.kind == NamedKind::OwnFamily && family ? *family : reference.kind;
        if (const std::optional<std::string> other = visit(kind, name); other && *other != name)
            SetNameAt(object, reference, *other);
    }
}

void References::visitAll(CSDObject& root, const Visit& visit) {
    ForEachInStyle(root, [&](CSDObject& object, std::optional<NamedKind> family) {
        this->visit(object, family, visit);
    });
}

std::optional<Reference> StyleReference(const CSDObject& element, std::optional<NamedKind> family) {
    const ClassDescriptor* const table = ObjectAccess::table(element);
    if (!table) return std::nullopt;
    std::optional<Reference> first;
    for (std::size_t i = 0; i < kStyleRows; ++i) {
        const ReferenceRow& at = kReferences[i];
        if (!IsFamily(at.kind)) continue;
        const int row = table->findAttribute(at.attribute);
        if (row < 0 || FindReference(at.attribute, table->elementName, kStyleRows) != &at) continue;
        const Reference reference{static_cast<std::uint16_t>(row), at.kind};
        if (family) {
            if (*family == at.kind) return reference;
            continue;
        }
        if (!NameAt(element, reference).empty()) return reference;
        if (!first) first = reference;
    }
    return first;
}

std::string NameAt(const CSDObject& object, const Reference& reference) {
    const ClassDescriptor* const table = ObjectAccess::table(object);
    return table ? TextAt(object, *table, reference.row) : std::string();
}

void SetNameAt(CSDObject& object, const Reference& reference, const std::string& name) {
    if (const ClassDescriptor* const table = ObjectAccess::table(object))
        SetAttributeText(object, table->attributes[reference.row].qualifiedName(), name);
}

} // namespace ODF
