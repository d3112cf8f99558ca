#include "package/attributes.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>

namespace command {

std::string CustomaryName(std::string_view namespaceUri, std::string_view localName) {
    if (namespaceUri.empty()) return std::string(localName);
    const std::string_view prefix = ODF::PrefixOfNamespace(namespaceUri);
    std::string name;
    if (prefix.empty())
        name.append("{").append(namespaceUri).append("}");
    else
        name.append(prefix).append(":");
    return name.append(localName);
}

std::vector<AttributeWords> AttributeReader::attributesOf(const CSDObject& object) {
    std::vector<AttributeWords> set;
    if (const auto info = ODF::ClassOf(object)) {
        const auto [names, isNew] = names_.try_emplace(info->id());
        if (isNew)
            for (const ODF::AttributeInfo& attribute : info->attributes())
                names->second.push_back(attribute.name);
        CTulStringW value;
        for (const std::string_view name : names->second)
            if (ODF::GetAttributeText(object, name, value)) set.push_back({std::string(name), value.utf8()});
    }
    for (ODF::ForeignAttribute& attribute : ODF::ForeignAttributesOf(object))
        set.push_back(
            {CustomaryName(attribute.namespaceUri, attribute.localName), std::move(attribute.value)});
    return set;
}

} // namespace command
