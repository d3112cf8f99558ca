#pragma once

#include <odfmodel/package/document_type.h>

#include "package/paths.h"

namespace SDPackage {

using sd::SDDocType;
using DocumentType = sd::SDDocType::DocumentType;

/// The type that belongs to an extension with its dot, ignoring case; 0 when none. `withAll` adds the kinds
/// that are opened with `Fidelity::Everything` alone.
DocumentType TypeOfExtension(Units extension, bool withAll) noexcept;
/// The content type of the main part of a package of that type, null-terminated; empty when the type has
/// none.
Units MainContentType(DocumentType type) noexcept;
/// The type that a main content type of an Open Packaging package tells, compared exactly; 0 when none. With
/// `withUserForm` the types of the user data form count too.
DocumentType TypeOfContent(Units contentType, bool withUserForm) noexcept;

/// The type that a main content type tells, ignoring case, of all that are known; 0 when none.
DocumentType TypeOfMainContent(Units contentType) noexcept;
/// Whether the content type that told this type may also belong to a part of a package of another type.
bool IsSubordinate(DocumentType type) noexcept;

bool IsOdf(DocumentType type) noexcept;
/// Whether packages of that type are opened and saved with an Open Packaging index.
bool IsOpenPackaging(DocumentType type) noexcept;
bool IsWordFamily(DocumentType type) noexcept;
/// Whether a media type marks a folder entry of the manifest.
bool IsFolderType(Units mediaType) noexcept;

} // namespace SDPackage
