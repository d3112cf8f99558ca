#include "serial/xml/root_element.h"

#include "serial/xml/expat_parser.h"
#include "serial/xml/name_table.h"
#include "serial/xml/tokenizer.h"

#include <algorithm>

namespace ODF::xml {
namespace {

class FirstElement final : public ParserEvents {
public:
    explicit FirstElement(ParseControl& control) noexcept : control_(control) {}
    const std::string& name() const noexcept { return name_; }

    void startElement(std::string_view name, Attributes attributes) override {
        NameTable names;
        names.enterScope(attributes);
        name_ = names.element(name).canonical;
        control_.stop("the root element is known");
    }
    void endElement(std::string_view) override {}
    void characterData(std::string_view, bool) override {}

private:
    ParseControl& control_;
    std::string name_;
};

} // namespace

std::string RootElementOf(std::span<const unsigned char> document, const Limits& limits) {
    ParseControl control;
    FirstElement first(control);
    Tokenizer tokenizer(first, control, false);
    const std::string_view text(reinterpret_cast<const char*>(document.data()), document.size());
    if (tokenizer.parse(text, true) != Tokenizer::Outcome::Unsure) return first.name();
    ExpatParser parser(first, control, limits, false);
    // It is nearly always in the first few bytes.
    for (std::size_t piece = 4096; !document.empty() && !control.isStopped(); piece *= 2) {
        const auto next = document.first(std::min(piece, document.size()));
        document = document.subspan(next.size());
        parser.parse(next.data(), next.size(), document.empty());
    }
    return first.name();
}

} // namespace ODF::xml
