#pragma once

#include <odfmodel/core/limits.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ODF::package {

/// An element of a manifest with the names of the file, prefixes included. Text isn't kept: no element of a
/// manifest has any.
struct ManifestElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<ManifestElement> children;
};

/// How a member is encrypted in the archive that a manifest is written for.
struct RowEncryption {
    std::uint64_t size = 0; ///< of the plain member
    std::string xml;        ///< its `manifest:encryption-data`
};
/// By the name of the member.
using RowEncryptions = std::unordered_map<std::string, RowEncryption>;

/// The manifest of a package: all that its file says, in the order of the file, and what was changed since. A
/// row is found by its full path; where the file has several for one path, the last one tells, and a change
/// goes to all of them.
class Manifest {
public:
    /// One without rows.
    Manifest();

    enum class ReadResult { Ok, Damaged, TooLarge };
    /// Reads a manifest whose elements and attributes together are at most `mostNodes`. After a fault what
    /// came before it is there.
    ReadResult read(std::span<const unsigned char> bytes, const Limits& limits, std::size_t mostNodes);

    bool contains(std::string_view path) const;
    /// Value of an attribute of the manifest's own namespace, by its local name; null when there is none.
    const std::string* find(std::string_view path, std::string_view attribute) const;
    /// Sets it, and adds the row when it is missing: "/" as the first, others as the last.
    void set(std::string_view path, std::string_view attribute, std::string_view value);
    /// Removes all rows of the path.
    bool remove(std::string_view path);
    /// Removes all rows whose path begins with `start`; their count.
    std::size_t removeBelow(std::string_view start);

    /// `manifest:version` of the manifest as a whole; empty when there is none.
    std::string version() const;
    void setVersion(std::string_view version);

    /// Whether it differs from the bytes that were read.
    bool isChanged() const noexcept { return isChanged_; }
    void setChanged() noexcept { isChanged_ = true; }
    /// Whether a row has encryption data.
    bool isEncrypted() const noexcept { return isEncrypted_; }

    /// The manifest as a file. Rows have the encryption data that `encryptions` gives them and no other; an
    /// encrypted member without a row gets one.
    std::string text(const RowEncryptions& encryptions) const;

private:
    friend class ManifestReader;

    void index();
    bool isOwn(std::string_view name, std::string_view local) const noexcept;
    const std::string* attributeOf(const ManifestElement& element, std::string_view local) const noexcept;
    bool setAttribute(ManifestElement& element, std::string_view local, std::string_view value) const;
    ManifestElement makeRow(std::string_view path) const;

    ManifestElement root_;                                           ///< a child without a name was removed
    std::unordered_map<std::string, std::vector<std::size_t>> rows_; ///< places among the root's children
    std::vector<std::string>
        prefixes_; ///< of the manifest's namespace, the one to write attributes with first
    bool isChanged_ = false;
    bool isEncrypted_ = false;
};

} // namespace ODF::package
