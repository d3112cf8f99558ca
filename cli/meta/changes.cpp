#include "meta/changes.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/office/document.h>
#include <odfmodel/elements/office/meta.h>

#include <algorithm>

namespace command {
namespace {

constexpr std::string_view kUser = "user:";
constexpr std::string_view kKeywords = "keywords";

struct Row {
    std::string_view name;
    std::string_view element;
};

constexpr Row kRows[] = {
    {"title", "dc:title"},           {"subject", "dc:subject"},
    {"language", "dc:language"},     {"description", "dc:description"},
    {"creator", "dc:creator"},       {"initial-creator", "meta:initial-creator"},
    {kKeywords, "meta:keyword"},     {"printed-by", "meta:printed-by"},
    {"generator", "meta:generator"},
};

const Row* Find(std::string_view name) {
    const auto* const row =
        std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& r) { return r.name == name; });
    return row == std::end(kRows) ? nullptr : row;
}

CSDObject* MakeMeta(ODF::Document& document) {
    CSDObject* root = document.IsFlat() ? static_cast<CSDObject*>(document.Flat()) : document.Meta();
    if (!root) {
        constexpr std::string_view kEmpty =
            "<office:document-meta xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
            "office:version=\"1.2\"/>";
        const std::span bytes(reinterpret_cast<const unsigned char*>(kEmpty.data()), kEmpty.size());
        if (!document.WriteMember("meta.xml", bytes)) return nullptr;
        root = document.Root("meta.xml");
    }
    if (!root) return nullptr;
    if (CSDObject* const meta = root->GetObjectByID(ODF::COfficeMeta::kId)) return meta;
    std::unique_ptr<CSDObject> made(ODF::COfficeMeta::Create());
    CSDObject* const meta = made.get();
    // In a flat document it is before all else.
    const auto children = root->Children();
    if (children.begin() != children.end())
        root->Insert(std::move(made), *children.begin());
    else
        root->Append(std::move(made));
    return meta;
}

std::string NameOf(const CSDObject& field) {
    return ODF::AttributeOf(field, "meta:name");
}

/// The fields that a change is about.
std::vector<CSDObject*> Fields(CSDObject& meta, std::string_view element, std::string_view userName) {
    std::vector<CSDObject*> fields;
    for (CSDObject& child : meta.Children()) {
        const auto info = ODF::ClassOf(child);
        if (info && info->elementName() == element && (userName.empty() || NameOf(child) == userName))
            fields.push_back(&child);
    }
    return fields;
}

CSDObject& Add(CSDObject& meta, std::string_view element) {
    std::unique_ptr<CSDObject> field(ODF::ClassOfElement(element)->create());
    CSDObject& added = *field;
    meta.Append(std::move(field));
    return added;
}

void SetKeywords(CSDObject& meta, std::string_view list) {
    while (!list.empty()) {
        std::string_view keyword = list.substr(0, list.find(','));
        list.remove_prefix(std::min(keyword.size() + 1, list.size()));
        keyword.remove_prefix(std::min(keyword.find_first_not_of(' '), keyword.size()));
        keyword = keyword.substr(0, keyword.find_last_not_of(' ') + 1);
        if (!keyword.empty()) ODF::SetText(Add(meta, "meta:keyword"), keyword);
    }
}

void Apply(CSDObject& meta, const MetaChange& change) {
    const bool isUser = change.name.starts_with(kUser);
    const std::string userName = isUser ? change.name.substr(kUser.size()) : std::string();
    const std::string_view element = isUser ? "meta:user-defined" : Find(change.name)->element;
    const std::vector<CSDObject*> old = Fields(meta, element, userName);
    const bool isList = change.name == kKeywords;
    const std::size_t kept = change.isUnset || isList ? 0 : 1;
    for (std::size_t i = kept; i < old.size(); ++i)
        meta.Remove(*old[i]);
    if (change.isUnset) return;
    if (isList) return SetKeywords(meta, change.value);
    CSDObject& field = old.empty() ? Add(meta, element) : *old.front();
    if (isUser) {
        ODF::SetAttributeText(field, "meta:name", userName);
        field.Unset("meta:value-type"); // a text is what it is now
    }
    ODF::SetText(field, change.value);
}

} // namespace

std::string SettableNames() {
    std::string names;
    for (const Row& row : kRows)
        names.append(names.empty() ? "" : ", ").append(row.name);
    return names + ", user:NAME";
}

bool IsSettable(std::string_view name) {
    return Find(name) || (name.starts_with(kUser) && name.size() > kUser.size());
}

bool ChangeMetadata(ODF::Document& document, const std::vector<MetaChange>& changes) {
    CSDObject* const meta = MakeMeta(document);
    if (!meta) return false;
    for (const MetaChange& change : changes)
        Apply(*meta, change);
    return true;
}

} // namespace command
