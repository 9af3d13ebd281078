#pragma once

#include <cstdint>

namespace qve {

/// Conversions between day numbers and civil dates, for kernels: inline, branch-light, no memory.
/// Day number 0 is 2 January 4713 BC, 2451544 is 1 January 2000. The calendar is Julian up to 4 October 1582 and
/// Gregorian from the next day, 15 October 1582 (day number 2299160), on. There is no year 0: the year before 1 is -1.
namespace calendar {

inline constexpr int first_gregorian_day = 2299160;
/// Julian leap days and Gregorian ones are counted from years divisible by 400 far below any date, so that all
/// divisions see numbers above 0. A multiple of 4, 100 and 400.
inline constexpr int year_bias = 8000;

struct civil_date {
    int year;   ///< without a year 0
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
};

/// Number of days before month `m` of a year that begins in March; `m` from 3 (March) to 14 (February).
constexpr int days_before_month(int m) {
    return (153 * m - 457) / 5;
}

/// True when `year` (no year 0) has a 29 February.
constexpr bool is_leap(int year) {
    const int astronomical = year + (year < 1);
    const bool fourth = (astronomical & 3) == 0;
    const bool century = astronomical % 100 == 0;
    return fourth & (!century | (astronomical % 400 == 0) | (year < 1583));
}

/// Length of a month in days. October 1582 counts 31, though ten of them were left out.
constexpr int month_length(int year, int month) {
    constexpr unsigned char lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return lengths[month - 1] + (month == 2 && is_leap(year));
}

/// What the Julian day count adds for a year counted from -8000 that begins in March.
inline constexpr int epoch = 1719116 - year_bias * 365;

/// The day number of a civil date, of year -8000 to 1,000,000, month 1 to 12. A day beyond the month runs on into the
/// next; the ten days of October 1582 that never were are read in the Julian calendar.
constexpr int days(int year, int month, int day) {
    const int early = month < 3;
    const int y = year + (year < 1) - early + year_bias;
    const int julian = days_before_month(month + 12 * early) + y * 365 + y / 4 + day + epoch;
    const int correction = y / 400 - y / 100 + 62;
    const bool gregorian = (year * 16 + month) * 32 + day >= (1582 * 16 + 10) * 32 + 15;
    return julian + (gregorian ? correction : 0);
}

/// The civil date of a day number from -1,200,000 to 300,000,000.
constexpr civil_date civil(int day_number) {
    // Counted from 1 March of the year -8000 in the day's own calendar, which begins a cycle of 400 years. Unsigned
    // numbers of 32 bits throughout: they vectorise, and garbage gives garbage.
    const bool gregorian = day_number >= first_gregorian_day;
    const unsigned since_epoch = static_cast<unsigned>(day_number) - static_cast<unsigned>(epoch + 1);
    const unsigned gregorian_days = since_epoch - 62;
    // Putting back the leap days that the centuries lack makes the count Julian.
    const unsigned century = (4 * gregorian_days + 3) / 146097;
    const unsigned n = gregorian ? gregorian_days + century - century / 4 : since_epoch;
    const unsigned y = (4 * n + 3) / 1461;
    const unsigned day_of_year = n - 1461 * y / 4;
    const unsigned m = (5 * day_of_year + 461) / 153;  // 3 to 14
    const unsigned late = m > 12;
    const int year = static_cast<int>(y + late) - year_bias;
    return {year - (year < 1), static_cast<int>(m - 12 * late),
            static_cast<int>(day_of_year) - days_before_month(static_cast<int>(m)) + 1};
}

/// True when the numbers name a day that was: year -4713 (from 2 January) to 9999, not 0, day within its month, not one
/// of the ten days left out in October 1582.
constexpr bool is_civil(int year, int month, int day) {
    if (year < -4713 || year == 0 || year > 9999 || month < 1 || month > 12) return false;
    if (day < 1 || day > month_length(year, month)) return false;
    if (year == 1582 && month == 10 && day > 4 && day < 15) return false;
    return days(year, month, day) >= 0;
}

/// 0 for Monday to 6 for Sunday.
constexpr int weekday(int day_number) {
    return (day_number + 1) % 7;
}

/// 1 for 1 January, up to 366. Follows the day count, so 15 October 1582 is the day after 4 October.
constexpr int yearday(int day_number) {
    return day_number - days(civil(day_number).year, 1, 1) + 1;
}

/// The ISO 8601 week, 1 to 53: that of the week's Thursday. Weeks begin on Monday.
constexpr int iso8601week(int day_number) {
    const int thursday = day_number - weekday(day_number) + 3;
    return (yearday(thursday) - 1) / 7 + 1;
}

}  // namespace calendar
}  // namespace qve
