#include <odfmodel/package/content_types.h>

#include "package/index/content_type_tables.h"
#include "package/paths.h"
#include "package/xml_text.h"

#include <odfmodel/serial/sax_reader.h>

namespace SDPackage {

namespace {

/// The extension without its dot.
Units BareExtensionOf(Units partName) {
    const Units extension = ExtensionOf(partName);
    return extension.empty() ? extension : extension.substr(1);
}

const unsigned short* TextOrNull(Units text) {
    return text.empty() ? nullptr : ToUnits(text.data());
}

void WriteEntry(CSDSerializer& serializer, Units element, Units key, Units name, Units contentType) {
    CTulStringW line;
    line.Format(u"<%s %s = \"%s\" %s=\"%s\"/>", element, key, EscapeAttribute(name), u"ContentType",
                EscapeAttribute(contentType));
    serializer.WriteRaw(line.view());
}

} // namespace

IContentTypes::~IContentTypes() = default;

const unsigned short* IContentTypes::FindPartName(const unsigned short* contentType) {
    for (const auto& [name, entry] : overrides_)
        if (EqualIgnoringCase(entry.contentType.view(), ToView(contentType))) return entry.partName;
    return nullptr;
}

const unsigned short* IContentTypes::GetContentType(const unsigned short* partName,
                                                    const unsigned short* relationType) {
    const auto entry = overrides_.find(partName);
    if (entry != overrides_.end()) return entry->second.contentType;
    const Units extension = BareExtensionOf(ToView(partName));
    if (extension.empty()) return nullptr;
    if (relationType && EqualIgnoringCase(extension, u"xml")) {
        const Units type = ContentTypeOfRelationship(ToView(relationType));
        if (!type.empty()) return TextOrNull(type);
    }
    const auto byExtension = defaults_.find(CTulStringW(extension));
    return byExtension == defaults_.end() ? nullptr : byExtension->second.contentType.c_str();
}

int IContentTypes::GetKind(const unsigned short* partName) {
    const auto entry = overrides_.find(partName);
    return entry == overrides_.end() ? 0 : entry->second.kind;
}

void IContentTypes::AddOverride(const unsigned short* partName, const unsigned short* contentType) {
    const bool isBinary = EqualIgnoringCase(ExtensionOf(ToView(partName)), u".bin");
    overrides_.try_emplace(partName, Entry{partName, {}, contentType, isBinary ? 1 : 0});
}

void IContentTypes::AddDefault(const unsigned short* extension, const unsigned short* contentType) {
    defaults_.try_emplace(extension, Entry{{}, extension, contentType, 2});
}

void IContentTypes::Write(CSDSerializer* serializer) {
    if (!serializer) return;
    serializer->WriteRaw(u"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>");
    serializer->WriteRaw(u"<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">");
    for (const auto& [extension, entry] : defaults_)
        WriteEntry(*serializer, u"Default", u"Extension", extension.view(), entry.contentType.view());
    for (const auto& [name, entry] : overrides_)
        WriteEntry(*serializer, u"Override", u"PartName", name.view(), entry.contentType.view());
    serializer->WriteRaw(u"</Types>");
}

void IContentTypes::Clear() {
    overrides_.clear();
    defaults_.clear();
}

int IContentTypes::RemoveOverride(const unsigned short* partName) {
    return overrides_.erase(partName) > 0 ? 1 : 0;
}

const unsigned short* IBinaryContentTypes::GetContentType(const unsigned short* partName,
                                                          const unsigned short* relationType) {
    if (relationType && EqualIgnoringCase(ExtensionOf(ToView(partName)), u".bin"))
        return TextOrNull(BinaryContentTypeOfRelationship(ToView(relationType)));
    return IContentTypes::GetContentType(partName, relationType);
}

int IBinaryContentTypes::GetKind(const unsigned short* partName) {
    if (ToView(partName).find(u".bin") != Units::npos) return 1;
    return IContentTypes::GetKind(partName);
}

} // namespace SDPackage
