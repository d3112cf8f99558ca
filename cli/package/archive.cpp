#include "package/archive.h"

#include "package/reason.h"

#include <algorithm>

namespace command {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} << 10;

std::size_t CountOf(const ODF::Diagnostics& diagnostics) {
    return diagnostics.notes().size() + diagnostics.dropped();
}

} // namespace

std::vector<Member> MembersOf(const CSDUnZip& unzip) {
    std::vector<Member> members;
    if (!unzip.itemTable) return members;
    for (const auto& [name, item] : *unzip.itemTable)
        members.push_back({name.utf8(), item.size, item.index});
    std::stable_sort(members.begin(), members.end(),
                     [](const Member& a, const Member& b) { return a.index < b.index; });
    return members;
}

ODF::Status Archive::open(const std::string& path) {
    diagnostics_.clear();
    unzip_.SetDiagnostics(&diagnostics_);
    const bool isOpen = unzip_.OpenZipFileNonDecompress(path) != 0;
    // A better reason stays.
    diagnostics_.setStatus(isOpen && unzip_.itemTable ? ODF::Status::Ok : ODF::Status::NotAnArchive);
    setMembers(isOpen ? MembersOf(unzip_) : std::vector<Member>());
    return diagnostics_.status();
}

std::string AmbiguityOf(const std::string& path) {
    Archive archive;
    archive.open(path);
    for (const ODF::Note& note : archive.diagnostics().notes())
        if (note.code == ODF::NoteCode::Ambiguous || note.code == ODF::NoteCode::MemberDuplicate)
            return NoteText(note);
    return {};
}

MemberBytes Archive::read(std::string_view name) const {
    MemberBytes found;
    const Member* const member = find(name);
    if (!member || member->index < 0) return found;
    const CTulStringW itemName(name);
    std::vector<unsigned char> piece(kPieceBytes);
    int cursor = 0;
    int count = 0;
    // The end and a fault look alike; a fault leaves a note.
    const std::size_t before = CountOf(diagnostics_);
    while (unzip_.Decompress(itemName, piece.data(), static_cast<int>(piece.size()), cursor, count) != 0)
        found.bytes.insert(found.bytes.end(), piece.begin(), piece.begin() + count);
    found.isWhole = CountOf(diagnostics_) == before;
    return found;
}

} // namespace command
