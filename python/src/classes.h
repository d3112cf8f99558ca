#pragma once

#include "tree.h"

#include <odfmodel/core/reflection.h>

#include <string>

namespace odfpython {

/// The base of all classes of elements.
PyTypeObject* ElementType() noexcept;
/// The class for an object; imports the module that has it.
PyTypeObject* TypeOf(const CSDObject& object);
/// What an element is called: "text:p", or "{uri}name" for one that no class has.
std::string TagOf(const CSDObject& object);
/// A new element of that tag.
std::unique_ptr<CSDObject> MakeElement(const std::string& tag);
/// The name and namespace of "{uri}name"; false for any other name.
bool SplitForeign(std::string_view name, std::string_view& uri, std::string_view& local);
/// Makes the base class, before all else, and the functions that make the other classes.
void BindClasses(py::module_& module);

} // namespace odfpython
