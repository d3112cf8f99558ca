#include "info/metadata.h"

#include "info/report.h"
#include "package/attributes.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/office/document.h>
#include <odfmodel/elements/office/meta.h>

#include <string>

namespace command {
namespace {

struct FieldRow {
    unsigned id;
    std::string_view name;
    std::string_view label;
};

constexpr FieldRow kFields[] = {
    {ODF::CDcTitle::kId, "title", "title"},
    {ODF::CDcSubject::kId, "subject", "subject"},
    {ODF::CDcDescription::kId, "description", "description"},
    {ODF::CDcLanguage::kId, "language", "language"},
    {ODF::CMetaInitialCreator::kId, "initial-creator", "created by"},
    {ODF::CMetaCreationDate::kId, "creation-date", "created"},
    {ODF::CDcCreator::kId, "creator", "changed by"},
    {ODF::CDcDate::kId, "date", "changed"},
    {ODF::CMetaPrintedBy::kId, "printed-by", "printed by"},
    {ODF::CMetaPrintDate::kId, "print-date", "printed"},
    {ODF::CMetaGenerator::kId, "generator", "generator"},
    {ODF::CMetaEditingCycles::kId, "editing-cycles", "editing cycles"},
    {ODF::CMetaEditingDuration::kId, "editing-duration", "editing time"},
};

/// The value of a field; a date as it is in the file.
std::string ValueOf(const CSDObject& object) {
    if (const auto* const date = dynamic_cast<const CSDDateTimeValueObject*>(&object))
        return date->GetRawText().utf8();
    return ODF::TextOf(object);
}

std::vector<UserField> UserFieldsOf(const CSDObject& meta, AttributeReader& attributes) {
    std::vector<CSDObject*> objects;
    meta.GetObjectListByID(ODF::CMetaUserDefined::kId, objects);
    std::vector<UserField> fields;
    for (const CSDObject* const object : objects) {
        UserField& field = fields.emplace_back();
        field.value = ODF::TextOf(*object);
        for (AttributeWords& attribute : attributes.attributesOf(*object)) {
            if (attribute.name == "meta:name")
                field.name = std::move(attribute.value);
            else if (attribute.name == "meta:value-type")
                field.type = std::move(attribute.value);
        }
    }
    return fields;
}

std::vector<MetaField> StatisticsOf(const CSDObject& meta, AttributeReader& attributes) {
    std::vector<MetaField> fields;
    const CSDObject* const statistics = meta.GetObjectByID(ODF::CMetaDocumentStatistic::kId);
    if (!statistics) return fields;
    for (const AttributeWords& attribute : attributes.attributesOf(*statistics)) {
        constexpr std::string_view kTail = "-count";
        std::string_view name = attribute.name;
        if (const std::size_t colon = name.find(':'); colon != std::string_view::npos)
            name.remove_prefix(colon + 1);
        if (name.ends_with(kTail)) name.remove_suffix(kTail.size());
        fields.push_back({std::string(name), std::string(name), attribute.value});
    }
    return fields;
}

} // namespace

Metadata ReadMetadata(const CSDObject* root) {
    Metadata metadata;
    const CSDObject* const meta = root ? root->GetObjectByID(ODF::COfficeMeta::kId) : nullptr;
    if (!meta) return metadata;
    metadata.isThere = true;
    AttributeReader attributes;
    for (const FieldRow& row : kFields)
        if (const CSDObject* const field = meta->GetObjectByID(row.id))
            metadata.fields.push_back({std::string(row.name), std::string(row.label), ValueOf(*field)});
    std::vector<CSDObject*> keywords;
    meta->GetObjectListByID(ODF::CMetaKeyword::kId, keywords);
    for (const CSDObject* const keyword : keywords)
        metadata.keywords.push_back(ODF::TextOf(*keyword));
    metadata.userDefined = UserFieldsOf(*meta, attributes);
    metadata.statistics = StatisticsOf(*meta, attributes);
    return metadata;
}

void PrintMetadata(const Metadata& metadata) {
    if (!metadata.isThere) return;
    PrintHeading("metadata");
    for (const MetaField& field : metadata.fields)
        PrintField(field.label, field.value);
    std::string keywords;
    for (const std::string& keyword : metadata.keywords)
        keywords += (keywords.empty() ? "" : ", ") + keyword;
    PrintField("keywords", keywords);
    for (const UserField& field : metadata.userDefined)
        PrintField("user-defined" + (field.name.empty() ? "" : " \"" + field.name + "\""),
                   field.value + (field.type.empty() ? "" : " (" + field.type + ")"));
    if (!metadata.statistics.empty()) PrintHeading("statistics");
    for (const MetaField& field : metadata.statistics)
        PrintField(field.label, field.value);
}

} // namespace command
