#include <odfmodel/document/fields.h>

#include "core/codecs.h"
#include "core/object_access.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <array>
#include <unordered_set>

namespace ODF {
namespace {

enum class Role { None, Declares, Sets, Shows, Placeholder };

Role RoleOf(const CSDObject& object) noexcept {
    switch (object.GetID()) {
    case CTextUserFieldDecl::kId:
        return Role::Declares;
    case CTextVariableSet::kId:
    case CTextVariableInput::kId:
        return Role::Sets;
    case CTextVariableGet::kId:
    case CTextUserFieldGet::kId:
    case CTextUserFieldInput::kId:
        return Role::Shows;
    case CTextPlaceholder::kId:
        return Role::Placeholder;
    default:
        return Role::None;
    }
}

std::string NameOf(const CSDObject& field, Role role) {
    if (role == Role::Placeholder) {
        std::string text = Text(field);
        return text.size() > 2 && text.front() == '<' && text.back() == '>' ? text.substr(1, text.size() - 2)
                                                                            : text;
    }
    return AttributeOf(field, "text:name");
}

struct ValueWords {
    std::string_view type;
    std::string_view attribute;
    std::string value;
};

ValueWords WordsOf(const CellValue& value) {
    const auto number = [&] { return std::string(PrintExactly(value.Number()).view()); };
    switch (value.Kind()) {
    case CellKind::Number:
        return {"float", "office:value", number()};
    case CellKind::Percentage:
        return {"percentage", "office:value", number()};
    case CellKind::Currency:
        return {"currency", "office:value", number()};
    case CellKind::Date:
        return {"date", "office:date-value", value.Text()};
    case CellKind::Time:
        return {"time", "office:time-value", value.Text()};
    case CellKind::Bool:
        return {"boolean", "office:boolean-value", value.Bool() ? "true" : "false"};
    case CellKind::Empty:
    case CellKind::Text:
        break;
    }
    return {"string", "office:string-value", value.Text()};
}

void WriteValue(CSDObject& field, const CellValue& value) {
    for (const char* const name : {"text:formula", "office:value", "office:currency", "office:date-value",
                                   "office:time-value", "office:boolean-value", "office:string-value"})
        field.Unset(name);
    const ValueWords words = WordsOf(value);
    SetAttributeText(field, "office:value-type", words.type);
    SetAttributeText(field, words.attribute, words.value);
    if (value.Kind() == CellKind::Currency && !value.Text().empty())
        SetAttributeText(field, "office:currency", value.Text());
}

/// The trees that may have fields; null for those that aren't there.
std::array<CSDObject*, 3> RootsOf(Document& document) {
    return {document.Flat(), document.Content(), document.Styles()};
}

/// Replaces the placeholder where it stands, without moving what follows: there may be very many.
void PutInPlace(CSDObject& placeholder, std::string_view text) {
    CSDObject* const parent = placeholder.Parent();
    std::vector<CSDObject*>* const list = parent ? ObjectAccess::list(*parent) : nullptr;
    const std::size_t place = list ? ObjectAccess::placeOf(*list, placeholder) : 0;
    if (!list || place == list->size()) return;
    std::unique_ptr<CSDObject> span(CTextSpan::Create());
    SetText(*span, text);
    span->SetReNewRootPart(parent->GetRootpart());
    ObjectAccess::setParent(*span, *parent, place);
    (*list)[place] = span.release();
    CSDObject::Delete(&placeholder);
}

} // namespace

FilledFields FillField(CSDObject& root, std::string_view name, const CellValue& value) {
    FilledFields filled;
    if (name.empty() || !value.IsValid()) return filled;
    const std::string shown = value.Kind() == CellKind::Text ? value.Text() : value.Shown();
    std::vector<CSDObject*> placeholders; // the walk can't go on where an object goes
    const auto fill = [&](CSDObject& object) {
        const Role role = RoleOf(object);
        if (role == Role::None || NameOf(object, role) != name) return;
        if (role == Role::Placeholder) return placeholders.push_back(&object);
        if (role == Role::Declares || role == Role::Sets) {
            WriteValue(object, value);
            ++filled.values;
        }
        if (role != Role::Declares) {
            SetText(object, shown);
            ++filled.shown;
        }
    };
    fill(root);
    for (CSDObject& object : root.Descendants())
        fill(object);
    for (CSDObject* const placeholder : placeholders)
        PutInPlace(*placeholder, shown);
    filled.placeholders = placeholders.size();
    return filled;
}

FilledFields FillField(Document& document, std::string_view name, const CellValue& value) {
    FilledFields filled;
    for (CSDObject* const root : RootsOf(document)) {
        if (!root) continue;
        const FilledFields here = FillField(*root, name, value);
        filled.values += here.values;
        filled.shown += here.shown;
        filled.placeholders += here.placeholders;
    }
    return filled;
}

namespace {

struct Names {
    std::vector<std::string> list;
    std::unordered_set<std::string> known;

    void addFrom(const CSDObject& root) {
        for (const CSDObject& object : root.Descendants()) {
            const Role role = RoleOf(object);
            if (role == Role::None) continue;
            std::string name = NameOf(object, role);
            if (!name.empty() && known.insert(name).second) list.push_back(std::move(name));
        }
    }
};

} // namespace

std::vector<std::string> FieldNames(const CSDObject& root) {
    Names names;
    names.addFrom(root);
    return std::move(names.list);
}

std::vector<std::string> FieldNames(Document& document) {
    Names names;
    for (const CSDObject* const root : RootsOf(document))
        if (root) names.addFrom(*root);
    return std::move(names.list);
}

} // namespace ODF
