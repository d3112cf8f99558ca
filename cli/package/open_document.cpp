#include "package/open_document.h"

#include "console.h"
#include "io/progress_line.h"
#include "package/reason.h"
#include "password.h"

#include <odfmodel/core/limits.h>

#include <array>
#include <fstream>

namespace command {

ODF::Result TryOpen(ODF::Document& document, const std::string& path, const Passwords& passwords,
                    std::string* password, bool isStrict) {
    ODF::Result result;
    passwords.open(path, [&](const std::string* tried) {
        ProgressLine line(path);
        ODF::OpenOptions options;
        options.progress = line.callback();
        options.refusesAmbiguous = isStrict;
        if (tried) options.password = *tried;
        if (password) *password = options.password;
        result = document.Open(path, options);
        return result.Code();
    });
    return result;
}

ExitCode OpenDocument(ODF::Document& document, const std::string& path, const Passwords& passwords,
                      bool isStrict) {
    const ODF::Result result = TryOpen(document, path, passwords, nullptr, isStrict);
    if (document.IsOpen())
        ComplainNotes(path, result.Notes());
    else
        Complain(path, OpenReason(path, result.Code(), result.Notes()));
    return result ? ExitCode::Ok : ExitCode::CannotOpen;
}

DocumentFile::DocumentFile(const ODF::Document& document) : document_(document) {
    std::vector<Member> members;
    for (ODF::FileEntry& entry : document.FileEntries())
        members.push_back({std::move(entry.name), static_cast<long long>(entry.size), -1});
    setMembers(std::move(members));
}

MemberBytes DocumentFile::read(std::string_view name) const {
    MemberBytes found;
    found.isWhole = static_cast<bool>(document_.ReadFileEntry(name, found.bytes));
    return found;
}

MemberBytes ReadWholeFile(const std::string& path) {
    MemberBytes found;
    std::ifstream in(path, std::ios::binary);
    const std::uint64_t most = ODF::Limits().memberBytes;
    std::array<char, 1U << 16> piece{};
    // A stream tells by its state, an iterator of its bytes would throw.
    while (in.read(piece.data(), piece.size()) || in.gcount() > 0) {
        found.bytes.insert(found.bytes.end(), piece.data(), piece.data() + in.gcount());
        if (found.bytes.size() > most) return found;
    }
    found.isWhole = in.is_open() && !in.bad();
    return found;
}

} // namespace command
