#include "pages/definitions.h"

#include <algorithm>

namespace command {
namespace {

std::string OnOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

OptionText TextOf(const CLI::Option& option) {
    OptionText text;
    for (const std::string& name : option.get_snames())
        text.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        text.names.push_back("--" + name);
    if (option.get_items_expected_max() > 0 && !text.names.empty()) text.value = option.get_type_name();
    text.about = OnOneLine(option.get_description());
    // A check adds its words to the name of the type: "KIND:{text,spreadsheet}".
    text.value = text.value.substr(0, text.value.find(':'));
    for (const std::string_view name : {"FILE", "OUT", "FOLDER"})
        text.takesFile = text.takesFile || text.value == name;
    return text;
}

} // namespace

std::vector<VerbText> VerbsOf(const CLI::App& app) {
    std::vector<VerbText> verbs;
    for (const CLI::App* const verb : app.get_subcommands({})) {
        if (verb->get_group().empty()) continue;
        VerbText& text = verbs.emplace_back();
        text.name = verb->get_name();
        text.about = OnOneLine(verb->get_description());
        text.usage = "[options]";
        for (const CLI::Option* const option : verb->get_options()) {
            OptionText one = TextOf(*option);
            if (!option->get_positional()) {
                text.options.push_back(std::move(one));
                continue;
            }
            const std::string name = option->get_name(true);
            std::string shown = name;
            if (option->get_items_expected_max() > 1) shown += "...";
            text.usage += option->get_required() ? ' ' + shown : " [" + shown + ']';
            one.names = {name};
            text.arguments.push_back(std::move(one));
        }
    }
    return verbs;
}

} // namespace command
