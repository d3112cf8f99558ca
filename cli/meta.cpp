#include "commands.h"
#include "console.h"
#include "edit.h"
#include "info/metadata.h"
#include "info/report.h"
#include "json.h"
#include "meta/changes.h"
#include "package/open_document.h"
#include "verb.h"

#include <odfmodel/elements/office/document.h>

#include <iostream>

namespace command {
namespace {

struct MetaOptions : Edit {
    std::vector<std::string> set;
    std::vector<std::string> unset;
    bool isJson = false;
    std::vector<MetaChange> changes;

    bool readChanges() {
        for (const std::string& argument : set) {
            const std::size_t equals = argument.find('=');
            if (equals == std::string::npos) {
                Complain({}, "--set " + argument + ": there is no = in it");
                return false;
            }
            changes.push_back({argument.substr(0, equals), argument.substr(equals + 1), false});
        }
        for (const std::string& name : unset)
            changes.push_back({name, {}, true});
        for (const MetaChange& change : changes)
            if (!IsSettable(change.name)) {
                Complain({}, "there is no field " + change.name + " to set; there are " + SettableNames());
                return false;
            } else if (!IsWritable(change.name + change.value)) {
                Complain({}, "--set " + change.name + ": there are characters that no document can hold");
                return false;
            }
        return true;
    }
};

nlohmann::json ToJson(const std::string& path, const Metadata& metadata) {
    nlohmann::json json{{"file", path}, {"metadata", nlohmann::json::object()}};
    for (const MetaField& field : metadata.fields)
        json["metadata"][field.name] = field.value;
    if (!metadata.keywords.empty()) json["metadata"]["keywords"] = metadata.keywords;
    json["userDefined"] = nlohmann::json::array();
    for (const UserField& field : metadata.userDefined) {
        nlohmann::json one{{"name", field.name}, {"value", field.value}};
        if (!field.type.empty()) one["type"] = field.type;
        json["userDefined"].push_back(std::move(one));
    }
    json["statistics"] = nlohmann::json::object();
    for (const MetaField& field : metadata.statistics)
        json["statistics"][field.name] = field.value;
    return json;
}

ExitCode Show(MetaOptions& options) {
    nlohmann::json files = nlohmann::json::array();
    const ExitCode code = options.forEach([&](const std::string& path) {
        ODF::Document document;
        const ExitCode opened = OpenDocument(document, path, options.passwords);
        if (!document.IsOpen()) return opened;
        const CSDObject* root = document.Meta();
        if (document.IsFlat()) root = document.Flat();
        const Metadata metadata = ReadMetadata(root);
        if (options.isJson) {
            files.push_back(ToJson(path, metadata));
        } else {
            std::cout << Quoted(path) << '\n';
            PrintMetadata(metadata);
        }
        return opened;
    });
    if (options.isJson) PrintJson({{"files", files}}, std::cout);
    return code;
}

ExitCode Run(MetaOptions& options) {
    if (!options.readChanges()) return ExitCode::Usage;
    if (options.changes.empty() && options.isWriting()) {
        Complain({}, "nothing is to be set; --set NAME=VALUE sets a field");
        return ExitCode::Usage;
    }
    if (options.changes.empty()) return Show(options);
    return options.run([&](ODF::Document& document, const std::string& path) {
        if (ChangeMetadata(document, options.changes)) return Edit::Outcome::Changed;
        Complain(path, "the document can't have metadata");
        return Edit::Outcome::Failed;
    });
}

} // namespace

void AddMeta(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] =
        AddVerb<MetaOptions>(app, exitCode, Run, "meta",
                             "Shows the metadata of documents, or changes it: title, people, keywords and "
                             "user-defined fields");
    options.addOptions(verb);
    verb.add_option("--set", options.set,
                    "Set a field: " + SettableNames() + "; keywords are separated by commas")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    verb.add_option("--unset", options.unset, "Take a field away")
        ->type_name("NAME")
        ->allow_extra_args(false);
    verb.add_flag("--json", options.isJson, kJsonHelp);
}

} // namespace command
