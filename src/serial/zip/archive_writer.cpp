#include "serial/zip/archive_writer.h"

#include <array>
#include <cerrno>
#include <utility>

namespace ODF::archive {

ArchiveWriter::ArchiveWriter(Target& target) : target_(target) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* const into = MakeTargetSource(target, size_, &error);
    if (into) archive_.reset(zip_open_from_source(into, ZIP_CREATE | ZIP_TRUNCATE, &error));
    if (into && !archive_) zip_source_free(into);
    if (!archive_) noteError(&error);
    zip_error_fini(&error);
}

void ArchiveWriter::noteError(zip_error_t* error) noexcept {
    isOutOfMemory_ = isOutOfMemory_ || zip_error_code_zip(error) == ZIP_ER_MEMORY ||
                     (zip_error_system_type(error) == ZIP_ET_SYS && zip_error_code_system(error) == ENOMEM);
}

bool ArchiveWriter::add(const PackedMember& member, PackedBytes bytes) {
    if (!archive_) return false;
    isEmpty_ = false;
    if (AddPacked(archive_.get(), member, std::move(bytes))) return true;
    noteError(zip_get_error(archive_.get()));
    return false;
}

bool ArchiveWriter::finish() {
    if (!archive_) return false;
    // libzip doesn't write an archive without members.
    if (isEmpty_) {
        constexpr std::array<unsigned char, 22> emptyArchive{'P', 'K', 5, 6};
        size_ = emptyArchive.size();
        return target_.writeAt(0, emptyArchive);
    }
    if (zip_close(archive_.get()) == 0) {
        archive_.release(); // NOLINT(bugprone-unused-return-value): closing has freed it
        return true;
    }
    noteError(zip_get_error(archive_.get()));
    return false;
}

} // namespace ODF::archive
