#pragma once

/// A date and time, field by field, in UTC or without a zone. All zeros while unset.
struct SYSTEMTIME {
    unsigned short wYear = 0;
    unsigned short wMonth = 0;     ///< 1 to 12
    unsigned short wDayOfWeek = 0; ///< 0 is Sunday; never read or set by the element classes
    unsigned short wDay = 0;       ///< 1 to 31
    unsigned short wHour = 0;
    unsigned short wMinute = 0;
    unsigned short wSecond = 0;
    unsigned short wMilliseconds = 0;

    friend bool operator==(const SYSTEMTIME&, const SYSTEMTIME&) = default;
};
