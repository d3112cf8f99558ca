#pragma once

#include <string>
#include <vector>

class CSDObject;

namespace command {

struct MetaField {
    std::string name;  ///< for machines, such as "initial-creator"
    std::string label; ///< for people, such as "created by"
    std::string value; ///< a date as it is in the file
};
/// A field of the author's own.
struct UserField {
    std::string name;
    std::string type; ///< such as "boolean"; empty for a text
    std::string value;
};
/// The metadata of a document.
struct Metadata {
    bool isThere = false;
    std::vector<MetaField> fields;
    std::vector<std::string> keywords;
    std::vector<UserField> userDefined;
    std::vector<MetaField> statistics;
};

/// The metadata below a root, which may be null.
Metadata ReadMetadata(const CSDObject* root);
/// Prints titles, people, dates, keywords, the author's own fields and the statistics; nothing when there are
/// none.
void PrintMetadata(const Metadata& metadata);

} // namespace command
