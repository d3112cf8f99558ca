#pragma once

#include "serial/zip/packed_member.h"
#include "serial/zip/target.h"

#include <zip.h>

#include <cstdint>
#include <memory>

namespace ODF::archive {

/// Writes an archive of packed members, which libzip does all at once at the end.
class ArchiveWriter {
public:
    /// The target must outlive the writer.
    explicit ArchiveWriter(Target& target);

    /// `member` and what `bytes` reads must stay until `finish`.
    bool add(const PackedMember& member, PackedBytes bytes);
    /// Writes the members in the order in which they were added. The target isn't told that it is complete.
    bool finish();
    /// Bytes of the archive that was written.
    std::uint64_t size() const noexcept { return size_; }
    /// Whether a failure was one of memory.
    bool isOutOfMemory() const noexcept { return isOutOfMemory_; }

private:
    void noteError(zip_error_t* error) noexcept;

    Target& target_;
    std::uint64_t size_ = 0;
    bool isEmpty_ = true;
    bool isOutOfMemory_ = false;
    std::unique_ptr<zip_t, decltype(&zip_discard)> archive_{nullptr, zip_discard};
};

} // namespace ODF::archive
