#pragma once

#include "core/text_maker.h"
#include "serial/xml/attribute_list.h"
#include "serial/xml/name_table.h"
#include "serial/xml/parser_events.h"

#include <vector>

class CSDDefaultHandler;

namespace ODF::xml {

/// Feeds a content handler from the events of a parse.
class HandlerDriver final : public ParserEvents {
public:
    HandlerDriver(CSDDefaultHandler& handler, ParseControl& control, const Limits& limits)
        : handler_(handler), control_(control), limits_(limits) {}

    void startElement(std::string_view name, Attributes attributes) override;
    void endElement(std::string_view name) override;
    void characterData(std::string_view text, bool isWhole) override;
    void comment(std::string_view text) override;
    void processingInstruction(std::string_view target, std::string_view data) override;
    void startCdata() override;
    void endCdata() override;
    void startDoctype(std::string_view name, std::string_view publicId, std::string_view systemId) override;
    void endDoctype() override;
    void skippedEntity(std::string_view name) override;

private:
    void flushText();
    void give(std::string_view text);

    CSDDefaultHandler& handler_;
    ParseControl& control_;
    Limits limits_;
    NameTable names_;
    ReadAttributeList list_;
    std::vector<bool> hasScope_;
    std::string text_;
    TextMaker texts_;
    std::u16string units_;
};

} // namespace ODF::xml
