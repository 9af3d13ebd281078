#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>

namespace qve {

/// Units of datetime and duration.
inline constexpr long long ticks_per_second = 10000;
inline constexpr long long ticks_per_minute = 60 * ticks_per_second;
inline constexpr long long ticks_per_hour = 60 * ticks_per_minute;
inline constexpr long long ticks_per_day = 24 * ticks_per_hour;

/// A signed count of ticks of 100 microseconds. Null is the most negative value.
struct duration {
    long long value;

    /// Each part counts by its absolute value; the sign is that of `ticks`.
    static constexpr duration hmsduration(long long days, long long hours, long long minutes, long long seconds,
                                          long long ticks) {
        const auto magnitude = [](long long x) { return x < 0 ? 0ULL - static_cast<unsigned long long>(x) : x; };
        const unsigned long long sum = magnitude(days) * ticks_per_day + magnitude(hours) * ticks_per_hour +
                                       magnitude(minutes) * ticks_per_minute + magnitude(seconds) * ticks_per_second +
                                       magnitude(ticks);
        return {static_cast<long long>(ticks < 0 ? 0ULL - sum : sum)};
    }

    constexpr auto operator<=>(const duration&) const = default;
};

/// "[-][days:]hh:mm:ss[.ffff]", days only when there are any, or "NULL".
std::ostream& operator<<(std::ostream& stream, const duration& value);
/// Reads an optional "-", one to four numbers separated by ":" (seconds; minutes and seconds; hours first; days first),
/// and an optional fraction. Fails the stream and gives null for anything else.
std::istream& operator>>(std::istream& stream, duration& value);

}  // namespace qve
