#include "commands.h"
#include "console.h"
#include "edit.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "verb.h"

#include <iostream>

namespace command {
namespace {

struct InsertOptions : Edit {
    std::vector<std::string> members;
    std::vector<std::string> pictures;
    std::vector<std::string> removed;
    std::string mediaType;
};

/// Reads a file that is to come into a document; false, with a complaint, when that can't be done.
bool ReadInput(const std::string& path, MemberBytes& bytes) {
    bytes = ReadWholeFile(path);
    if (!bytes.isWhole) Complain(path, OpenReason(path, ODF::Status::NotReadable, {}));
    return bytes.isWhole;
}

bool AddMember(ODF::Document& document, const std::string& path, const std::string& argument,
               const std::string& mediaType) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    if (!IsSafeName(name) || Quoted(name) != name) {
        Complain(path, name + ": no member may have this name");
        return false;
    }
    MemberBytes bytes;
    if (!ReadInput(argument.substr(equals + 1), bytes)) return false;
    const ODF::Result added = document.WriteMember(name, bytes.bytes, mediaType);
    if (!added) Complain(path, added.Text());
    return static_cast<bool>(added);
}

bool AddPicture(ODF::Document& document, const std::string& path, const std::string& picture,
                std::ostream& facts) {
    ODF::Result added;
    const std::string name = document.AddPictureFile(picture, &added);
    if (name.empty()) {
        Complain(picture, added ? "this can't be the name of a picture" : added.Text());
        return false;
    }
    facts << Quoted(path) << ": " << Quoted(name) << '\n';
    return true;
}

Edit::Outcome Insert(ODF::Document& document, const std::string& path, const InsertOptions& options) {
    if (document.IsFlat()) {
        Complain(path, "a document in one XML file has no members; convert makes it a package");
        return Edit::Outcome::Failed;
    }
    for (const std::string& name : options.removed)
        if (!document.RemoveMember(name)) {
            Complain(path, "there is no member " + name);
            return Edit::Outcome::Failed;
        }
    for (const std::string& member : options.members)
        if (!AddMember(document, path, member, options.mediaType)) return Edit::Outcome::Failed;
    for (const std::string& picture : options.pictures)
        if (!AddPicture(document, path, picture, options.facts())) return Edit::Outcome::Failed;
    return Edit::Outcome::Changed;
}

ExitCode Run(InsertOptions& options) {
    for (const std::string& member : options.members)
        if (const std::size_t equals = member.find('='); equals == 0 || equals == std::string::npos) {
            Complain({}, "--member " + member + ": it must be the name of the member, = and a file");
            return ExitCode::Usage;
        }
    if (options.members.empty() && options.pictures.empty() && options.removed.empty()) {
        Complain({}, "nothing is to be inserted; --member NAME=FILE or --picture FILE does that");
        return ExitCode::Usage;
    }
    return options.run(
        [&](ODF::Document& document, const std::string& path) { return Insert(document, path, options); });
}

} // namespace

void AddInsert(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<InsertOptions>(
        app, exitCode, Run, "insert",
        "Puts members into packages or takes them out, such as another picture for a logo");
    options.addOptions(verb);
    verb.add_option("--member", options.members,
                    "Add the bytes of a file as a member, or replace one, such as Pictures/logo.png=new.png")
        ->type_name("NAME=FILE")
        ->allow_extra_args(false);
    verb.add_option("--media-type", options.mediaType,
                    "Media type of these members; without it that of their kind")
        ->type_name("TYPE");
    verb.add_option("--picture", options.pictures,
                    "Add a picture under a free name, which is printed. It shows once an image refers to it")
        ->type_name("FILE")
        ->allow_extra_args(false);
    verb.add_option("--remove", options.removed, "Remove a member")
        ->type_name("NAME")
        ->allow_extra_args(false);
}

} // namespace command
