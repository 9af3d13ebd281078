#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>

#include "types/date.h"
#include "types/duration.h"

namespace qve {

/// A moment: day number times ticks_per_day plus the ticks since midnight. A tick is 100 microseconds. Null is all
/// ones.
struct datetime {
    unsigned long long value;

    static constexpr datetime at(const date& day, unsigned long long ticks = 0) {
        return {day.value * static_cast<unsigned long long>(ticks_per_day) + ticks};
    }
    /// The present moment, in local time and in UTC.
    static datetime now();
    static datetime utc();

    constexpr date day() const { return {static_cast<unsigned>(value / ticks_per_day)}; }
    /// Ticks since midnight.
    constexpr unsigned ticks() const { return static_cast<unsigned>(value % ticks_per_day); }

    constexpr auto operator<=>(const datetime&) const = default;
};

/// The date, a blank, and the time of day as a duration: "YYYY-MM-DD hh:mm:ss", with ".ffff" for a fraction; or "NULL".
std::ostream& operator<<(std::ostream& stream, const datetime& value);
/// Reads a date, optionally followed by a blank or "T" and a time of day. Fails the stream and gives null for anything
/// else.
std::istream& operator>>(std::istream& stream, datetime& value);

}  // namespace qve
