#include <odfmodel/package/handlers.h>

#include "package/document_types.h"
#include "package/open/odf_index.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/package/package.h>

namespace SDPackage {

namespace {

const unsigned short* Value(CSDAttribute* attributes, Units name) {
    return attributes ? attributes->GetValue(ToUnits(name.data())) : nullptr;
}

/// The record of a `Relationship` element; false for any other element.
bool ReadRelationship(const unsigned short* localName, CSDAttribute* attributes, RelationshipRecord& record) {
    if (ToView(localName) != u"Relationship") return false;
    record.id = Value(attributes, u"Id");
    record.type = Value(attributes, u"Type");
    record.writtenTarget = Value(attributes, u"Target");
    record.target = UnescapeTarget(record.writtenTarget);
    record.targetMode =
        ToView(Value(attributes, u"TargetMode")) == u"External" ? TargetModeExternal : TargetModeInternal;
    return true;
}

} // namespace

void CDocTypeHandler::startElement(const unsigned short* /*uri*/, const unsigned short* localName,
                                   const unsigned short* /*qName*/, CSDAttribute* attributes) {
    const Units name = ToView(localName);
    if (name != u"Override" && name != u"Default") return;
    const DocumentType found = TypeOfContent(ToView(Value(attributes, u"ContentType")), false);
    const bool isWorkbook = type_ >= SDDocType::DocTypeWorkbook && type_ <= SDDocType::DocTypeWorkbookBinary;
    if (found != SDDocType::DocTypeUnknown && !isWorkbook) type_ = found;
}

void CContentTypesHandler::startElement(const unsigned short* /*uri*/, const unsigned short* localName,
                                        const unsigned short* /*qName*/, CSDAttribute* attributes) {
    const Units name = ToView(localName);
    if (name != u"Override" && name != u"Default") return;
    const unsigned short* const contentType = Value(attributes, u"ContentType");
    if (name == u"Default") {
        const unsigned short* const extension = Value(attributes, u"Extension");
        if (package_) package_->GetContentTypes()->AddDefault(extension, contentType);
        if (defaults_) defaults_->try_emplace(extension, contentType);
        return;
    }
    const unsigned short* const partName = Value(attributes, u"PartName");
    if (package_) package_->GetContentTypes()->AddOverride(partName, contentType);
    if (overrides_) overrides_->try_emplace(partName, contentType);
    if (type_ == SDDocType::DocTypeUnknown) type_ = TypeOfContent(ToView(contentType), true);
}

void CRelationshipHandler::startElement(const unsigned short* /*uri*/, const unsigned short* localName,
                                        const unsigned short* /*qName*/, CSDAttribute* attributes) {
    RelationshipRecord record;
    if (!ReadRelationship(localName, attributes, record)) return;
    IRelationship& relationship = relationships_.emplace_back();
    relationship.SetId(record.id.c_str());
    relationship.SetType(record.type.c_str());
    relationship.SetTarget(record.target.c_str());
    relationship.SetTargetMode(record.targetMode);
}

void CRelationshipListHandler::startElement(const unsigned short* /*uri*/, const unsigned short* localName,
                                            const unsigned short* /*qName*/, CSDAttribute* attributes) {
    RelationshipRecord record;
    if (ReadRelationship(localName, attributes, record)) out_->push_back(std::move(record));
}

void CManifestHandler::startElement(const unsigned short* uri, const unsigned short* localName,
                                    const unsigned short* /*qName*/, CSDAttribute* attributes) {
    constexpr Units kManifestNamespace = u"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0";
    if (!package_ || !attributes || ToView(localName) != u"file-entry" || ToView(uri) != kManifestNamespace)
        return;
    const CTulStringW mediaType(attributes->GetValue(uri, ToUnits(u"media-type")));
    const CTulStringW fullPath(attributes->GetValue(uri, ToUnits(u"full-path")));
    AddManifestEntry(*package_->state_, mediaType, fullPath);
}

} // namespace SDPackage
