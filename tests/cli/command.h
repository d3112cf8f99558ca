#pragma once

#include "support/packages.h"
#include "support/process.h"
#include "support/workspace.h"

#include <chrono>
#include <string>
#include <vector>

namespace test {

/// How the command ended and what it printed.
struct Result {
    int code = -1; ///< -1 also for an end by a signal
    std::string out;
    std::string err;
};

/// Runs the command.
inline Result RunCommand(const std::vector<std::string>& arguments, const std::string& shellPrefix = {}) {
    const TemporaryFolder folder;
    const std::string out = folder / "out";
    const std::string err = folder / "err";
    std::vector<std::string> command{"sh",
                                     "-c",
                                     shellPrefix +
                                         "out=$1; err=$2; shift 2; exec \"$@\" >\"$out\" 2>\"$err\"",
                                     "sh",
                                     out,
                                     err,
                                     ODFMODEL_COMMAND};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Ending ending = Run(command, std::chrono::seconds(120));
    return {ending.code, ReadFile(out), ReadFile(err)};
}

/// Tests of the command, each in a workspace of its own.
template<typename Base = testing::Test>
class CommandTest : public InWorkspace<Base> {
protected:
    /// Writes a text document; `styles` are its automatic styles.
    std::string writeText(std::string_view body, std::string_view styles = {},
                          std::string_view kind = "text") const {
        const std::string path = this->file("document.odt");
        const std::string tag = "office:" + std::string(kind);
        const std::string type(kTextType);
        WritePackage(path, {{"mimetype", type},
                            {"META-INF/manifest.xml", Manifest({{"/", type}, {"content.xml"}})},
                            {"content.xml", Root("office:document-content",
                                                 "<office:automatic-styles>" + std::string(styles) +
                                                     "</office:automatic-styles><office:body><" + tag + ">" +
                                                     std::string(body) + "</" + tag + "></office:body>")}});
        return path;
    }

    static std::string Root(const std::string& name, const std::string& content) {
        constexpr std::string_view kPrefixes[][2] = {
            {"office", "office:1.0"}, {"text", "text:1.0"},    {"table", "table:1.0"},
            {"style", "style:1.0"},   {"draw", "drawing:1.0"}, {"presentation", "presentation:1.0"}};
        std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><" + name;
        for (const auto& [prefix, uri] : kPrefixes)
            xml += " xmlns:" + std::string(prefix) +
                   "=\"urn:oasis:names:tc:opendocument:xmlns:" + std::string(uri) + "\"";
        return xml + " xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:x=\"urn:foreign\">" + content +
               "</" + name + ">";
    }
};

} // namespace test
