#pragma once

#include <compare>
#include <iosfwd>

#include "types/calendar.h"

namespace qve {

/// A day number, see calendar.h. Null is all ones.
struct date {
    unsigned value;

    static const date mindate;  ///< 1 January 1990
    static const date maxdate;  ///< 31 December 2020

    /// The day of a civil date; the arguments are not checked beyond what calendar::days says.
    static constexpr date gregoriandate(int year, char month, char day) {
        return {static_cast<unsigned>(calendar::days(year, month, day))};
    }
    /// The ISO 8601 week number, 1 to 53.
    static constexpr int iso8601week(const date& d) { return calendar::iso8601week(static_cast<int>(d.value)); }

    constexpr calendar::civil_date civil() const { return calendar::civil(static_cast<int>(value)); }

    constexpr auto operator<=>(const date&) const = default;
};

inline constexpr date date::mindate{2447892};
inline constexpr date date::maxdate{2459214};

/// "YYYY-MM-DD", or "NULL".
std::ostream& operator<<(std::ostream& stream, const date& value);
/// Reads year, a separator ("-", "/" or "."), month, the separator, day. Fails the stream and gives null for anything
/// else and for days that never were.
std::istream& operator>>(std::istream& stream, date& value);

}  // namespace qve
