#pragma once

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>

namespace ODF {

/// What a media type tells; `Unknown` for one that is none of OpenDocument.
struct KindOfDocument {
    DocumentKind kind = DocumentKind::Unknown;
    bool isTemplate = false;
};
KindOfDocument ToKind(std::string_view mediaType) noexcept;
/// The media type of a document that is no template; empty for `Unknown`.
std::string_view MediaTypeFor(DocumentKind kind) noexcept;
/// The kind of a document by the element in its body, such as "office:text".
DocumentKind KindOfBody(std::string_view elementName) noexcept;

} // namespace ODF
