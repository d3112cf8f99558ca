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
    std::string_view label;
};

constexpr FieldRow kFields[] = {
    {ODF::CDcTitle::kId, "title"},
    {ODF::CDcSubject::kId, "subject"},
    {ODF::CDcDescription::kId, "description"},
    {ODF::CDcLanguage::kId, "language"},
    {ODF::CMetaInitialCreator::kId, "created by"},
    {ODF::CMetaCreationDate::kId, "created"},
    {ODF::CDcCreator::kId, "changed by"},
    {ODF::CDcDate::kId, "changed"},
    {ODF::CMetaPrintedBy::kId, "printed by"},
    {ODF::CMetaPrintDate::kId, "printed"},
    {ODF::CMetaGenerator::kId, "generator"},
    {ODF::CMetaEditingCycles::kId, "editing cycles"},
    {ODF::CMetaEditingDuration::kId, "editing time"},
};

/// The value of a field; a date as it stands in the file.
std::string ValueOf(const CSDObject& object) {
    if (const auto* const date = dynamic_cast<const CSDDateTimeValueObject*>(&object))
        return date->GetRawText().utf8();
    return ODF::TextOf(object);
}

std::string KeywordsOf(const CSDObject& meta) {
    std::vector<CSDObject*> keywords;
    meta.GetObjectListByID(ODF::CMetaKeyword::kId, keywords);
    std::string list;
    for (const CSDObject* const keyword : keywords)
        list += (list.empty() ? "" : ", ") + ODF::TextOf(*keyword);
    return list;
}

void PrintUserDefined(const CSDObject& meta, AttributeReader& attributes) {
    std::vector<CSDObject*> fields;
    meta.GetObjectListByID(ODF::CMetaUserDefined::kId, fields);
    for (const CSDObject* const field : fields) {
        std::string label = "user-defined";
        std::string type;
        for (const AttributeWords& attribute : attributes.attributesOf(*field)) {
            if (attribute.name == "meta:name") label += " \"" + attribute.value + "\"";
            if (attribute.name == "meta:value-type") type = " (" + attribute.value + ")";
        }
        PrintField(label, ODF::TextOf(*field) + type);
    }
}

void PrintStatistics(const CSDObject& meta, AttributeReader& attributes) {
    const CSDObject* const statistics = meta.GetObjectByID(ODF::CMetaDocumentStatistic::kId);
    if (!statistics) return;
    PrintHeading("statistics");
    for (const AttributeWords& attribute : attributes.attributesOf(*statistics)) {
        constexpr std::string_view kTail = "-count";
        std::string_view name = attribute.name;
        if (const std::size_t colon = name.find(':'); colon != std::string_view::npos)
            name.remove_prefix(colon + 1);
        if (name.ends_with(kTail)) name.remove_suffix(kTail.size());
        PrintField(name, attribute.value);
    }
}

} // namespace

void PrintMetadata(const CSDObject* root) {
    const CSDObject* const meta = root ? root->GetObjectByID(ODF::COfficeMeta::kId) : nullptr;
    if (!meta) return;
    AttributeReader attributes;
    PrintHeading("metadata");
    for (const FieldRow& row : kFields)
        if (const CSDObject* const field = meta->GetObjectByID(row.id))
            PrintField(row.label, ValueOf(*field));
    PrintField("keywords", KeywordsOf(*meta));
    PrintUserDefined(*meta, attributes);
    PrintStatistics(*meta, attributes);
}

} // namespace command
