#include "check/classes.h"

#include <odfmodel/core/value_objects.h>

#include <memory>

namespace command {

Classes::Classes() {
    for (const ODF::ClassInfo& info : ODF::AllClasses())
        infos_.emplace(info.id(), info);
}

const ClassView* Classes::find(unsigned id) {
    if (const auto known = views_.find(id); known != views_.end()) return &known->second;
    const auto info = infos_.find(id);
    if (info == infos_.end()) return nullptr;
    ClassView view{info->second, {}, {}, false, false};
    for (const ODF::AttributeInfo& attribute : view.info.attributes())
        if (attribute.isListed) view.attributes.emplace(attribute.name, attribute);
    for (const ODF::ChildInfo& child : view.info.children())
        if (child.isListed) view.children.emplace(child.name, child.id);
    const std::unique_ptr<CSDObject> object(view.info.create());
    view.isDate = dynamic_cast<const CSDDateTimeValueObject*>(object.get()) != nullptr;
    view.keepsText = view.isDate || dynamic_cast<const CSDStringValueObject*>(object.get()) != nullptr;
    return &views_.emplace(id, std::move(view)).first->second;
}

const ClassView* Classes::child(const ClassView& parent, const std::string& name) {
    const auto at = parent.children.find(name);
    return at == parent.children.end() ? nullptr : find(at->second);
}

const ClassView* Classes::named(const std::string& name) {
    const auto info = ODF::ClassOfElement(name);
    return info ? find(info->id()) : nullptr;
}

} // namespace command
