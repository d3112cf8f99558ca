#include "serial/xml/handler_driver.h"

#include <odfmodel/serial/default_handler.h>

CSDDefaultHandler::~CSDDefaultHandler() = default;
void CSDDefaultHandler::characters(const unsigned short*, unsigned) {}
void CSDDefaultHandler::endDocument() {}
void CSDDefaultHandler::endElement(const unsigned short*, const unsigned short*, const unsigned short*) {}
void CSDDefaultHandler::ignorableWhitespace(const unsigned short*, unsigned) {}
void CSDDefaultHandler::processingInstruction(const unsigned short*, const unsigned short*) {}
void CSDDefaultHandler::resetDocument() {}
void CSDDefaultHandler::startDocument() {}
void CSDDefaultHandler::startElement(const unsigned short*, const unsigned short*, const unsigned short*,
                                     CSDAttribute*) {}
void CSDDefaultHandler::startPrefixMapping(const unsigned short*, const unsigned short*) {}
void CSDDefaultHandler::endPrefixMapping(const unsigned short*) {}
void CSDDefaultHandler::skippedEntity(const unsigned short*) {}
void CSDDefaultHandler::resetErrors() {}
void CSDDefaultHandler::resetDocType() {}
void CSDDefaultHandler::comment(const unsigned short*, unsigned) {}
void CSDDefaultHandler::endCDATA() {}
void CSDDefaultHandler::endDTD() {}
void CSDDefaultHandler::endEntity(const unsigned short*) {}
void CSDDefaultHandler::startCDATA() {}
void CSDDefaultHandler::startDTD(const unsigned short*, const unsigned short*, const unsigned short*) {}
void CSDDefaultHandler::startEntity(const unsigned short*) {}
void CSDDefaultHandler::elementDecl(const unsigned short*, const unsigned short*) {}
void CSDDefaultHandler::internalEntityDecl(const unsigned short*, const unsigned short*) {}
void CSDDefaultHandler::externalEntityDecl(const unsigned short*, const unsigned short*,
                                           const unsigned short*) {}

namespace ODF::xml {

void HandlerDriver::startElement(std::string_view name, Attributes attributes) {
    flushText();
    if (hasScope_.size() >= limits_.depth) {
        control_.stop("elements nest too deep", StopKind::Depth);
        return;
    }
    if (const char* const reason = BeyondLimits(attributes, limits_)) {
        control_.stop(reason, StopKind::Size);
        return;
    }
    hasScope_.push_back(names_.enterScope(attributes));
    if (hasScope_.back())
        for (const auto& [prefix, uri] : names_.scopeDeclarations())
            handler_.startPrefixMapping(CTulStringW(prefix), CTulStringW(uri));
    const ResolvedName& element = names_.element(name);
    const CTulStringW& spelled = names_.spelled();
    list_.clear();
    for (const auto& [qname, value] : attributes)
        if (!NameTable::isDeclaration(qname))
            list_.add(qname, names_.attribute(qname, element.nameSpace), value);
    handler_.startElement(element.uri16, element.local16, spelled, &list_);
}

void HandlerDriver::endElement(std::string_view name) {
    flushText();
    const ResolvedName& element = names_.element(name);
    handler_.endElement(element.uri16, element.local16, names_.spelled());
    if (hasScope_.back()) {
        for (const auto& [prefix, uri] : names_.scopeDeclarations())
            handler_.endPrefixMapping(CTulStringW(prefix));
        names_.leaveScope();
    }
    hasScope_.pop_back();
}

void HandlerDriver::characterData(std::string_view text, bool isWhole) {
    if (text_.size() + text.size() > limits_.textBytes) {
        control_.stop("a text is too long", StopKind::Size);
        return;
    }
    if (isWhole)
        give(text);
    else
        text_.append(text);
}

void HandlerDriver::flushText() {
    if (text_.empty()) return;
    give(text_);
    text_.clear();
}

void HandlerDriver::give(std::string_view text) {
    units_ = texts_.decode(text);
    handler_.characters(ToUnits(units_.c_str()), static_cast<unsigned>(units_.size()));
}

void HandlerDriver::comment(std::string_view text) {
    flushText();
    const CTulStringW units(text);
    handler_.comment(units, static_cast<unsigned>(units.GetLength()));
}
void HandlerDriver::processingInstruction(std::string_view target, std::string_view data) {
    flushText();
    handler_.processingInstruction(CTulStringW(target), CTulStringW(data));
}
void HandlerDriver::startCdata() {
    flushText();
    handler_.startCDATA();
}
void HandlerDriver::endCdata() {
    flushText();
    handler_.endCDATA();
}
void HandlerDriver::startDoctype(std::string_view name, std::string_view publicId,
                                 std::string_view systemId) {
    handler_.startDTD(CTulStringW(name), CTulStringW(publicId), CTulStringW(systemId));
}
void HandlerDriver::endDoctype() {
    handler_.endDTD();
}
void HandlerDriver::skippedEntity(std::string_view name) {
    flushText();
    handler_.skippedEntity(CTulStringW(name));
}

} // namespace ODF::xml
