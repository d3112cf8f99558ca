#include "system/clock.h"

#include <odfmodel/system_time.h>

#include <chrono>
#include <ctime>

namespace ODF::system {

namespace {

SYSTEMTIME ToSystemTime(const std::tm& time, std::int64_t milliseconds) noexcept {
    const auto narrow = [](auto number) { return static_cast<unsigned short>(number); };
    SYSTEMTIME result{};
    result.wYear = narrow(time.tm_year + 1900);
    result.wMonth = narrow(time.tm_mon + 1);
    result.wDayOfWeek = narrow(time.tm_wday);
    result.wDay = narrow(time.tm_mday);
    result.wHour = narrow(time.tm_hour);
    result.wMinute = narrow(time.tm_min);
    result.wSecond = narrow(time.tm_sec);
    result.wMilliseconds = narrow(milliseconds);
    return result;
}

/// All fields 0 for a time that the calendar doesn't hold.
SYSTEMTIME Convert(std::int64_t seconds, std::int64_t milliseconds, bool isLocal) noexcept {
    const auto count = static_cast<std::time_t>(seconds);
    std::tm time{};
    if (!(isLocal ? localtime_r(&count, &time) : gmtime_r(&count, &time))) return {};
    return ToSystemTime(time, milliseconds);
}

std::int64_t MillisecondsNow() noexcept {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

SYSTEMTIME UtcNow() {
    const std::int64_t now = MillisecondsNow();
    return Convert(now / 1000, now % 1000, false);
}

SYSTEMTIME LocalNow() {
    const std::int64_t now = MillisecondsNow();
    return Convert(now / 1000, now % 1000, true);
}

std::int64_t SecondsNow() {
    return MillisecondsNow() / 1000;
}

SYSTEMTIME UtcTime(std::int64_t seconds) {
    return Convert(seconds, 0, false);
}

SYSTEMTIME LocalTime(std::int64_t seconds) {
    return Convert(seconds, 0, true);
}

} // namespace ODF::system
