#pragma once

class CSDObject;

namespace command {

/// Prints the metadata below a root: titles, people, dates, keywords, the author's own fields and the
/// statistics. Nothing when there is none, or no root.
void PrintMetadata(const CSDObject* root);

} // namespace command
