#pragma once

#include <cstdint>

struct SYSTEMTIME;

namespace ODF::system {

/// The present time in UTC, to the millisecond.
SYSTEMTIME UtcNow();
/// The present time in the process's time zone.
SYSTEMTIME LocalNow();
/// Seconds since 1970 in UTC, and a given such time in UTC or in the process's time zone.
std::int64_t SecondsNow();
SYSTEMTIME UtcTime(std::int64_t seconds);
SYSTEMTIME LocalTime(std::int64_t seconds);

} // namespace ODF::system
