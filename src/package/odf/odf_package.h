#pragma once

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/progress.h>
#include <odfmodel/export.h>
#include <odfmodel/package/file_entry.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

/// An ODF package in memory: its members, its manifest and its encryption over the bytes of an archive.
/// Members are inflated when they are asked for, and those that nobody changes go into a written archive as
/// they are. Nothing of it is ever on a disk.
///
/// Names are UTF-8 and exact: upper and lower case, blanks and `%20` tell members apart. The member
/// `mimetype` and the manifest follow by themselves. Notes go to the diagnostics; their status is left to the
/// caller. One package is used by one thread at a time, its const operations included. What gives no status
/// throws `std::bad_alloc` for want of memory.
class ODFMODEL_API OdfPackage {
public:
    using Bytes = std::vector<unsigned char>;

    enum class Encryption {
        None,
        Members, ///< each member on its own: AES-256-CBC with PBKDF2; what every reader since 2011 knows
        Whole    ///< a package in the package: AES-256-GCM with Argon2id
    };

    /// An empty package.
    OdfPackage();
    /// What was moved from can only be assigned to or destroyed.
    OdfPackage(OdfPackage&& other) noexcept;
    OdfPackage& operator=(OdfPackage&& other) noexcept;
    ~OdfPackage();

    /// Opens an archive whose bytes it takes over. On any other status than `Ok` the package stays as it was.
    /// `progress` may be empty, here and below, and may not throw.
    [[nodiscard]] Status open(Bytes bytes, std::string_view passwordUtf8, const Limits& limits,
                              Diagnostics& diagnostics, const ProgressCallback& progress = {});

    /// What the member `mimetype` says, else the row "/" of the manifest.
    std::string mediaType() const;
    void setMediaType(std::string_view mediaType);
    /// `manifest:version` of the row "/", else of the manifest.
    std::string version() const;
    void setVersion(std::string_view version);

    /// All members in the order of the archive, new ones last; no folders.
    std::vector<std::string> names() const;
    bool contains(std::string_view name) const;
    /// The plain bytes. When the status isn't `Ok`, `bytes` has what could be decoded: `NotReadable` for a
    /// member that is missing or damaged, `WrongPassword`, `BadIndex` for encryption data that makes no
    /// sense, `UnsupportedEncryption`, `LimitExceeded` or `Cancelled`.
    [[nodiscard]] Status read(std::string_view name, Bytes& bytes, Diagnostics& diagnostics,
                              const ProgressCallback& progress = {}) const;
    /// Bytes of the plain member, as far as the archive's directory tells; 0 when there is none.
    std::uint64_t sizeOf(std::string_view name) const;

    /// What the opened archive has, with `mimetype`, the manifest and folders, whatever was changed since.
    std::vector<FileEntry> fileEntries() const;
    /// As `read`, from the opened archive.
    [[nodiscard]] Status readFileEntry(std::string_view name, Bytes& bytes, Diagnostics& diagnostics) const;

    /// The media type in the manifest's row; folders have rows too, with a `/` at the end of their name.
    std::string mediaTypeOf(std::string_view name) const;
    void setMediaTypeOf(std::string_view name, std::string_view mediaType);

    /// Adds or replaces a member. Without a media type a replaced one keeps its own, and a new one gets that
    /// of its kind. False when no member may have that name.
    bool put(std::string_view name, Bytes bytes, std::string_view mediaType = {});
    /// Adds a member in `folder` under the given file name, or, when that is taken, under one like it:
    /// "Pictures/x.png", "Pictures/x-2.png". The name that it got; empty when the file name can't be used.
    std::string addFree(std::string_view folder, std::string_view fileName, Bytes bytes,
                        std::string_view mediaType = {});
    bool remove(std::string_view name);
    /// Removes all members whose name begins with `folder` and a `/`, and the rows of the manifest for them
    /// and for the folder; the count of members.
    std::size_t removeFolder(std::string_view folder);

    /// How the package was opened, or what was set since.
    Encryption encryption() const noexcept;
    bool isEncrypted() const noexcept { return encryption() != Encryption::None; }
    /// Decides how the package is written from now on. An empty password keeps the present one.
    void setEncryption(Encryption encryption, std::string_view passwordUtf8);

    struct WriteOptions {
        std::optional<Encryption> encryption; ///< for this archive only; without it that of the package
        std::string_view password;            ///< for this archive only; empty for that of the package. Given
                                              ///< for a package in clear it asks for `Members`
        std::optional<std::int64_t> fixedTime; ///< of new and changed members, in seconds since 1970 in UTC
        /// Asked once for each member: newer bytes for this archive alone. Nothing for a member that is as it
        /// was; any other status than `Ok` ends the writing.
        std::function<std::optional<Status>(std::string_view name, Bytes& bytes)> replace;
        /// Whether `replace` changes anything, for what depends on nothing having changed.
        bool isChanged = true;
        ProgressCallback progress{};
        int compression = 6;  ///< from 1 (quick) to 12 (small)
        unsigned threads = 0; ///< for large members; 0 for as many as there are processors
    };
    /// Writes the whole archive, as often as wanted. On any other status than `Ok` `archive` is empty.
    [[nodiscard]] Status write(const WriteOptions& options, Bytes& archive, Diagnostics& diagnostics) const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

} // namespace ODF
