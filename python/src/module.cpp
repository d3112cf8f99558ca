#include "attributes.h"
#include "classes.h"
#include "document.h"
#include "element.h"
#include "errors.h"
#include "sheet.h"

PYBIND11_MODULE(_core, module) {
    odfpython::BindClasses(module);
    odfpython::BindAttributes(module);
    odfpython::BindElement(module);
    odfpython::BindErrors(module);
    odfpython::BindSheet(module);
    odfpython::BindFrames(module);
    odfpython::BindDocument(module);
}
