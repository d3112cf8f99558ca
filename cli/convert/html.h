#pragma once

#include "convert/markup.h"

namespace command {

/// Converts a document to one HTML page that contains its pictures. The page has no scripts. Its links are
/// those that `IsHarmlessLink` allows.
Markup ToHtml(ODF::Document& document);

} // namespace command
