#include "package/archive.h"

#include "console.h"
#include "package/reason.h"
#include "password.h"

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

Archive::Archive() = default;

ODF::Status Archive::open(const std::string& path, const std::string* password) {
    auto unzip = std::make_unique<CODFUnZip>();
    if (password) unzip->SetPassword(std::string_view(*password));
    unzip->keepCompressed = 1;
    unzip_ = std::move(unzip);
    diagnostics_.clear();
    unzip_->SetDiagnostics(&diagnostics_);
    return finish(unzip_->OpenForItems(CTulStringW(path)) != 0);
}

bool Archive::open(const std::string& path, const Passwords& passwords) {
    const ODF::Status status =
        passwords.open(path, [&](const std::string* password) { return open(path, password); });
    if (status != ODF::Status::Ok) Complain(path, Reason(diagnostics_));
    return status == ODF::Status::Ok;
}

ODF::Status Archive::openRaw(const std::string& path) {
    unzip_ = std::make_unique<CSDUnZip>();
    diagnostics_.clear();
    unzip_->SetDiagnostics(&diagnostics_);
    return finish(unzip_->OpenZipFileNonDecompress(path) != 0);
}

ODF::Status Archive::finish(bool isOpen) {
    members_.clear();
    byName_.clear();
    if (!isOpen || !unzip_->itemTable) {
        diagnostics_.setStatus(ODF::Status::NotAnArchive); // unless a better reason stands there
        return diagnostics_.status();
    }
    members_ = MembersOf(*unzip_);
    for (std::size_t i = 0; i < members_.size(); ++i)
        byName_.emplace(members_[i].name, i);
    diagnostics_.setStatus(ODF::Status::Ok);
    return ODF::Status::Ok;
}

const Member* Archive::find(std::string_view name) const {
    const auto at = byName_.find(name);
    return at == byName_.end() ? nullptr : &members_[at->second];
}

std::optional<std::string> Archive::read(std::string_view name) {
    const Member* const member = find(name);
    if (!member || member->index < 0) return std::nullopt;
    MemberStream stream(*this, *member);
    std::string bytes;
    for (std::string_view piece = stream.next(); !piece.empty(); piece = stream.next())
        bytes += piece;
    return stream.isDamaged() ? std::nullopt : std::optional(std::move(bytes));
}

MemberStream::MemberStream(Archive& archive, const Member& member)
    : archive_(archive), name_(member.name), buffer_(kPieceBytes, '\0'), isDamaged_(member.index < 0) {}

std::string_view MemberStream::next() {
    if (isAtEnd_) return {};
    // The end and a fault look alike; a fault leaves a note.
    const std::size_t before = CountOf(archive_.diagnostics());
    if (archive_.unzip().Decompress(name_, buffer_.data(), static_cast<int>(buffer_.size()), cursor_,
                                    count_) == 0) {
        isAtEnd_ = true;
        isDamaged_ = isDamaged_ || CountOf(archive_.diagnostics()) > before;
        return {};
    }
    return {buffer_.data(), static_cast<std::size_t>(count_)};
}

} // namespace command
