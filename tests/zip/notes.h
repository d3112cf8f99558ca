#pragma once

#include <odfmodel/core/diagnostics.h>

#include <algorithm>
#include <string_view>

namespace test {

inline bool HasNote(const ODF::Diagnostics& diagnostics, ODF::NoteCode code, std::string_view member) {
    return std::any_of(diagnostics.notes().begin(), diagnostics.notes().end(),
                       [&](const ODF::Note& note) { return note.code == code && note.member == member; });
}

} // namespace test
