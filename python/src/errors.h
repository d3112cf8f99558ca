#pragma once

#include "tree.h"

namespace odfpython {

/// Throws the Python exception for a failure; `source` is what it is about, such as a path.
void Require(const ODF::Result& result, py::handle source = {});
/// The notes as Python has them.
py::list NotesOf(const ODF::Result& result);
void BindErrors(py::module_& module);

} // namespace odfpython
