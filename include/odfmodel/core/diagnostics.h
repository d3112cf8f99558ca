#pragma once

#include <odfmodel/export.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

/// How the last `Open` or `Save` of a document or package ended. The plain results of the interface (0, null,
/// false) stay what they are; this tells why.
enum class Status {
    None,           ///< nothing was done yet
    Ok,             ///< done; notes may still tell of smaller faults
    NotReadable,    ///< the file isn't there or can't be read
    NotAnArchive,   ///< the file isn't a zip archive, or its directory is damaged
    PasswordNeeded, ///< the package is encrypted and no password was set
    WrongPassword,  ///< the password doesn't fit (or the encrypted data is damaged, which looks the same)
    UnsupportedEncryption, ///< the encryption scheme isn't known to this build
    UnknownType,           ///< neither the name nor the content tells a document type that is read
    BadIndex,              ///< the package's index (content types, relationships, what the manifest says
                           ///< about encryption) can't be used
    NoContent,             ///< the package has no main part
    LimitExceeded,         ///< the package asks for more than the limits allow
    NoTemporaryFolder,     ///< the system has no writable temporary directory
    NothingToSave,         ///< there is no package to save, as in a second save of one document
    CouldNotWrite,         ///< the target or a file on the way to it can't be written
    OutOfMemory,
    Damaged,   ///< a part of the content can't be read; what came before the fault is there
    Cancelled, ///< the caller's `ProgressCallback` has ended the operation
    Ambiguous  ///< other programs may read another content in the file; only where this is to be refused
};

/// A short English text for a status, such as "not an archive".
ODFMODEL_API const char* ToText(Status status) noexcept;

enum class Severity { Information, Warning, Error };

/// What a note is about.
enum class NoteCode {
    General,
    XmlNotWellFormed, ///< a member's XML ends at a fault; what came before it was kept
    DepthLimit,       ///< elements nest deeper than the limits allow; the part ends there
    SizeLimit,        ///< a member, text or count beyond the limits
    MemberMissing,    ///< the index names a member that isn't in the archive
    MemberUnreadable, ///< a member's data is damaged (checksum, deflate) or can't be decrypted
    MemberSkipped,    ///< a member whose name points outside the package or can't be stored
    MemberDuplicate,  ///< a second member of one name
    ManifestFault,    ///< the manifest is missing or contradicts the package
    ChecksumMismatch, ///< an encrypted member's checksum doesn't fit
    WriteFailed,      ///< a file can't be written
    ReadFailed,       ///< the system failed to read the file, which may be sound
    Ambiguous,        ///< programs may differ in what they read here
    TargetChanged,    ///< something of a replaced file couldn't be kept, such as a second name
};

/// One observation about a document. `line` and `column` count from 1; 0 where they have no meaning.
struct Note {
    NoteCode code = NoteCode::General;
    Severity severity = Severity::Information;
    std::string member; ///< member of the package in UTF-8 with `/`, empty for the package as a whole
    unsigned long line = 0;
    unsigned long column = 0;
    std::string text; ///< English, one line
};

/// Collects what happened during an `Open` or a `Save`. It holds a bounded number of notes, so that a hostile
/// file can't fill the memory with them; `dropped` counts the rest. The library never prints any of it.
class ODFMODEL_API Diagnostics {
public:
    /// Names of unknown elements or attributes, with their customary prefix, and how often each was met.
    using NameCounts = std::map<std::string, std::size_t, std::less<>>;

    void clear();

    Status status() const noexcept { return status_; }
    /// Sets the status. A failure that is set stays until `clear`: the first cause is the one that counts.
    void setStatus(Status status) noexcept;

    const std::vector<Note>& notes() const noexcept { return notes_; }
    std::size_t dropped() const noexcept { return dropped_; }
    void add(Note note);
    void add(NoteCode code, Severity severity, std::string_view member, std::string_view text,
             unsigned long line = 0, unsigned long column = 0);

    const NameCounts& unknownElements() const noexcept { return unknownElements_; }
    const NameCounts& unknownAttributes() const noexcept { return unknownAttributes_; }
    /// Counts an element or attribute that no class lists; an attribute is named "element@attribute".
    void countUnknownElement(std::string_view name, std::size_t times = 1);
    void countUnknownAttribute(std::string_view name, std::size_t times = 1);
    /// Elements without character content that held some, which is lost, and how often.
    const NameCounts& droppedText() const noexcept { return droppedText_; }
    void countDroppedText(std::string_view element, std::size_t times = 1);

private:
    Status status_ = Status::None;
    std::vector<Note> notes_;
    std::size_t dropped_ = 0;
    NameCounts unknownElements_;
    NameCounts unknownAttributes_;
    NameCounts droppedText_;
};

} // namespace ODF
