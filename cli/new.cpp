#include "commands.h"
#include "console.h"
#include "io/input.h"
#include "io/output.h"
#include "kinds.h"
#include "package/reason.h"
#include "verb.h"

#include <odfmodel/document/flat.h>

#include <filesystem>

namespace command {
namespace {

struct NewOptions {
    std::string target;
    std::string kind;
    bool isFlat = false;
    bool isForced = false;
};

ExitCode Run(NewOptions& options) {
    const FileKind told = KindOfFileName(options.target);
    const ODF::DocumentKind kind = options.kind.empty() ? told.kind : KindOfWord(options.kind);
    if (kind == ODF::DocumentKind::Unknown) {
        Complain(options.target, "its name tells no kind of document; --kind does");
        return ExitCode::Usage;
    }
    const bool isStandard = options.target == kStandardStream;
    std::error_code error;
    if (!isStandard && !options.isForced && std::filesystem::exists(options.target, error)) {
        Complain(options.target, "is there already; --force replaces it");
        return ExitCode::CannotWrite;
    }
    if (isStandard && !CheckStandardOutput()) return ExitCode::Usage;
    ODF::Document document = ODF::Document::New(kind);
    if (!options.isFlat && !told.isFlat) return SaveDocument(document, options.target);
    ODF::Document flat;
    if (const ODF::Result made = ODF::ToFlat(document, flat); !made) {
        Complain(options.target, made.Text());
        return ExitCode::Failure;
    }
    return SaveDocument(flat, options.target);
}

} // namespace

void AddNew(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<NewOptions>(
        app, exitCode, Run, "new",
        "Writes a new document without content, of the kind that its name tells, such as report.odt");
    verb.add_option("OUT", options.target, "File to write; - is the standard output")
        ->required()
        ->type_name("");
    verb.add_option("--kind", options.kind, "Kind of the document, whatever its name")
        ->type_name("KIND")
        ->check(CLI::IsMember(KindWords()));
    verb.add_flag("--flat", options.isFlat, "Write one XML file in place of a package");
    verb.add_flag("--force", options.isForced, "Replace a file that is there already");
}

} // namespace command
