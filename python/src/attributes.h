#pragma once

#include "text.h"
#include "tree.h"

#include <odfmodel/core/reflection.h>

#include <string>
#include <vector>

namespace odfpython {

/// One attribute of a class with the type that Python has for it.
class AttributeType {
public:
    AttributeType() = default;
    AttributeType(const ODF::AttributeInfo& info, std::vector<std::string> keys)
        : name_(info.name), type_(info.type), keys_(std::move(keys)) {}

    /// The value: a str, int, float, bool or None. Words that are no such value are given as they are.
    py::object get(const CSDObject& object) const;
    /// None takes the attribute away. Throws TypeError and ValueError for what the attribute can't have.
    void set(CSDObject& object, py::handle value) const;
    /// For the documentation of the property.
    std::string describe() const;
    std::string_view name() const noexcept { return name_; }

private:
    std::string_view name_;
    ODF::AttributeType type_ = ODF::AttributeType::Text;
    std::vector<std::string> keys_;
};

/// Tells views of the tree that the attribute has changed; styles are all the same to them.
void Touch(const Element& element, std::string_view attribute);
/// Binds `Attributes`, the mapping of all attributes of an element.
void BindAttributes(py::module_& module);
py::object AttributesOf(const Element& element);

} // namespace odfpython
