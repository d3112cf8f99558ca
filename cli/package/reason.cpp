#include "package/reason.h"

#include "console.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace command {
namespace {

auto FirstError(const Notes& notes) {
    return std::find_if(notes.begin(), notes.end(),
                        [](const ODF::Note& note) { return note.severity == ODF::Severity::Error; });
}

std::string With(ODF::Status status, const char* reason) {
    return std::string(ODF::ToText(status)) + " (" + reason + ")";
}

} // namespace

std::string NoteText(const ODF::Note& note) {
    std::string text = note.member;
    if (note.line > 0)
        text.append(":").append(std::to_string(note.line)).append(":").append(std::to_string(note.column));
    if (!text.empty()) text += ": ";
    return text + note.text;
}

bool IsWhole(const ODF::Diagnostics& diagnostics) {
    return FirstError(diagnostics.notes()) == diagnostics.notes().end();
}

std::string Reason(ODF::Status status, const Notes& notes) {
    std::string reason = ODF::ToText(status);
    const auto error = FirstError(notes);
    // A note may say the same in the same words.
    if (error != notes.end() && error->text != reason) reason += " (" + NoteText(*error) + ")";
    return reason;
}

std::string Reason(const ODF::Diagnostics& diagnostics) {
    return Reason(diagnostics.status(), diagnostics.notes());
}

std::string OpenReason(const std::string& path, ODF::Status status, const Notes& notes) {
    if (status != ODF::Status::NotReadable) return Reason(status, notes);
    std::error_code error;
    const auto kind = std::filesystem::status(path, error).type();
    if (kind == std::filesystem::file_type::not_found) return With(status, "there is no such file");
    if (kind == std::filesystem::file_type::directory) return With(status, "it is a directory");
    if (access(path.c_str(), R_OK) != 0) return With(status, "no permission");
    return Reason(status, notes);
}

std::string WriteReason(const std::string& path, ODF::Status status, const Notes& notes) {
    if (status != ODF::Status::CouldNotWrite) return Reason(status, notes);
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(path, error).parent_path();
    if (std::filesystem::is_directory(path, error)) return With(status, "it is a directory");
    if (!std::filesystem::exists(folder, error)) return With(status, "there is no such directory");
    const bool isSpecial =
        std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error);
    if (!isSpecial && access(folder.c_str(), W_OK) != 0)
        return With(status, "no permission for the directory");
    return Reason(status, notes);
}

void ComplainNotes(const std::string& file, const Notes& notes) {
    for (const ODF::Note& note : notes)
        if (note.severity != ODF::Severity::Information) Complain(file, NoteText(note));
}

void ComplainNotes(const std::string& file, const ODF::Diagnostics& diagnostics) {
    ComplainNotes(file, diagnostics.notes());
    if (diagnostics.dropped() > 0)
        Complain(file, "and " + std::to_string(diagnostics.dropped()) + " more notes");
}

} // namespace command
