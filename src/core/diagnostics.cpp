#include <odfmodel/core/diagnostics.h>

namespace ODF {
namespace {

constexpr std::size_t kMaxNotes = 1000;
constexpr std::size_t kMaxNames = 10'000;
constexpr std::size_t kMaxText = 400;

void Count(Diagnostics::NameCounts& counts, std::string_view name, std::size_t times) {
    const auto at = counts.find(name);
    if (at != counts.end())
        at->second += times;
    else if (counts.size() < kMaxNames)
        counts.emplace(name.substr(0, kMaxText), times);
    else
        counts["(other names)"] += times;
}

} // namespace

const char* ToText(Status status) noexcept {
    switch (status) {
    case Status::None:
        return "nothing done yet";
    case Status::Ok:
        return "ok";
    case Status::NotReadable:
        return "the file is not readable";
    case Status::NotAnArchive:
        return "not an archive";
    case Status::PasswordNeeded:
        return "the package is encrypted: a password is needed";
    case Status::WrongPassword:
        return "wrong password";
    case Status::UnsupportedEncryption:
        return "the encryption is not supported";
    case Status::UnknownType:
        return "unknown document type";
    case Status::BadIndex:
        return "the index of the package can not be read";
    case Status::NoContent:
        return "the package has no content";
    case Status::LimitExceeded:
        return "a limit is exceeded";
    case Status::NoTemporaryFolder:
        return "no temporary folder";
    case Status::NothingToSave:
        return "there is nothing to save";
    case Status::CouldNotWrite:
        return "could not write";
    case Status::OutOfMemory:
        return "out of memory";
    case Status::Damaged:
        return "the content is damaged";
    case Status::Cancelled:
        return "cancelled";
    case Status::Ambiguous:
        return "the archive can be read in more than one way";
    }
    return "unknown";
}

void Diagnostics::clear() {
    *this = Diagnostics();
}

void Diagnostics::setStatus(Status status) noexcept {
    if (status_ == Status::None || status_ == Status::Ok) status_ = status;
}

void Diagnostics::add(Note note) {
    if (notes_.size() >= kMaxNotes) {
        ++dropped_;
        return;
    }
    if (note.member.size() > kMaxText) note.member.resize(kMaxText);
    if (note.text.size() > kMaxText) note.text.resize(kMaxText);
    notes_.push_back(std::move(note));
}

void Diagnostics::add(NoteCode code, Severity severity, std::string_view member, std::string_view text,
                      unsigned long line, unsigned long column) {
    add(Note{code, severity, std::string(member), line, column, std::string(text)});
}

void Diagnostics::countUnknownElement(std::string_view name, std::size_t times) {
    Count(unknownElements_, name, times);
}

void Diagnostics::countUnknownAttribute(std::string_view name, std::size_t times) {
    Count(unknownAttributes_, name, times);
}

void Diagnostics::countDroppedText(std::string_view element, std::size_t times) {
    Count(droppedText_, element, times);
}

} // namespace ODF
