#pragma once

#include <odfmodel/document/part.h>
#include <odfmodel/package/document_type.h>

#include <string_view>

namespace ODF {

/// Picks the part class for each file of a package.
class ODFPartFactory {
public:
    explicit ODFPartFactory(sd::SDDocType::DocumentType type) noexcept;

    /// A new part for the file `name` in a folder of the media type `relationType`: one with a tree for the
    /// four main names of an ODF package, else a binary one. Owned by the caller.
    CODFPart* Create(std::u16string_view name, std::u16string_view relationType) const;

private:
    bool isOdf_;
};

/// The media type of an ODF document type; empty for any other type.
std::u16string_view MediaTypeOf(sd::SDDocType::DocumentType type) noexcept;

} // namespace ODF
