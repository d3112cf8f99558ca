#include "document/flat/declarations.h"

#include "core/object_access.h"

#include <algorithm>

namespace ODF::flat {

bool AddDeclarations(const CSDObject& from, CSDObject& to) {
    const Extras* const extras = ObjectAccess::extras(from);
    if (!extras || !extras->markup) return true;
    std::vector<NamespaceDeclaration>& present = ObjectAccess::requireExtras(to).requireMarkup().declarations;
    bool isAll = true;
    for (const NamespaceDeclaration& added : extras->markup->declarations) {
        const auto same =
            std::find_if(present.begin(), present.end(), [&](const NamespaceDeclaration& declaration) {
                return declaration.prefix.view() == added.prefix.view();
            });
        if (same == present.end())
            present.push_back(added);
        else if (same->uri.view() != added.uri.view())
            isAll = false;
    }
    return isAll;
}

} // namespace ODF::flat
