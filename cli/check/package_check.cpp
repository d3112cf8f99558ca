#include "check/package_check.h"

#include "check/compare_packages.h"
#include "check/scratch_folder.h"
#include "package/archive.h"
#include "package/kind.h"
#include "package/listed_document.h"
#include "package/manifest.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "package/repack.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/office/document.h>

#include <filesystem>

namespace command {
namespace {

void Fail(CheckResult& result, ExitCode code, std::string reason) {
    result.code = code;
    result.error = std::move(reason);
}

void TakeNotes(CheckResult& result, const Notes& notes) {
    for (const ODF::Note& note : notes)
        if (note.severity != ODF::Severity::Information) result.notes.push_back(NoteText(note));
}

/// The temporary file that a trip saves to which can't save to memory; false, with the reason in `result`,
/// when there can't be one.
bool HasScratch(const ScratchFolder& scratch, CheckResult& result) {
    if (!scratch.isThere()) Fail(result, ExitCode::CannotWrite, ODF::ToText(ODF::Status::NoTemporaryFolder));
    return scratch.isThere();
}

std::string ScratchFile(const ScratchFolder& scratch, const std::string& path) {
    return scratch.file("saved" + std::filesystem::path(path).extension().string());
}

void CheckOpenPackaging(CheckResult& result) {
    const ScratchFolder scratch;
    if (!HasScratch(scratch, result)) return;
    const std::string saved = ScratchFile(scratch, result.path);
    ODF::Diagnostics diagnostics;
    std::vector<Member> members;
    const ExitCode code = RepackUnchanged(result.path, saved, members, diagnostics);
    if (code != ExitCode::Ok)
        return Fail(result, code, OpenReason(result.path, diagnostics.status(), diagnostics.notes()));
    Archive before;
    Archive after;
    if (before.open(result.path) != ODF::Status::Ok)
        return Fail(result, ExitCode::CannotOpen, Reason(before.diagnostics()));
    if (after.open(saved) != ODF::Status::Ok)
        return Fail(result, ExitCode::CannotWrite, Reason(after.diagnostics()));
    ComparePackages(before, after, {}, false, result.members);
}

/// Compares the file of `before` with that of `after`, which was saved of it.
void Compare(CheckResult& result, ODF::Document& before, ODF::Document& after, const TreeRoots& roots) {
    ComparePackages(DocumentFile(before), DocumentFile(after), roots, true, result.members);
    if (before.IsEncrypted() && !after.IsEncrypted())
        result.members[std::string(kManifestName)].add(FindingKind::Decrypted, {});
}

void CheckFull(CheckResult& result, ODF::Document& document, const std::string& password) {
    MemberBytes saved;
    ODF::SaveOptions save;
    save.allowsIncomplete = true; // what is lost then is what is asked for
    if (const ODF::Result written = document.Save(saved.bytes, save); !written)
        return Fail(result, ExitCode::CannotWrite, Reason(written.Code(), written.Notes()));
    if (document.IsFlat()) {
        Findings found;
        CompareFlat(ReadWholeFile(result.path), saved, document.Flat()->GetID(), found);
        if (!found.isEmpty()) result.members.emplace(kFlatMember, std::move(found));
        return;
    }
    TreeRoots roots;
    for (const std::string& name : document.Trees())
        roots.emplace(name, document.Root(name)->GetID());
    ODF::Document again;
    ODF::OpenOptions open;
    open.password = password;
    const ODF::Result opened = again.Open(saved.bytes, open);
    if (!again.IsOpen())
        return Fail(result, ExitCode::CannotWrite,
                    "what was saved can't be opened: " + Reason(opened.Code(), opened.Notes()));
    Compare(result, document, again, roots);
}

void CheckListed(CheckResult& result, ODF::Document& before, const std::string& password) {
    const ScratchFolder scratch;
    if (!HasScratch(scratch, result)) return;
    const std::string saved = ScratchFile(scratch, result.path);
    ODF::CODFDoc document;
    const ODF::Diagnostics& diagnostics = document.GetDiagnostics();
    if (!IsDone(OpenListed(document, result.path, password)))
        return Fail(result, ExitCode::CannotOpen, Reason(diagnostics));
    TreeRoots roots;
    for (const auto& [name, part] : TreesOf(document))
        roots.emplace(name, part->GetRootClass()->GetID());
    document.Save(saved);
    if (!IsDone(diagnostics.status())) return Fail(result, ExitCode::CannotWrite, Reason(diagnostics));
    ODF::Document after;
    const ODF::Result opened = after.Open(saved);
    if (!after.IsOpen())
        return Fail(result, ExitCode::CannotWrite,
                    "what was saved can't be opened: " + Reason(opened.Code(), opened.Notes()));
    Compare(result, before, after, roots);
}

} // namespace

CheckResult CheckPackage(const std::string& path, Trip trip, const Passwords& passwords, bool isStrict) {
    CheckResult result;
    result.path = path;
    if (IsOpenPackaging(DetectType(path))) {
        const std::string why = isStrict ? AmbiguityOf(path) : std::string();
        if (!why.empty()) {
            Fail(result, ExitCode::CannotOpen,
                 std::string(ODF::ToText(ODF::Status::Ambiguous)) + " (" + why + ")");
            return result;
        }
        CheckOpenPackaging(result);
    } else {
        ODF::Document document;
        std::string password;
        const ODF::Result opened = TryOpen(document, path, passwords, &password, isStrict);
        if (!document.IsOpen()) {
            Fail(result, ExitCode::CannotOpen, OpenReason(path, opened.Code(), opened.Notes()));
            return result;
        }
        TakeNotes(result, opened.Notes());
        if (trip == Trip::Full)
            CheckFull(result, document, password);
        else
            CheckListed(result, document, password);
    }
    for (const auto& [name, findings] : result.members)
        if (findings.hasLoss()) result.code = ExitCode::Lost;
    return result;
}

} // namespace command
