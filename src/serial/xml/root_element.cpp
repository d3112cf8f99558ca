#include "serial/xml/root_element.h"

#include "serial/xml/expat_parser.h"
#include "serial/xml/name_table.h"

#include <algorithm>

namespace ODF::xml {
namespace {

class FirstElement final : public ParserEvents {
public:
    void setParser(ExpatParser& parser) noexcept { parser_ = &parser; }
    const std::string& name() const noexcept { return name_; }

    void startElement(const char* name, const char** attributes) override {
        NameTable names;
        names.enterScope(attributes);
        name_ = names.element(name).canonical;
        parser_->stop("the root element is known");
    }
    void endElement(const char*) override {}
    void characterData(std::string_view) override {}

private:
    ExpatParser* parser_ = nullptr;
    std::string name_;
};

} // namespace

std::string RootElementOf(std::span<const unsigned char> document, const Limits& limits) {
    FirstElement first;
    ExpatParser parser(first, limits, false);
    first.setParser(parser);
    // It is nearly always in the first few bytes.
    for (std::size_t piece = 4096; !document.empty() && !parser.isStopped(); piece *= 2) {
        const auto next = document.first(std::min(piece, document.size()));
        document = document.subspan(next.size());
        parser.parse(next.data(), next.size(), document.empty());
    }
    return first.name();
}

} // namespace ODF::xml
