#include "check/package_check.h"

#include "check/compare_packages.h"
#include "check/scratch_folder.h"
#include "package/kind.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "package/repack.h"
#include "password.h"

#include <odfmodel/core/reflection.h>

#include <filesystem>

namespace command {
namespace {

CheckResult& Fail(CheckResult& result, ExitCode code, const ODF::Diagnostics& diagnostics) {
    result.code = code;
    result.error = Reason(diagnostics);
    return result;
}

void TakeNotes(CheckResult& result, const ODF::Diagnostics& diagnostics) {
    for (const ODF::Note& note : diagnostics.notes())
        if (note.severity != ODF::Severity::Information) result.notes.push_back(NoteText(note));
}

TreeRoots RootsOf(const ODF::CDocument& document) {
    TreeRoots roots;
    for (const auto& [name, part] : TreesOf(document))
        roots.emplace(name, part->GetRootClass()->GetID());
    return roots;
}

/// Compares the file with what was saved of it.
void Compare(CheckResult& result, const std::string& saved, const std::string* password,
             const TreeRoots& roots, bool isOdf) {
    Archive before;
    Archive after;
    const ODF::Status opened = isOdf ? before.open(result.path, password) : before.openRaw(result.path);
    if (opened != ODF::Status::Ok) {
        Fail(result, ExitCode::CannotOpen, before.diagnostics());
        return;
    }
    if (after.openRaw(saved) != ODF::Status::Ok) {
        Fail(result, ExitCode::CannotWrite, after.diagnostics());
        return;
    }
    ComparePackages(before, after, roots, isOdf, result.members);
    for (const auto& [name, findings] : result.members)
        if (findings.hasLoss()) result.code = ExitCode::Lost;
}

} // namespace

CheckResult CheckPackage(const std::string& path, const Passwords& passwords) {
    CheckResult result;
    result.path = path;
    const ScratchFolder scratch;
    const std::string saved = scratch.file("saved" + std::filesystem::path(path).extension().string());
    ODF::Diagnostics diagnostics;
    if (!scratch.isThere()) {
        diagnostics.setStatus(ODF::Status::NoTemporaryFolder);
        return Fail(result, ExitCode::CannotWrite, diagnostics);
    }
    if (IsOpenPackaging(DetectType(path))) {
        std::vector<Member> members;
        const ExitCode code = RepackUnchanged(path, saved, members, diagnostics);
        if (code != ExitCode::Ok) return Fail(result, code, diagnostics);
        Compare(result, saved, nullptr, {}, false);
        return result;
    }
    ODF::CODFDoc document;
    std::string password;
    const ODF::Status status = passwords.open(path, [&](const std::string* tried) {
        if (tried) document.SetPassword(std::string_view(password = *tried));
        document.Open(path);
        return document.GetDiagnostics().status();
    });
    if (status != ODF::Status::Ok) return Fail(result, ExitCode::CannotOpen, document.GetDiagnostics());
    TakeNotes(result, document.GetDiagnostics());
    const TreeRoots roots = RootsOf(document);
    document.Save(saved);
    if (document.GetDiagnostics().status() != ODF::Status::Ok)
        return Fail(result, ExitCode::CannotWrite, document.GetDiagnostics());
    Compare(result, saved, password.empty() ? nullptr : &password, roots, true);
    return result;
}

} // namespace command
