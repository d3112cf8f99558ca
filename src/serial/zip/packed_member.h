#pragma once

#include <zip.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace ODF::archive {

/// A time as archives keep it, in steps of two seconds.
struct DosTime {
    std::uint16_t time = 0;
    std::uint16_t date = 0;
};

/// Seconds since 1970 as the process's time zone shows them.
DosTime ToDosTime(std::int64_t seconds);
/// The same in UTC, so that it depends on nothing but `seconds`.
DosTime ToUtcDosTime(std::int64_t seconds);
/// The time stamp of new members. SOURCE_DATE_EPOCH makes archives that don't depend on when they were made.
DosTime PresentDosTime();

/// A member that is ready for an archive.
struct PackedMember {
    std::string name;
    std::uint64_t offset = 0; ///< in the spool, for one that is there
    std::uint64_t packedSize = 0;
    std::uint64_t size = 0;
    std::uint32_t crc = 0;
    std::uint16_t method = ZIP_CM_STORE;
    DosTime time;
    std::optional<std::uint32_t> unixMode; ///< with the bits of the file's kind
};

/// Fills `target` with a member's packed bytes from `offset` on, where the call before ended; false when they
/// can't be had.
using PackedBytes = std::function<bool(std::uint64_t offset, std::span<unsigned char> target)>;

/// Adds the member to an archive of libzip's, which copies the packed bytes as they are when it is closed.
/// The member and what `bytes` reads must stay until then.
bool AddPacked(zip_t* archive, const PackedMember& member, PackedBytes bytes);

} // namespace ODF::archive
