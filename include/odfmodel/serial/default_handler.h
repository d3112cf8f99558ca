#pragma once

#include <odfmodel/export.h>

class CSDAttribute;

/// Base class of content handlers, in the manner of SAX2. Every callback does nothing by default; all calls
/// come in document order, inside the parse call that started them, on the caller's thread. Text is UTF-16
/// and valid for the duration of the call; a length counts 16-bit units.
class ODFMODEL_API CSDDefaultHandler {
public:
    CSDDefaultHandler() = default;
    virtual ~CSDDefaultHandler();

    virtual void characters(const unsigned short* chars, unsigned length);
    virtual void endDocument();
    virtual void endElement(const unsigned short* uri, const unsigned short* localName,
                            const unsigned short* qName);
    virtual void ignorableWhitespace(const unsigned short* chars, unsigned length);
    virtual void processingInstruction(const unsigned short* target, const unsigned short* data);
    virtual void resetDocument();
    virtual void startDocument();
    virtual void startElement(const unsigned short* uri, const unsigned short* localName,
                              const unsigned short* qName, CSDAttribute* attributes);
    virtual void startPrefixMapping(const unsigned short* prefix, const unsigned short* uri);
    virtual void endPrefixMapping(const unsigned short* prefix);
    virtual void skippedEntity(const unsigned short* name);
    virtual void resetErrors();
    virtual void resetDocType();
    virtual void comment(const unsigned short* chars, unsigned length);
    virtual void endCDATA();
    virtual void endDTD();
    virtual void endEntity(const unsigned short* name);
    virtual void startCDATA();
    virtual void startDTD(const unsigned short* name, const unsigned short* publicId,
                          const unsigned short* systemId);
    virtual void startEntity(const unsigned short* name);
    virtual void elementDecl(const unsigned short* name, const unsigned short* model);
    virtual void internalEntityDecl(const unsigned short* name, const unsigned short* value);
    virtual void externalEntityDecl(const unsigned short* name, const unsigned short* publicId,
                                    const unsigned short* systemId);

protected:
    CSDDefaultHandler(const CSDDefaultHandler&) = default;
    CSDDefaultHandler& operator=(const CSDDefaultHandler&) = default;
};
