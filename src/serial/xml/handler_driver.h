#pragma once

#include "serial/xml/attribute_list.h"
#include "serial/xml/expat_parser.h"
#include "serial/xml/name_table.h"

#include <vector>

class CSDDefaultHandler;

namespace ODF::xml {

/// Feeds a content handler from the events of a parse.
class HandlerDriver final : public ParserEvents {
public:
    HandlerDriver(CSDDefaultHandler& handler, const Limits& limits) : handler_(handler), limits_(limits) {}

    void setParser(ExpatParser& parser) noexcept { parser_ = &parser; }

    void startElement(const char* name, const char** attributes) override;
    void endElement(const char* name) override;
    void characterData(std::string_view text) override;
    void comment(const char* text) override;
    void processingInstruction(const char* target, const char* data) override;
    void startCdata() override;
    void endCdata() override;
    void startDoctype(const char* name, const char* publicId, const char* systemId) override;
    void endDoctype() override;
    void skippedEntity(const char* name) override;

private:
    void flushText();

    CSDDefaultHandler& handler_;
    Limits limits_;
    ExpatParser* parser_ = nullptr;
    NameTable names_;
    ReadAttributeList list_;
    std::vector<bool> hasScope_;
    std::string text_;
};

} // namespace ODF::xml
