#pragma once

#include <odfmodel/export.h>
#include <odfmodel/package/document_type.h>
#include <odfmodel/package/relationship.h>
#include <odfmodel/package/types.h>
#include <odfmodel/serial/default_handler.h>

#include <vector>

/// Content handlers for the index members of a package. What they can't use they pass over. None owns what it
/// is given.
namespace SDPackage {

class IPackage;

/// Finds the document type in `[Content_Types].xml`: the last known type counts, but a workbook stays.
class ODFMODEL_API CDocTypeHandler : public CSDDefaultHandler {
public:
    CDocTypeHandler() = default;
    /// The same for every document, whatever the package.
    explicit CDocTypeHandler(IPackage* /*package*/) {}

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override;
    /// 0 while nothing was found.
    sd::SDDocType::DocumentType GetDocType() const noexcept { return type_; }

private:
    sd::SDDocType::DocumentType type_ = sd::SDDocType::DocTypeUnknown;
};

/// Reads `[Content_Types].xml` into the registry of a package and into two maps, each of which may be null.
class ODFMODEL_API CContentTypesHandler : public CSDDefaultHandler {
public:
    explicit CContentTypesHandler(IPackage* package, Map* overrides = nullptr, Map* defaults = nullptr)
        : package_(package), overrides_(overrides), defaults_(defaults) {}

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override;
    /// The type of the first override that has a known one; 0 when none has.
    sd::SDDocType::DocumentType GetDocType() const noexcept { return type_; }

private:
    IPackage* package_;
    Map* overrides_;
    Map* defaults_;
    sd::SDDocType::DocumentType type_ = sd::SDDocType::DocTypeUnknown;
};

/// Reads a `.rels` member into relationship objects, in file order.
class ODFMODEL_API CRelationshipHandler : public CSDDefaultHandler {
public:
    CRelationshipHandler() = default;
    explicit CRelationshipHandler(IPackage* /*package*/) {}

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override;
    std::vector<IRelationship>& GetRelationships() noexcept { return relationships_; }

private:
    std::vector<IRelationship> relationships_;
};

/// Reads a `.rels` member into the caller's records, in file order.
class ODFMODEL_API CRelationshipListHandler : public CSDDefaultHandler {
public:
    explicit CRelationshipListHandler(RelationshipVector& out) : out_(&out) {}

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override;

private:
    RelationshipVector* out_;
};

/// Reads `META-INF/manifest.xml` into the parts and folder entries of a package.
class ODFMODEL_API CManifestHandler : public CSDDefaultHandler {
public:
    explicit CManifestHandler(IPackage* package) : package_(package) {}

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override;

private:
    IPackage* package_;
};

} // namespace SDPackage
