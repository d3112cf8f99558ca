#pragma once

#include <odfmodel/document/open_document.h>
#include <odfmodel/package/document_type.h>

#include <string>
#include <string_view>

namespace command {

using DocumentType = sd::SDDocType::DocumentType;

/// What a document type is called, such as "text document"; "unknown" for 0.
std::string_view NameOf(DocumentType type);
/// The same for a kind of OpenDocument file; empty for an unknown one.
std::string_view NameOf(ODF::DocumentKind kind);
/// The same for the media type of an OpenDocument file, templates too; empty for any other.
std::string NameOfMediaType(std::string_view mediaType);
bool IsOpenPackaging(DocumentType type);
/// The type of the file by its name, else by its content; 0 when neither tells.
DocumentType DetectType(const std::string& path);

} // namespace command
