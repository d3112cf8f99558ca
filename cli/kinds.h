#pragma once

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>
#include <vector>

namespace command {

/// What the end of a file's name tells.
struct FileKind {
    ODF::DocumentKind kind = ODF::DocumentKind::Unknown;
    bool isFlat = false;
    bool isTemplate = false;
};

/// By the extension, such as ".odt", ".fods" or ".ott".
FileKind KindOfFileName(std::string_view name);
/// By a word, such as "spreadsheet".
ODF::DocumentKind KindOfWord(std::string_view word);
/// The words that `KindOfWord` knows.
std::vector<std::string> KindWords();
/// The extension for a document, without the dot, such as "odt"; empty for a kind that has none of that form.
std::string ExtensionFor(ODF::DocumentKind kind, bool isFlat, bool isTemplate);
/// The extension of a name in small letters, without the dot; empty for none.
std::string ExtensionOf(std::string_view name);

} // namespace command
