#pragma once

#include "serial/zip/spool.h"

#include <zip.h>

#include <cstdint>
#include <string>

namespace ODF::archive {

/// A time as archives keep it, in steps of two seconds.
struct DosTime {
    std::uint16_t time = 0;
    std::uint16_t date = 0;
};

/// Seconds since 1970 as the process's time zone shows them.
DosTime ToDosTime(std::int64_t seconds);
/// The time stamp of new members. SOURCE_DATE_EPOCH makes archives that don't depend on when they were made.
DosTime PresentDosTime();

/// A member that lies packed in the spool.
struct PackedMember {
    std::string name;
    std::uint64_t offset = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t size = 0;
    std::uint32_t crc = 0;
    std::uint16_t method = ZIP_CM_STORE;
    DosTime time;
};

/// Adds the member to an archive of libzip's, which copies the packed bytes as they are when it is closed.
/// Spool and member must stay until then.
bool AddPacked(zip_t* archive, const Spool& spool, const PackedMember& member);

} // namespace ODF::archive
