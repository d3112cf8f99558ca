#pragma once

/// @file
/// The document to begin with. It keeps everything that is in a file, also what no class lists.
///
///     ODF::Document document;
///     if (const ODF::Result opened = document.Open("report.odt"); !opened) {
///         std::cerr << opened.Text() << '\n'; // "wrong password", "not an archive", ...
///         return 1;
///     }
///     if (ODF::COfficeText* text = document.Text())
///         text->SetTextP()->SetText("Hello from odfmodel");
///     if (const ODF::Result saved = document.Save("report.odt"); !saved) return 1;
///
/// A new one begins with `Document::New(ODF::DocumentKind::Spreadsheet)`.

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/object.h>
#include <odfmodel/core/progress.h>
#include <odfmodel/export.h>
#include <odfmodel/package/file_entry.h>

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

class CMathMath;
class COfficeBody;
class COfficeDocument;
class COfficeDocumentContent;
class COfficeDocumentMeta;
class COfficeDocumentSettings;
class COfficeDocumentStyles;
class COfficeDrawing;
class COfficePresentation;
class COfficeSpreadsheet;
class COfficeText;

/// How a call of a document ended, and what was met on the way. True when it did all that was asked.
class [[nodiscard]] Result {
public:
    explicit Result(Status status = Status::Ok, std::vector<Note> notes = {})
        : status_(status), notes_(std::move(notes)) {}

    explicit operator bool() const noexcept { return status_ == Status::Ok; }
    Status Code() const noexcept { return status_; }
    /// The status in words, and the first note that tells the cause.
    ODFMODEL_API std::string Text() const;
    /// Observations in the order in which they were made; also a success may have some.
    const std::vector<Note>& Notes() const noexcept { return notes_; }

private:
    Status status_;
    std::vector<Note> notes_;
};

enum class DocumentKind {
    Unknown,
    Text,
    Spreadsheet,
    Presentation,
    Drawing,
    Chart,
    Image,
    Formula,
    MasterText, ///< a text document made up of others
    WebText,    ///< a template for HTML
    Database
};

/// How an encrypted document is written.
enum class EncryptionScheme {
    Aes256Cbc, ///< each member on its own, with PBKDF2; what every office suite since 2011 reads
    Aes256Gcm  ///< the document as a whole, with Argon2id; newer office suites alone
};

/// What `Document::Open` may be told.
struct OpenOptions {
    std::string password{}; ///< UTF-8; empty for none
    Limits limits{};
    /// Refuses, with `Status::Ambiguous`, archives in which other programs may read another content: with
    /// something before them, members that share bytes or have one name, headers that contradict the
    /// directory. Without it such archives are read as their last directory says, with notes.
    bool refusesAmbiguous = false;
    /// Told how far it has come, and asked whether to go on; empty for none. A document that was open stays
    /// when the opening is cancelled.
    ProgressCallback progress{};
};

/// What `Document::Save` may be told.
struct SaveOptions {
    /// The time of new and changed members, in seconds since 1970 in UTC, for archives that come out the same
    /// each time; without it the present time.
    std::optional<std::int64_t> fixedTime{};
    /// Writes what there is of a document that could not be read whole, too. What could not be read is lost
    /// then.
    bool allowsIncomplete = false;
    /// Told how far it has come, and asked whether to go on; empty for none. A save that is cancelled writes
    /// nothing: the old file stays, and the document can be saved again.
    ProgressCallback progress{};
    /// The effort of compression, from 1 (quick) to 12 (small): 7 makes archives up to a tenth smaller than 6
    /// and takes twice as long.
    int compression = 6;
    /// Threads that large members are deflated on, the calling one among them; 1 for that one alone, 0 for as
    /// many as there are processors, at most eight.
    unsigned threads = 0;
};

/// A document: its trees of element objects, and all other members of its package as bytes.
///
/// `Open` reads the trees of content, styles, meta and settings; those of embedded objects are read when they
/// are asked for. What nobody asked for is saved as it was, byte for byte; trees are saved with everything
/// that their file had. A document works on its file's bytes in memory and writes nothing to the disk but the
/// file that it saves.
///
/// One document belongs to one thread at a time; different documents never meet. Pointers to objects live as
/// long as the document, or until it is opened again. A `Document` that was moved from is closed.
class ODFMODEL_API Document {
public:
    /// A closed document, without members and trees.
    Document() noexcept;
    Document(Document&& other) noexcept;
    Document& operator=(Document&& other) noexcept;
    ~Document();

    /// Opens a package or a flat XML file; its type comes from the content, not from the name. What was open
    /// before is given up, unless the new one can't be opened at all.
    ///
    /// With `Status::Damaged`, `Status::LimitExceeded` or `Status::OutOfMemory` the document may be open
    /// nevertheless (see `IsOpen`), with what could be read of it; `Save` then wants
    /// `SaveOptions::allowsIncomplete`.
    Result Open(const std::filesystem::path& path, const OpenOptions& options = {});
    /// The same from bytes, which are copied.
    Result Open(std::span<const unsigned char> bytes, const OpenOptions& options = {});
    /// The same from a stream, which is read to its end.
    Result Open(std::istream& stream, const OpenOptions& options = {});

    /// A new document that office programs open: default styles, page layout, an empty body. Closed for
    /// `Unknown` and `Database`.
    static Document New(DocumentKind kind);

    /// Writes the document. The file at `path` is replaced in one last step, when the new one is complete; on
    /// any failure the old one stays, and the document can be saved again, here or elsewhere. A document that
    /// was opened with a password is written with it, see `SetPassword`.
    Result Save(const std::filesystem::path& path, const SaveOptions& options = {});
    /// The same into `bytes`, which is empty on failure.
    Result Save(std::vector<unsigned char>& bytes, const SaveOptions& options = {});
    /// The same to a stream, which gets nothing before the document is complete in memory.
    Result Save(std::ostream& stream, const SaveOptions& options = {});

    bool IsOpen() const noexcept { return state_ != nullptr; }
    /// Whether everything of the file is in the document; see `Open`.
    bool IsWhole() const noexcept;
    DocumentKind Kind() const noexcept;
    bool IsTemplate() const noexcept;
    /// Whether the document is one XML file instead of a package.
    bool IsFlat() const noexcept;
    /// Such as "application/vnd.oasis.opendocument.text".
    std::string MediaType() const;
    /// The version of the format that the document tells, such as "1.2"; empty when it tells none.
    std::string Version() const;
    /// The same of one member with a tree, such as "styles.xml"; empty when it tells none. `Save` raises it
    /// to what the tree needs when the caller has added something that a later version brought.
    std::string VersionOf(std::string_view member) const;

    /// @name Trees
    /// Borrowed; null when the document has no such tree. A flat document has one alone.
    /// @{
    COfficeDocumentContent* Content();
    COfficeDocumentStyles* Styles();
    COfficeDocumentMeta* Meta();
    COfficeDocumentSettings* Settings();
    CMathMath* Formula();    ///< of a formula document
    COfficeDocument* Flat(); ///< of a flat document
    COfficeBody* Body();     ///< of any but a formula
    COfficeText* Text();     ///< the body of a text, master text or template for HTML
    COfficeSpreadsheet* Spreadsheet();
    COfficePresentation* Presentation();
    COfficeDrawing* Drawing();
    /// The root of a member's tree, such as that of "Object 1/content.xml"; null for a member that isn't XML
    /// of a known root. `result`, if given, tells why.
    CSDObject* Root(std::string_view member, Result* result = nullptr);
    /// The members that have a tree at present.
    std::vector<std::string> Trees() const;
    /// The roots of those trees, in the same order; of a flat document its one. For what is to be done
    /// wherever it is needed: in texts and in headers, in styles and in formats of single elements.
    std::vector<CSDObject*> Roots();
    /// @}

    /// @name Members
    /// Names are UTF-8 and exact, with `/` between folders. A flat document has no members.
    /// @{
    std::vector<std::string> Members() const;
    bool HasMember(std::string_view name) const;
    /// The folders that hold an embedded object, such as "Object 1".
    std::vector<std::string> Objects() const;
    /// The plain bytes of a member; of one with a tree, the tree as it would be saved.
    Result ReadMember(std::string_view name, std::vector<unsigned char>& bytes);
    /// Adds or replaces a member; a tree that it had goes. Without a media type it gets that of its kind.
    Result WriteMember(std::string_view name, std::span<const unsigned char> bytes,
                       std::string_view mediaType = {});
    /// False when there is no such member. A tree that it had goes.
    bool RemoveMember(std::string_view name);
    std::string MediaTypeOf(std::string_view name) const;
    /// The media type of a member or, with a `/` at the end of the name, of a folder; false when the document
    /// is flat, closed, or has none of that name.
    bool SetMediaTypeOf(std::string_view name, std::string_view mediaType);
    /// Adds a picture under a free name like `fileName`, such as "Pictures/logo.png", which is returned for
    /// `xlink:href`; empty when the document is flat, closed, or the name can't be used.
    std::string AddPicture(std::span<const unsigned char> bytes, std::string_view fileName);
    /// The same with the bytes and the name of a file; empty also when it can't be read, and `result`, if
    /// given, tells why.
    std::string AddPictureFile(const std::filesystem::path& file, Result* result = nullptr);
    /// Embeds another document, such as a chart: its members are copied into a free folder, "Object 1", which
    /// is returned for `xlink:href`. Empty when either is flat or closed, or a member can't be copied;
    /// nothing stays of it then.
    std::string AddObject(Document& object);
    /// @}

    /// @name The file
    /// What was opened, whatever became of it since, for tools that show or compare files: in clear, in the
    /// order of the archive, with `mimetype`, the manifest and folders. A new or flat document has none.
    /// @{
    std::vector<FileEntry> FileEntries() const;
    /// The plain bytes of a member of the file; no tree is read or written for it. When they can't be read to
    /// their end, those that could.
    Result ReadFileEntry(std::string_view name, std::vector<unsigned char>& bytes) const;
    /// @}

    /// @name Encryption
    /// @{
    bool IsEncrypted() const noexcept;
    /// From now on the document is written encrypted with this password, which may not be empty. Without a
    /// scheme in that of the file, or AES-256 in CBC mode for one that wasn't encrypted. A flat document
    /// can't be encrypted: false.
    bool SetPassword(std::string_view password, std::optional<EncryptionScheme> scheme = std::nullopt);
    /// From now on the document is written in clear.
    void RemovePassword();
    /// @}

private:
    struct State;
    explicit Document(std::unique_ptr<State> state) noexcept;
    Result OpenBytes(std::vector<unsigned char> bytes, const OpenOptions& options);

    std::unique_ptr<State> state_;
};

} // namespace ODF
