#pragma once

#include "tree.h"

namespace odfpython {

/// Binds `Document`, what `odfmodel.Document` is made from.
void BindDocument(py::module_& module);

} // namespace odfpython
