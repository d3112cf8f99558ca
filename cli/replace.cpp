#include "commands.h"
#include "console.h"
#include "edit.h"
#include "json.h"
#include "verb.h"

#include <odfmodel/core/string.h>
#include <odfmodel/document/fields.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <iostream>

namespace command {
namespace {

struct ReplaceOptions : Edit {
    std::string from;
    std::string to;
    bool isField = false;
    bool isJson = false;
};

/// The headers and footers are in the styles; what else has text there are examples of formats.
std::size_t ReplaceIn(ODF::Document& document, const std::string& from, const std::string& to) {
    std::size_t count = 0;
    for (CSDObject* const root :
         std::initializer_list<CSDObject*>{document.Flat(), document.Content(), document.Styles()})
        if (root) count += ODF::ReplaceText(*root, from, to);
    return count;
}

std::size_t FillIn(ODF::Document& document, const std::string& name, const std::string& value) {
    const ODF::FilledFields filled = ODF::FillField(document, name, value);
    return filled.values + filled.shown + filled.placeholders;
}

ExitCode Run(ReplaceOptions& options) {
    if (options.from.empty()) {
        Complain({}, "an empty text is found nowhere");
        return ExitCode::Usage;
    }
    if (!IsWritable(options.to)) {
        Complain({}, "TO has characters that no document can hold");
        return ExitCode::Usage;
    }
    nlohmann::json files = nlohmann::json::array();
    const ExitCode code = options.run([&](ODF::Document& document, const std::string& path) {
        const std::size_t count = options.isField ? FillIn(document, options.from, options.to)
                                                  : ReplaceIn(document, options.from, options.to);
        if (options.isJson)
            files.push_back({{"file", path}, {"replaced", count}});
        else
            options.facts() << Quoted(path) << ": " << count << " replaced\n";
        return count > 0 ? Edit::Outcome::Changed : Edit::Outcome::Unchanged;
    });
    if (options.isJson) PrintJson({{"files", files}}, options.facts());
    return code;
}

} // namespace

void AddReplace(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<ReplaceOptions>(
        app, exitCode, Run, "replace",
        "Replaces a text in paragraphs and headings, headers and footers included. A match may go\n"
        "across changes of formatting, and gets the formatting of its first character");
    verb.add_option("FROM", options.from, "Text to look for, in the case that it has")
        ->required()
        ->type_name("");
    verb.add_option("TO", options.to, "Text to put in its place; may be empty")->required()->type_name("");
    options.addOptions(verb);
    verb.add_flag("--field", options.isField,
                  "FROM is the name of a user field, variable or placeholder, which gets the value TO");
    verb.add_flag("--json", options.isJson, kJsonHelp);
}

} // namespace command
