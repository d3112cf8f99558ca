#include <odfmodel/document/styles.h>

#include "document/styles/style_trees.h"

#include "core/object_access.h"

#include <odfmodel/elements/style/containers.h>
#include <odfmodel/elements/style/properties.h>

#include <algorithm>
#include <unordered_set>

namespace ODF {
namespace {

/// The order of property sets in a style, and of what else it has after them.
int RankInStyle(const CSDObject& child) {
    if (ObjectAccess::isMarkup(child)) return -1;
    switch (child.GetID()) {
    case CStyleTextProperties::kId:
        return 3;
    case CStyleParagraphProperties::kId:
        return 2;
    case CStyleGraphicProperties::kId:
        return 1;
    case CStyleMap::kId:
    case CStyleHeaderStyle::kId:
    case CStyleFooterStyle::kId:
        return 4;
    default:
        return 0;
    }
}

/// As the format wants the name of a style that has characters which names of XML don't.
std::string EncodedName(std::string_view name) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string result;
    for (const char c : name) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c & 0x80) != 0;
        const bool isInside = (c >= '0' && c <= '9') || c == '-' || c == '.';
        const auto code = static_cast<unsigned char>(c);
        if (isLetter || (isInside && !result.empty()) || c == '_')
            result.append(1, c);
        else
            result.append(1, '_').append(1, kDigits[code >> 4]).append(1, kDigits[code & 15]).append(1, '_');
    }
    return result;
}

CStyleStyle* AsStyle(CSDObject* object) noexcept {
    return object && object->GetID() == CStyleStyle::kId ? static_cast<CStyleStyle*>(object) : nullptr;
}

} // namespace

CSDObject& detail::AddProperties(CSDObject& style, std::unique_ptr<CSDObject> properties) {
    return InsertByRank(style, std::move(properties), &RankInStyle);
}

CSDObject* detail::PropertiesOf(CSDObject* style, unsigned id) {
    return style ? style->GetObjectByID(id) : nullptr;
}

Styles::Styles(CSDObject* content, CSDObject* styles)
    : trees_(std::make_unique<StyleTrees>(content, styles)) {}
Styles::Styles(Document& document) : trees_(std::make_unique<StyleTrees>(TreesOf(document))) {}
Styles::Styles(CODFDoc& document) : trees_(std::make_unique<StyleTrees>(TreesOf(document))) {}

Styles::Styles(Styles&& other) noexcept = default;
Styles& Styles::operator=(Styles&& other) noexcept = default;
Styles::~Styles() = default;

CStyleStyle* Styles::Find(ST_StyleFamily family, std::string_view name) const {
    return AsStyle(trees_->find(ToNamedKind(family), name));
}

CStyleDefaultStyle* Styles::Default(ST_StyleFamily family) const {
    CSDObject* const list = trees_->list(StyleTrees::Place::Common);
    if (list)
        for (CStyleDefaultStyle& style : list->Children<CStyleDefaultStyle>())
            if (style.GetStyleFamily() == family) return &style;
    return nullptr;
}

CSDObject* Styles::FindObject(unsigned id, std::string_view name) const {
    const ClassDescriptor* const table = FindClass(id);
    const std::optional<NamedKind> kind = table ? KindOfElement(table->elementName) : std::nullopt;
    CSDObject* const found = kind ? trees_->find(*kind, name) : nullptr;
    return found && found->GetID() == id ? found : nullptr;
}

std::vector<CStyleStyle*> Styles::Common(ST_StyleFamily family) const {
    std::vector<CStyleStyle*> result;
    if (CSDObject* const list = trees_->list(StyleTrees::Place::Common))
        for (CStyleStyle& style : list->Children<CStyleStyle>())
            if (style.GetStyleFamily() == family) result.push_back(&style);
    return result;
}

bool Styles::IsAutomatic(const CSDObject& style) noexcept {
    return IsAutomaticStyle(style);
}

CStyleStyle* Styles::StyleOf(const CSDObject& element) const {
    const std::optional<Reference> reference = StyleReference(element);
    if (!reference) return nullptr;
    const StyleTrees::Part part = trees_->partOf(element);
    return AsStyle(trees_->find(reference->kind, NameAt(element, *reference), part));
}

std::vector<CSDObject*> Styles::Chain(const CSDObject& styleOrElement) const {
    std::vector<CSDObject*> chain;
    std::optional<NamedKind> kind = KindOfNamed(styleOrElement);
    CSDObject* at = nullptr;
    if (kind) {
        at =
            const_cast<CSDObject*>(&styleOrElement); // NOLINT: as all that is found, the caller may change it
    } else if (const std::optional<Reference> reference = StyleReference(styleOrElement)) {
        kind = reference->kind;
        at = StyleOf(styleOrElement);
    }
    if (!kind || !IsFamily(*kind)) return chain;
    std::unordered_set<const CSDObject*> seen;
    while (at && seen.insert(at).second) {
        chain.push_back(at);
        CTulStringW parent;
        const CStyleStyle* const style = AsStyle(at);
        at = style && style->GetStyleParentStyleName(parent)
                 ? trees_->find(*kind, parent.utf8(), trees_->partOf(*style))
                 : nullptr;
    }
    if (CStyleDefaultStyle* const last = Default(static_cast<ST_StyleFamily>(*kind))) chain.push_back(last);
    return chain;
}

CStyleStyle* Styles::Make(ST_StyleFamily family, std::string_view name, std::string_view parent) {
    const NamedKind kind = ToNamedKind(family);
    if (CSDObject* const found = trees_->find(kind, name); found && !IsAutomaticStyle(*found))
        return AsStyle(found);
    const std::string encoded = EncodedName(name);
    if (encoded.empty()) return nullptr;
    if (CSDObject* const found = trees_->findIn(StyleTrees::Place::Common, kind, encoded))
        return AsStyle(found);
    std::unique_ptr<CStyleStyle> style = Draft(family);
    style->SetStyleName(encoded);
    if (encoded != name) style->SetStyleDisplayName(name);
    if (!parent.empty()) {
        const CStyleStyle* const above = Find(family, parent);
        style->SetStyleParentStyleName(above ? above->GetStyleName() : CTulStringW(EncodedName(parent)));
    }
    return AsStyle(trees_->add(StyleTrees::Place::Common, std::move(style)));
}

std::unique_ptr<CStyleStyle> Styles::Draft(ST_StyleFamily family, std::string_view parent) {
    std::unique_ptr<CStyleStyle> style(static_cast<CStyleStyle*>(CStyleStyle::Create()));
    style->SetStyleFamily(family);
    if (!parent.empty()) style->SetStyleParentStyleName(EncodedName(parent));
    return style;
}

std::unique_ptr<CStyleStyle> Styles::DraftFor(const CSDObject& element) const {
    const std::optional<Reference> reference = StyleReference(element);
    if (!reference) return nullptr;
    const CStyleStyle* const style = StyleOf(element);
    if (style && IsAutomaticStyle(*style)) return CloneOf(*style);
    std::unique_ptr<CStyleStyle> draft = Draft(static_cast<ST_StyleFamily>(reference->kind));
    if (const std::string name = NameAt(element, *reference); !name.empty())
        draft->SetStyleParentStyleName(name);
    return draft;
}

CStyleStyle* Styles::Automatic(std::unique_ptr<CStyleStyle> draft) {
    return AsStyle(trees_->addAutomatic(StyleTrees::Place::ContentAutomatic, std::move(draft)));
}

bool Styles::Use(CSDObject& element, std::unique_ptr<CStyleStyle> draft) {
    const std::optional<Reference> reference = StyleReference(element);
    if (!draft || !reference || ToNamedKind(draft->GetStyleFamily()) != reference->kind) return false;
    const StyleTrees::Place place = StyleTrees::automaticOf(trees_->partOf(element));
    const CSDObject* const style = trees_->addAutomatic(place, std::move(draft));
    if (!style) return false;
    SetNameAt(element, *reference, NameOfNamed(*style));
    return true;
}

bool Styles::Use(CSDObject& element, const CStyleStyle& style) {
    const std::optional<Reference> reference = StyleReference(element, ToNamedKind(style.GetStyleFamily()));
    if (!reference) return false;
    SetNameAt(element, *reference, NameOfNamed(style));
    return true;
}

CSDObject& Styles::Object(CStyleStyle& style) noexcept {
    return style;
}

} // namespace ODF
