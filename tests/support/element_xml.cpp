#include "support/element_xml.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/format_use.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace test {
namespace {

constexpr std::pair<std::string_view, std::string_view> kNamespaces[] = {
    {"office", "urn:oasis:names:tc:opendocument:xmlns:office:1.0"},
    {"meta", "urn:oasis:names:tc:opendocument:xmlns:meta:1.0"},
    {"config", "urn:oasis:names:tc:opendocument:xmlns:config:1.0"},
    {"text", "urn:oasis:names:tc:opendocument:xmlns:text:1.0"},
    {"table", "urn:oasis:names:tc:opendocument:xmlns:table:1.0"},
    {"draw", "urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"},
    {"presentation", "urn:oasis:names:tc:opendocument:xmlns:presentation:1.0"},
    {"dr3d", "urn:oasis:names:tc:opendocument:xmlns:dr3d:1.0"},
    {"chart", "urn:oasis:names:tc:opendocument:xmlns:chart:1.0"},
    {"form", "urn:oasis:names:tc:opendocument:xmlns:form:1.0"},
    {"script", "urn:oasis:names:tc:opendocument:xmlns:script:1.0"},
    {"style", "urn:oasis:names:tc:opendocument:xmlns:style:1.0"},
    {"number", "urn:oasis:names:tc:opendocument:xmlns:datastyle:1.0"},
    {"anim", "urn:oasis:names:tc:opendocument:xmlns:animation:1.0"},
    {"fo", "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"},
    {"svg", "urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"},
    {"smil", "urn:oasis:names:tc:opendocument:xmlns:smil-compatible:1.0"},
    {"xlink", "http://www.w3.org/1999/xlink"},
    {"math", "http://www.w3.org/1998/Math/MathML"},
    {"xforms", "http://www.w3.org/2002/xforms"},
    {"tableooo", "http://openoffice.org/2009/table"},
    {"dc", "http://purl.org/dc/elements/1.1/"},
    {"officeooo", "http://openoffice.org/2009/office"},
    {"db", "urn:oasis:names:tc:opendocument:xmlns:database:1.0"},
    {"loext", "urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0"},
    {"calcext", "urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0"},
    {"field", "urn:openoffice:names:experimental:ooo-ms-interop:xmlns:field:1.0"},
    {"drawooo", "http://openoffice.org/2010/draw"},
    {"xhtml", "http://www.w3.org/1999/xhtml"},
    {"grddl", "http://www.w3.org/2003/g/data-view#"},
};

std::string Declaration(std::string_view prefix, std::string_view uri) {
    return " xmlns:" + std::string(prefix) + "=\"" + std::string(uri) + "\"";
}

} // namespace

std::string Declared(std::string_view xml) {
    std::string result(xml);
    std::string declarations;
    for (const auto& [prefix, uri] : kNamespaces)
        declarations += Declaration(prefix, uri);
    return result.insert(result.find_first_of(" />", result.find('<') + 1), declarations);
}

std::string Bare(std::string xml) {
    if (xml.starts_with("<?xml")) xml.erase(0, xml.find('\n') + 1);
    for (const auto& [prefix, uri] : kNamespaces)
        for (std::size_t at = 0; (at = xml.find(Declaration(prefix, uri))) != std::string::npos;)
            xml.erase(at, Declaration(prefix, uri).size());
    return xml;
}

std::unique_ptr<CSDObject> Make(std::string_view element) {
    const auto info = ODF::ClassOfElement(element);
    EXPECT_TRUE(info) << "no class for " << element;
    return std::unique_ptr<CSDObject>(info ? info->create() : nullptr);
}

std::unique_ptr<CSDObject> Read(std::string_view xml, ODF::Fidelity fidelity) {
    auto object = Make(xml.substr(1, xml.find_first_of(" />") - 1));
    EXPECT_TRUE(object && ODF::FromXml(Declared(xml), *object, fidelity)) << xml;
    return object;
}

std::string Written(CSDObject& object, ODF::Fidelity fidelity) {
    return Bare(ODF::ToXml(object, {}, fidelity));
}

std::string RoundTrip(std::string_view xml) {
    const auto object = Read(xml);
    return object ? Written(*object) : std::string();
}

std::vector<CSDObject*> ChildrenOf(const CSDObject& object) {
    const std::vector<CSDObject*>* const list = object.GetObjectList();
    return list ? *list : std::vector<CSDObject*>();
}

std::string AttributeOf(const CSDObject& object, std::string_view name) {
    for (const ODF::AttributeText& attribute : ODF::AttributesOf(object))
        if (attribute.name == name) return attribute.value;
    return "(absent)";
}

bool IsListed(const ODF::ClassInfo& info) {
    constexpr unsigned kFirstAdded = 0x80000300;
    return info.id() < kFirstAdded;
}

bool IsListed(const ODF::ClassInfo& info, const ODF::AttributeInfo& attribute, std::string_view value) {
    if (!IsListed(info) || !attribute.isListed) return false;
    if (attribute.type != ODF::AttributeType::Enumeration) return true;
    const std::unique_ptr<CSDObject> object(info.create());
    ODF::SetAttributeText(*object, attribute.name, value);
    const std::vector<ODF::LaterUse> uses = ODF::UsesAfter(ODF::FormatVersion::Base, *object);
    return std::none_of(uses.begin(), uses.end(), [&](const ODF::LaterUse& use) {
        return use.name.ends_with('=' + std::string(value));
    });
}

} // namespace test
