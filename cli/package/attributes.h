#pragma once

#include <odfmodel/core/object.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace command {

struct AttributeWords {
    std::string name;
    std::string value;
};

/// "prefix:name" with the customary prefix of a namespace, "{uri}name" for one that isn't known.
std::string CustomaryName(std::string_view namespaceUri, std::string_view localName);

/// Reads the attributes of objects in the words of their file.
class AttributeReader {
public:
    /// Those that are set: first the listed ones in the order of the class, then foreign ones in that of the
    /// file.
    std::vector<AttributeWords> attributesOf(const CSDObject& object);

private:
    std::map<unsigned, std::vector<std::string_view>> names_; ///< by class id
};

} // namespace command
