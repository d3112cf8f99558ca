#include "commands.h"
#include "console.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "password.h"

#include <odfmodel/core/reflection.h>

#include <CLI/CLI.hpp>

#include <iostream>
#include <limits>

namespace command {
namespace {

struct TreeOptions {
    std::string path;
    std::string part = "content.xml";
    std::size_t depth = std::numeric_limits<std::size_t>::max();
    Passwords passwords;
};

/// Beyond this depth lines aren't indented further, so that the output of a hostile file stays in proportion
/// to it.
constexpr std::size_t kMostIndent = 60;

void PrintObject(const CSDObject& object, std::size_t depth) {
    std::cout << std::string(2 * std::min(depth, kMostIndent), ' ');
    if (depth > kMostIndent) std::cout << '[' << depth << "] ";
    const std::string text = ODF::TextOf(object);
    if (ODF::IsTextRun(object)) {
        std::cout << '"' << Quoted(text) << "\"\n";
        return;
    }
    if (const auto info = ODF::ClassOf(object))
        std::cout << info->className() << ' ' << info->elementName();
    else
        std::cout << "(unknown class)";
    for (const ODF::AttributeText& attribute : ODF::AttributesOf(object))
        std::cout << ' ' << attribute.name << "=\"" << Quoted(attribute.value) << '"';
    if (!text.empty()) std::cout << " \"" << Quoted(text) << '"';
    std::cout << '\n';
}

void PrintTree(const CSDObject& root, std::size_t mostDepth) {
    struct Level {
        const std::vector<CSDObject*>* children;
        std::size_t next;
    };
    std::vector<Level> open;
    const auto enter = [&](const CSDObject& object) {
        PrintObject(object, open.size());
        open.push_back({open.size() < mostDepth ? object.GetObjectList() : nullptr, 0});
    };
    enter(root);
    while (!open.empty() && std::cout) {
        Level& level = open.back();
        if (!level.children || level.next >= level.children->size())
            open.pop_back();
        else if (const CSDObject* const child = (*level.children)[level.next++])
            enter(*child);
    }
}

ExitCode Run(const TreeOptions& options) {
    ODF::CODFDoc document;
    if (!OpenDocument(document, options.path, options.passwords)) return ExitCode::CannotOpen;
    const auto trees = TreesOf(document);
    const auto at = std::find_if(trees.begin(), trees.end(),
                                 [&](const auto& tree) { return tree.first == options.part; });
    if (at == trees.end()) {
        std::string names;
        for (const auto& [name, part] : trees)
            names += (names.empty() ? "" : ", ") + name;
        Complain(options.path, "no tree for the part " + options.part + "; there are " + names);
        return ExitCode::CannotOpen;
    }
    PrintTree(*at->second->GetRootClass(), options.depth);
    ComplainNotes(options.path, document.GetDiagnostics());
    return IsWhole(document.GetDiagnostics()) ? ExitCode::Ok : ExitCode::CannotOpen;
}

} // namespace

void AddTree(CLI::App& app, ExitCode& exitCode) {
    CLI::App* const tree = app.add_subcommand(
        "tree", "Shows the element tree of a part, a line an element: class, element name, attributes, text");
    const auto options = std::make_shared<TreeOptions>();
    tree->add_option("FILE", options->path, "OpenDocument package")->required()->type_name("");
    tree->add_option("--part", options->part, "Part to show, such as styles.xml or \"Object 1/content.xml\"")
        ->capture_default_str()
        ->type_name("NAME");
    tree->add_option("--depth", options->depth, "Levels below the root to show; all without it")
        ->type_name("N");
    options->passwords.addOptions(*tree);
    tree->callback([options, &exitCode] {
        exitCode = options->passwords.prepare() ? Run(*options) : ExitCode::CannotOpen;
    });
}

} // namespace command
