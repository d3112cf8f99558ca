#pragma once

namespace ODF {

/// What of a file's XML its tree keeps, and a save writes again.
enum class Fidelity {
    /// What the classes list, in their own spelling. What no class lists is counted and dropped, and required
    /// attributes are always written.
    Listed,
    /// Everything: elements and attributes that no class lists, text where it is in the file, the spelling of
    /// values that nobody sets, comments and processing instructions. Nothing is written that neither the
    /// file nor the caller set.
    Everything,
};

} // namespace ODF
