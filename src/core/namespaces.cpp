#include "core/namespaces.h"

#include <array>

namespace ODF {
namespace {

// Each URI stands once and is wanted in both encodings, which only the preprocessor can join.
#define ODF_URN(name) "urn:oasis:names:tc:opendocument:xmlns:" name
#define ODF_ROW(prefix, uri)                                                                                 \
    NamespaceRow {                                                                                           \
        prefix, uri, u"" uri                                                                                 \
    }

constexpr std::array<NamespaceRow, kNamespaceCount> kNamespaces{{
    ODF_ROW("", ""),
    ODF_ROW("office", ODF_URN("office:1.0")),
    ODF_ROW("meta", ODF_URN("meta:1.0")),
    ODF_ROW("config", ODF_URN("config:1.0")),
    ODF_ROW("text", ODF_URN("text:1.0")),
    ODF_ROW("table", ODF_URN("table:1.0")),
    ODF_ROW("draw", ODF_URN("drawing:1.0")),
    ODF_ROW("presentation", ODF_URN("presentation:1.0")),
    ODF_ROW("dr3d", ODF_URN("dr3d:1.0")),
    ODF_ROW("chart", ODF_URN("chart:1.0")),
    ODF_ROW("form", ODF_URN("form:1.0")),
    ODF_ROW("script", ODF_URN("script:1.0")),
    ODF_ROW("style", ODF_URN("style:1.0")),
    ODF_ROW("number", ODF_URN("datastyle:1.0")),
    ODF_ROW("anim", ODF_URN("animation:1.0")),
    ODF_ROW("fo", ODF_URN("xsl-fo-compatible:1.0")),
    ODF_ROW("svg", ODF_URN("svg-compatible:1.0")),
    ODF_ROW("smil", ODF_URN("smil-compatible:1.0")),
    ODF_ROW("xlink", "http://www.w3.org/1999/xlink"),
    ODF_ROW("math", "http://www.w3.org/1998/Math/MathML"),
    ODF_ROW("xforms", "http://www.w3.org/2002/xforms"),
    ODF_ROW("tableooo", "http://openoffice.org/2009/table"),
    ODF_ROW("dc", "http://purl.org/dc/elements/1.1/"),
    ODF_ROW("officeooo", "http://openoffice.org/2009/office"),
    // Known so that what is passed over is reported under its usual name, and may be written by callers'
    // classes.
    ODF_ROW("db", ODF_URN("database:1.0")),
    ODF_ROW("manifest", ODF_URN("manifest:1.0")),
    ODF_ROW("loext", "urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0"),
    ODF_ROW("calcext", "urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0"),
    ODF_ROW("field", "urn:openoffice:names:experimental:ooo-ms-interop:xmlns:field:1.0"),
    ODF_ROW("formx", "urn:openoffice:names:experimental:ooxml-odf-interop:xmlns:form:1.0"),
    ODF_ROW("drawooo", "http://openoffice.org/2010/draw"),
    ODF_ROW("xhtml", "http://www.w3.org/1999/xhtml"),
    ODF_ROW("xml", "http://www.w3.org/XML/1998/namespace"),
    // No names, but the prefixes of values: formulas, conditions, events, scripting languages.
    ODF_ROW("of", ODF_URN("of:1.2")),
    ODF_ROW("oooc", "http://openoffice.org/2004/calc"),
    ODF_ROW("ooow", "http://openoffice.org/2004/writer"),
    ODF_ROW("ooo", "http://openoffice.org/2004/office"),
    ODF_ROW("dom", "http://www.w3.org/2001/xml-events"),
    ODF_ROW("msoxl", "http://schemas.microsoft.com/office/excel/formula"),
    ODF_ROW("grddl", "http://www.w3.org/2003/g/data-view#"),
}};

#undef ODF_ROW
#undef ODF_URN

template<typename Matches>
constexpr NamespaceIndex Find(Matches matches) noexcept {
    for (std::size_t i = 1; i < kNamespaces.size(); ++i)
        if (matches(kNamespaces[i])) return static_cast<NamespaceIndex>(i);
    return kUnknownNamespace;
}

} // namespace

static_assert(kNamespaces[kMathNamespace].prefix == "math");

const NamespaceRow& Namespace(NamespaceIndex index) noexcept {
    return kNamespaces[index < kNamespaces.size() ? index : 0];
}

NamespaceIndex FindNamespaceByUri(std::string_view uri) noexcept {
    if (uri.empty()) return kNoNamespace;
    return Find([uri](const NamespaceRow& row) { return row.uri == uri; });
}

NamespaceIndex FindNamespaceByUri(std::u16string_view uri) noexcept {
    if (uri.empty()) return kNoNamespace;
    return Find([uri](const NamespaceRow& row) { return row.uri16 == uri; });
}

NamespaceIndex FindNamespaceByPrefix(std::string_view prefix) noexcept {
    if (prefix.empty()) return kNoNamespace;
    return Find([prefix](const NamespaceRow& row) { return row.prefix == prefix; });
}

} // namespace ODF
