#include "package/reason.h"

#include "console.h"

#include <algorithm>

namespace command {

std::string NoteText(const ODF::Note& note) {
    std::string text = note.member;
    if (note.line > 0)
        text.append(":").append(std::to_string(note.line)).append(":").append(std::to_string(note.column));
    if (!text.empty()) text += ": ";
    return text + note.text;
}

namespace {

auto FirstError(const std::vector<ODF::Note>& notes) {
    return std::find_if(notes.begin(), notes.end(),
                        [](const ODF::Note& note) { return note.severity == ODF::Severity::Error; });
}

} // namespace

bool IsWhole(const ODF::Diagnostics& diagnostics) {
    return FirstError(diagnostics.notes()) == diagnostics.notes().end();
}

std::string Reason(const ODF::Diagnostics& diagnostics) {
    std::string reason = ODF::ToText(diagnostics.status());
    const auto error = FirstError(diagnostics.notes());
    if (error != diagnostics.notes().end()) reason += " (" + NoteText(*error) + ")";
    return reason;
}

void ComplainNotes(const std::string& file, const ODF::Diagnostics& diagnostics) {
    for (const ODF::Note& note : diagnostics.notes())
        if (note.severity != ODF::Severity::Information) Complain(file, NoteText(note));
    if (diagnostics.dropped() > 0)
        Complain(file, "and " + std::to_string(diagnostics.dropped()) + " more notes");
}

} // namespace command
