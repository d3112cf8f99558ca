#pragma once

#include "package/paths.h"

namespace SDPackage {

/// The content type of an XML part that a relationship of that type leads to; null-terminated, empty when
/// unknown.
Units ContentTypeOfRelationship(Units relationType) noexcept;
/// The same for a .bin part of a binary workbook.
Units BinaryContentTypeOfRelationship(Units relationType) noexcept;

} // namespace SDPackage
