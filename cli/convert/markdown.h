#pragma once

#include "convert/markup.h"

namespace command {

/// Converts a document to Markdown, with the tables and footnotes that most programs know. A picture becomes
/// a link to its name in the package.
Markup ToMarkdown(ODF::Document& document);

} // namespace command
