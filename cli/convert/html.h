#pragma once

#include <odfmodel/document/open_document.h>

#include <string>

namespace command {

/// The text of a document as one HTML page, with its pictures in it. It has no scripts, and links only to the
/// web, by mail and within itself. `isCut` is true when repeated cells were too many.
std::string ToHtml(ODF::Document& document, bool& isCut);

} // namespace command
