#pragma once

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>
#include <vector>

namespace command {

/// A field of the metadata that is to be set, or taken away.
struct MetaChange {
    std::string name;
    std::string value;
    bool isUnset = false;
};

/// What a change is called: the names that can be set, one after the other, for the help.
std::string SettableNames();
/// Whether there is a field of that name which can be set; "user:NAME" is one of the author's own.
bool IsSettable(std::string_view name);
/// Makes the changes; false when the document can't have metadata. An empty part is made for one without.
bool ChangeMetadata(ODF::Document& document, const std::vector<MetaChange>& changes);

} // namespace command
