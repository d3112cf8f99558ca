#include "support/schema.h"

#include <libxml/parser.h>
#include <libxml/relaxng.h>

#include <filesystem>
#include <memory>

namespace test {

namespace {

const std::filesystem::path kSchemas = ODFMODEL_SCHEMAS;

} // namespace

bool HasSchemas() {
    return std::filesystem::exists(kSchemas / "odf1.2.rng");
}

struct Schema::Rules {
    std::unique_ptr<xmlRelaxNG, decltype(&xmlRelaxNGFree)> parsed{nullptr, xmlRelaxNGFree};
};

Schema::Schema(const std::string& name) : rules_(std::make_unique<Rules>()) {
    const std::unique_ptr<xmlRelaxNGParserCtxt, decltype(&xmlRelaxNGFreeParserCtxt)> parser(
        xmlRelaxNGNewParserCtxt((kSchemas / name).c_str()), xmlRelaxNGFreeParserCtxt);
    rules_->parsed.reset(xmlRelaxNGParse(parser.get()));
}

Schema::~Schema() = default;

std::string Schema::fault(std::string_view xml) const {
    if (!rules_->parsed) return "the schema can't be read";
    std::string fault;
    const auto report = [](void* out, auto* error) {
        auto& text = *static_cast<std::string*>(out);
        if (text.empty() && error->message)
            text = "line " + std::to_string(error->line) + ": " + error->message;
    };
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    if (!document) return "not well-formed";
    const std::unique_ptr<xmlRelaxNGValidCtxt, decltype(&xmlRelaxNGFreeValidCtxt)> validator(
        xmlRelaxNGNewValidCtxt(rules_->parsed.get()), xmlRelaxNGFreeValidCtxt);
    xmlRelaxNGSetValidStructuredErrors(validator.get(), report, &fault);
    if (xmlRelaxNGValidateDoc(validator.get(), document.get()) == 0) return {};
    return fault.empty() ? "not valid" : fault;
}

} // namespace test
