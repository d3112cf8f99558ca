#pragma once

#include <odfmodel/document/open_document.h>

#include <string>

namespace command {

/// The text of a document as Markdown with tables and notes, as most programs read it. Pictures are links to
/// the names that they have in the package. `isCut` is true when repeated cells were too many.
std::string ToMarkdown(ODF::Document& document, bool& isCut);

} // namespace command
