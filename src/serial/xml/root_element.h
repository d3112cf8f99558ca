#pragma once

#include <odfmodel/core/limits.h>

#include <span>
#include <string>

namespace ODF::xml {

/// The name of a document's root element with the customary prefix of its namespace, such as
/// "office:document-content"; empty when the document has no root element that can be read.
std::string RootElementOf(std::span<const unsigned char> document, const Limits& limits);

} // namespace ODF::xml
