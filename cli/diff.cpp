#include "check/finding.h"
#include "commands.h"
#include "console.h"
#include "diff/document_diff.h"
#include "io/input.h"
#include "json.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "password.h"
#include "verb.h"

#include <odfmodel/document/flat.h>

#include <iostream>

namespace command {
namespace {

struct DiffOptions {
    std::string before;
    std::string after;
    std::string part;
    bool isJson = false;
    bool isQuiet = false;
    Passwords passwords;
};

std::string_view KeyOf(Difference::Kind kind) {
    switch (kind) {
    case Difference::Kind::Removed:
        return "removed";
    case Difference::Kind::Added:
        return "added";
    case Difference::Kind::Attribute:
        return "attribute";
    case Difference::Kind::Text:
        break;
    }
    return "text";
}

std::string_view KeyOf(MemberDifference::Kind kind) {
    switch (kind) {
    case MemberDifference::Kind::OnlyBefore:
        return "member-removed";
    case MemberDifference::Kind::OnlyAfter:
        return "member-added";
    case MemberDifference::Kind::Bytes:
        return "bytes";
    case MemberDifference::Kind::Tree:
        break;
    }
    return "tree";
}

void Print(const std::string& member, const Difference& difference) {
    const std::string place = Quoted(member) + ": ";
    const std::string path = Quoted(difference.path);
    switch (difference.kind) {
    case Difference::Kind::Removed:
        std::cout << place << "- " << path << ' ' << Quoted(Example(difference.before)) << '\n';
        break;
    case Difference::Kind::Added:
        std::cout << place << "+ " << path << ' ' << Quoted(Example(difference.after)) << '\n';
        break;
    case Difference::Kind::Attribute:
    case Difference::Kind::Text:
        std::cout << place << "~ " << path << ' ' << Quoted(Change(difference.before, difference.after))
                  << '\n';
        break;
    }
}

void Print(const MemberDifference& found) {
    switch (found.kind) {
    case MemberDifference::Kind::OnlyBefore:
        std::cout << Quoted(found.member) << ": - the member\n";
        break;
    case MemberDifference::Kind::OnlyAfter:
        std::cout << Quoted(found.member) << ": + the member\n";
        break;
    case MemberDifference::Kind::Bytes:
        std::cout << Quoted(found.member) << ": ~ its bytes\n";
        break;
    case MemberDifference::Kind::Tree:
        for (const Difference& difference : found.differences)
            Print(found.member, difference);
        break;
    }
}

nlohmann::json ToJson(const MemberDifference& found) {
    nlohmann::json json{{"member", found.member}, {"kind", KeyOf(found.kind)}};
    for (const Difference& difference : found.differences)
        json["differences"].push_back({{"kind", KeyOf(difference.kind)},
                                       {"path", difference.path},
                                       {"before", difference.before},
                                       {"after", difference.after}});
    return json;
}

/// Makes a package flat, so that it can be compared with one that is.
bool Flatten(ODF::Document& document, const std::string& path) {
    if (document.IsFlat()) return true;
    const ODF::Result made = ODF::ToFlat(document, document);
    if (!made) Complain(path, Reason(made.Code(), made.Notes()));
    return static_cast<bool>(made);
}

ExitCode Run(DiffOptions& options) {
    if (options.before == kStandardStream && options.after == kStandardStream) {
        Complain({}, "the standard input can be one of the files only");
        return ExitCode::Usage;
    }
    options.before = InputPath(options.before);
    options.after = InputPath(options.after);
    if (options.before.empty() || options.after.empty() || !options.passwords.prepare())
        return ExitCode::CannotOpen;
    ODF::Document before;
    ODF::Document after;
    const ExitCode opened = Worst(OpenDocument(before, options.before, options.passwords),
                                  OpenDocument(after, options.after, options.passwords));
    if (!before.IsOpen() || !after.IsOpen()) return opened;
    if (before.IsFlat() != after.IsFlat() &&
        (!Flatten(before, options.before) || !Flatten(after, options.after)))
        return ExitCode::Failure;
    if (!options.part.empty() &&
        (before.IsFlat() || !(before.HasMember(options.part) || after.HasMember(options.part)))) {
        Complain({}, before.IsFlat() ? "--part: documents in one XML file have no members"
                                     : "there is no member " + options.part + " in either document");
        return ExitCode::Failure;
    }
    const auto [found, unread] = CompareDocuments(before, after, options.part);
    if (options.isJson) {
        nlohmann::json members = nlohmann::json::array();
        for (const MemberDifference& member : found)
            members.push_back(ToJson(member));
        PrintJson({{"before", options.before}, {"after", options.after}, {"members", members}}, std::cout);
    } else if (!options.isQuiet) {
        for (const MemberDifference& member : found)
            Print(member);
    }
    for (const UnreadMember& member : unread)
        Complain(member.isOfBefore ? options.before : options.after,
                 member.member + ": " + member.why.Text());
    if (!unread.empty()) return ExitCode::CannotOpen;
    return Worst(opened, found.empty() ? ExitCode::Ok : ExitCode::Lost);
}

} // namespace

void AddDiff(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<DiffOptions>(
        app, exitCode, Run, "diff",
        "Tells what differs between two documents: elements, attributes and text by their path, and\n"
        "members. Exit code 1 when anything does");
    verb.add_option("A", options.before, "Document; - is the standard input")->required()->type_name("");
    verb.add_option("B", options.after, "Document to compare it with")->required()->type_name("");
    verb.add_option("--part", options.part, "Compare this member alone, such as content.xml")
        ->type_name("NAME");
    verb.add_flag("-q,--quiet", options.isQuiet, "Print nothing; the exit code tells");
    verb.add_flag("--json", options.isJson, "Print the differences as one JSON document");
    options.passwords.addOptions(verb);
}

} // namespace command
