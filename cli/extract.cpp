#include "commands.h"
#include "console.h"
#include "files.h"
#include "io/output.h"
#include "json.h"
#include "package/open_document.h"
#include "verb.h"

#include <filesystem>
#include <fnmatch.h>
#include <iostream>

namespace command {
namespace {

struct ExtractOptions {
    std::string path;
    std::vector<std::string> members;
    std::string output;
    bool isPictures = false;
    bool isForced = false;
    bool isJson = false;
    Passwords passwords;
};

bool IsPicture(const ODF::Document& document, const std::string& name) {
    return name.starts_with("Pictures/") || name.starts_with("media/") ||
           document.MediaTypeOf(name).starts_with("image/");
}

/// The members that are asked for, in the order of the package; false when one of the names fits none.
bool Choose(const ODF::Document& document, const ExtractOptions& options, std::vector<std::string>& chosen) {
    std::vector<bool> isUsed(options.members.size());
    for (const ODF::FileEntry& entry : document.FileEntries()) {
        const std::string& name = entry.name;
        if (name.ends_with('/')) continue; // a folder
        bool isWanted = options.isPictures && IsPicture(document, name);
        for (std::size_t i = 0; i < options.members.size(); ++i)
            if (options.members[i] == name || fnmatch(options.members[i].c_str(), name.c_str(), 0) == 0)
                isUsed[i] = isWanted = true;
        if (isWanted) chosen.push_back(name);
    }
    bool isWhole = true;
    for (std::size_t i = 0; i < isUsed.size(); ++i)
        if (!isUsed[i]) {
            Complain(options.path, "there is no member " + options.members[i]);
            isWhole = false;
        }
    return isWhole;
}

/// Where a member goes below a folder; empty for a name that would lead out of it.
std::filesystem::path PlaceOf(const std::string& folder, const std::string& member) {
    return IsSafeName(member) ? std::filesystem::path(folder) / member : std::filesystem::path();
}

/// A folder on the way that is a link could lead anywhere.
bool HasLink(const std::string& folder, const std::string& member) {
    std::filesystem::path place(folder);
    std::error_code error;
    for (const std::filesystem::path& step : std::filesystem::path(member)) {
        place /= step;
        if (std::filesystem::is_symlink(place, error)) return true;
    }
    return false;
}

class Extraction {
public:
    Extraction(ODF::Document& document, const ExtractOptions& options)
        : document_(document), options_(options) {}

    ExitCode toFolder(const std::string& member) {
        const std::filesystem::path place = PlaceOf(options_.output, member);
        std::error_code error;
        if (place.empty() || HasLink(options_.output, member)) {
            Complain(options_.path, member + ": this name leads out of the folder; the member is left out");
            return ExitCode::Failure;
        }
        if (!options_.isForced && std::filesystem::exists(place, error)) {
            Complain(place.string(), "is there already; --force replaces it");
            return ExitCode::CannotWrite;
        }
        std::vector<unsigned char> bytes;
        if (const ExitCode code = read(member, bytes); code != ExitCode::Ok) return code;
        std::filesystem::create_directories(place.parent_path(), error);
        const ExitCode code = WriteBytes(AsText(bytes), place.string());
        if (code == ExitCode::Ok) tell(member, place.string(), bytes.size());
        return code;
    }
    ExitCode toOutput(const std::string& member) {
        std::vector<unsigned char> bytes;
        const ExitCode code = read(member, bytes);
        return code == ExitCode::Ok ? WriteBytes(AsText(bytes), kStandardStream) : code;
    }
    void finish() const {
        if (options_.isJson) PrintJson({{"file", options_.path}, {"members", members_}}, std::cout);
    }

private:
    static std::string_view AsText(const std::vector<unsigned char>& bytes) {
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    ExitCode read(const std::string& member, std::vector<unsigned char>& bytes) {
        const ODF::Result read = document_.ReadFileEntry(member, bytes);
        if (!read) Complain(options_.path, member + ": " + read.Text());
        return read ? ExitCode::Ok : ExitCode::CannotOpen;
    }
    void tell(const std::string& member, const std::string& file, std::size_t size) {
        if (options_.isJson)
            members_.push_back({{"member", member}, {"file", file}, {"size", size}});
        else
            std::cout << Quoted(file) << '\n';
    }

    ODF::Document& document_;
    const ExtractOptions& options_;
    nlohmann::json members_ = nlohmann::json::array();
};

ExitCode Run(ExtractOptions& options) {
    if (options.members.empty() && !options.isPictures) {
        Complain({}, "nothing is to be extracted; name members, or --pictures");
        return ExitCode::Usage;
    }
    options.path = InputPath(options.path);
    if (options.path.empty() || !options.passwords.prepare()) return ExitCode::CannotOpen;
    ODF::Document document;
    const ExitCode opened = OpenDocument(document, options.path, options.passwords);
    if (!document.IsOpen()) return opened;
    if (document.IsFlat()) {
        Complain(options.path, "a document in one XML file has no members; convert makes it a package");
        return ExitCode::Failure;
    }
    std::vector<std::string> chosen;
    ExitCode code = Choose(document, options, chosen) ? opened : ExitCode::Failure;
    Extraction extraction(document, options);
    const bool toOutput = options.output.empty() || options.output == kStandardStream;
    if (toOutput && (chosen.size() > 1 || options.isPictures)) {
        Complain({}, "-o names the folder for several members");
        return ExitCode::Usage;
    }
    for (const std::string& member : chosen)
        code = Worst(code, toOutput ? extraction.toOutput(member) : extraction.toFolder(member));
    if (!toOutput) extraction.finish();
    return code;
}

} // namespace

void AddExtract(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<ExtractOptions>(
        app, exitCode, Run, "extract",
        "Takes members out of a package, decrypted: one to the standard output, several into a\n"
        "folder");
    verb.add_option("FILE", options.path, "Document; - is the standard input")->required()->type_name("");
    verb.add_option("MEMBER", options.members, "Members, such as content.xml or \"Pictures/*\"")
        ->type_name("");
    verb.add_flag("--pictures", options.isPictures, "All pictures");
    verb.add_option("-o,--output", options.output, "Folder to write to, made when it isn't there")
        ->type_name("FOLDER");
    verb.add_flag("--force", options.isForced, "Replace files that are there already");
    verb.add_flag("--json", options.isJson, "Print what was written as one JSON document");
    options.passwords.addOptions(verb);
}

} // namespace command
