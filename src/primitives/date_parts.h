#pragma once

#include <algorithm>
#include <bit>

#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"
#include "types/calendar.h"

namespace qve {

// Days, and what a moment is made of. Weeks begin on Sunday, on which (day number + 2) is a multiple of 7.

/// The calendar ends here; later days, and the bits of nulls, count as this one, so that its arithmetic never
/// overflows.
inline constexpr unsigned last_day = 300000000;

[[gnu::always_inline]] inline constexpr unsigned day_number(date d) {
    return std::min(d.value, last_day);
}
/// Moments from here on, and the bits of nulls, count as this one.
inline constexpr unsigned long long last_moment = (last_day + 1ULL) * ticks_per_day - 1;

/// The whole days of a count of ticks up to last_moment, by floating-point arithmetic, as no vector unit divides 64-bit
/// integers. Exact: with the power of 2 in the ticks of a day gone the count has less than 52 bits, and two quotients
/// by what is left, 421875, are further apart than a double with 29 bits before the point can err.
[[gnu::always_inline]] inline constexpr unsigned whole_days(unsigned long long ticks) {
    constexpr unsigned long long two_to_52 = 0x4330000000000000;  // the bits of it as a double
    const double count = std::bit_cast<double>(two_to_52 | ticks >> 11) - 4503599627370496.0;
    return static_cast<unsigned>(static_cast<int>(count / static_cast<double>(ticks_per_day >> 11)));
}
static_assert(ticks_per_day % (1 << 11) == 0 && (last_moment >> 11) < 1ULL << 52);

[[gnu::always_inline]] inline constexpr unsigned day_number(datetime t) {
    return whole_days(std::min(t.value, last_moment));
}
[[gnu::always_inline]] inline constexpr calendar::civil_date civil(unsigned day) {
    return calendar::civil(static_cast<int>(day));
}

/// The first day of a year and of a month.
inline constexpr unsigned first_day(int year, int month) {
    return static_cast<unsigned>(calendar::days(year, month, 1));
}

/// The number of a week, counted from day 0 on.
inline constexpr unsigned week_number(unsigned day) {
    return (day + 2) / 7;
}

/// Ticks since midnight; of a duration the ticks beyond its whole days, with its sign.
inline constexpr unsigned clock_ticks(date) {
    return 0;
}
[[gnu::always_inline]] inline constexpr unsigned clock_ticks(datetime t) {
    const unsigned long long ticks = std::min(t.value, last_moment);
    return static_cast<unsigned>(ticks - static_cast<unsigned long long>(whole_days(ticks)) * ticks_per_day);
}
inline constexpr long long clock_ticks(duration d) {
    return d.value % ticks_per_day;
}

inline constexpr long long ticks_per_millisecond = ticks_per_second / 1000;

/// The ticks of a moment or duration since the count's 0.
inline constexpr long long count_ticks(date d) {
    return static_cast<long long>(d.value) * ticks_per_day;
}
inline constexpr long long count_ticks(datetime t) {
    return static_cast<long long>(t.value);
}
inline constexpr long long count_ticks(duration d) {
    return d.value;
}

template <class T>
using part_sig = sig<int, T>;
template <class T>
using truncated_day_sig = sig<date, T>;

using day_atoms = atoms<date, datetime>;

/// A part of a day: Op has `name` and `static int of(unsigned day)`.
template <class Op>
struct day_part {
    static constexpr const wchar_t* name = Op::name;
    static constexpr bool vectorised = true;
    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return Op::of(day_number(a));
    }
};
template <class Op>
using register_day_part = register_maps<day_part<Op>, for_each_atom<part_sig, day_atoms>, modes1>;

/// A part of the time of day: the units of Op::ticks, modulo Op::count.
template <class Op>
struct clock_part {
    static constexpr const wchar_t* name = Op::name;
    template <class R, class A>
    static constexpr bool vectorised_for = std::is_same_v<A, datetime>;
    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        using count = decltype(clock_ticks(a));
        return static_cast<int>(clock_ticks(a) / static_cast<count>(Op::ticks) % static_cast<count>(Op::count));
    }
};
template <class Op>
using register_clock_part = register_maps<clock_part<Op>, for_each_atom<part_sig, time_atoms>, modes1>;

/// The first day of a stretch of days: Op has `name` and `static unsigned of(unsigned day)`.
template <class Op>
struct day_truncation {
    static constexpr const wchar_t* name = Op::name;
    static constexpr bool vectorised = true;
    /// Day 0 is the second of its month: what begins before it is null.
    template <class R, class A>
    static constexpr bool makes_nulls = true;
    static constexpr bool nulls_apart = true;
    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return {Op::of(day_number(a))};
    }
};
template <class Op>
using register_day_truncation = register_maps<day_truncation<Op>, for_each_atom<truncated_day_sig, day_atoms>, modes1>;

}  // namespace qve
