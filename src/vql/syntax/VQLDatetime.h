#pragma once

#include <compare>

namespace qve {

/// A day of the calendar as written in a statement. There is no year 0.
struct VQLDate {
    short year = 0;
    char month = 0;
    char day = 0;

    /// -1, 0 or 1, by the members in their order.
    int cmp(const VQLDate& other) const;
    auto operator<=>(const VQLDate&) const = default;
};

/// A moment as written in a statement. `fraction` counts ten-thousandths of a second.
struct VQLDatetime {
    short year = 0;
    char month = 0;
    char day = 0;
    char hour = 0;
    char minute = 0;
    char second = 0;
    short fraction = 0;

    int cmp(const VQLDatetime& other) const;
    auto operator<=>(const VQLDatetime&) const = default;
};

/// A span of time as written in a statement. All members of a negative duration are zero or negative.
struct VQLDuration {
    int day = 0;
    char hour = 0;
    char minute = 0;
    char second = 0;
    short fraction = 0;

    int cmp(const VQLDuration& other) const;
    auto operator<=>(const VQLDuration&) const = default;
};

/// Conversions between the parts above and the engine's counts: a Julian day number, and ticks of a ten-thousandth of
/// a second, 864000000 to the day.
VQLDate VQLDateFromJulianDay(int julianDay);
VQLDatetime VQLDatetimeFromTicks(unsigned long long ticks);
VQLDuration VQLDurationFromTicks(long long ticks);

}  // namespace qve
