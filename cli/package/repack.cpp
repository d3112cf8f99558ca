#include "package/repack.h"

#include <odfmodel/package/package.h>

namespace command {

ExitCode RepackUnchanged(const std::string& from, const std::string& to, std::vector<Member>& members,
                         ODF::Diagnostics& diagnostics) {
    SDPackage::IPackage package;
    package.SetDiagnostics(&diagnostics);
    package.SetFidelity(ODF::Fidelity::Everything);
    if (package.Open(from, 1) == 0) return ExitCode::CannotOpen;
    members = MembersOf(*package.GetUnZip());
    std::vector<CTulStringW> names(members.size());
    SDPackage::ZipItemVector plan(members.size());
    for (std::size_t i = 0; i < members.size(); ++i) {
        names[i] = CTulStringW(members[i].name);
        plan[i].name = names[i];
        plan[i].sourceIndex = members[i].index;
    }
    diagnostics.clear();
    return package.WriteItems(to, &plan) != 0 ? ExitCode::Ok : ExitCode::CannotWrite;
}

} // namespace command
