#include "package/xml_text.h"

#include "core/utf.h"

namespace SDPackage {

std::u16string WithoutForbidden(Units text) {
    std::u16string result(text);
    const char16_t* const start = text.data();
    const char16_t* const end = start + text.size();
    for (const char16_t* at = start; at != end;) {
        const char16_t* const before = at;
        const char32_t character = ODF::NextCodePoint(at, end);
        // A lone surrogate has come out as the replacement already.
        if (!ODF::IsXmlCharacter(character) || character == ODF::kReplacement)
            result[static_cast<std::size_t>(before - start)] = u'\xFFFD';
    }
    return result;
}

void AppendEscaped(std::u16string& out, char16_t unit) {
    switch (unit) {
    case u'&':
        out += u"&amp;";
        break;
    case u'<':
        out += u"&lt;";
        break;
    case u'"':
        out += u"&quot;";
        break;
    case u'\t':
        out += u"&#9;";
        break;
    case u'\n':
        out += u"&#10;";
        break;
    case u'\r':
        out += u"&#13;";
        break;
    default:
        out += unit;
    }
}

CTulStringW EscapeAttribute(Units text) {
    std::u16string result;
    result.reserve(text.size());
    for (const char16_t unit : WithoutForbidden(text))
        AppendEscaped(result, unit);
    return CTulStringW(result);
}

} // namespace SDPackage
