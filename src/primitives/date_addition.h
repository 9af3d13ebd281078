#pragma once

#include "primitives/date_parts.h"

namespace qve {

// Moving by units of time. The count is any signed integer; what leaves the range of the type is null.

template <class T>
using add_date_sig = sig<date, date, T>;
template <class T>
using add_datetime_sig = sig<datetime, datetime, T>;
template <class T>
using add_duration_sig = sig<duration, duration, T>;

using add_month_signatures =
    joined<for_each_atom<add_date_sig, signed_atoms>, for_each_atom<add_datetime_sig, signed_atoms>>;
using add_day_signatures = joined<add_month_signatures, for_each_atom<add_duration_sig, signed_atoms>>;
using add_clock_signatures =
    joined<for_each_atom<add_datetime_sig, signed_atoms>, for_each_atom<add_duration_sig, signed_atoms>>;

/// `day` moved by months; a day beyond the end of the new month becomes its last.
constexpr date moved_months(unsigned day, long long months) {
    constexpr long long most = 12LL * 1000000;
    if (months < -most || months > most) return datatraits<date>::null;
    const calendar::civil_date c = civil(day);
    // Years without a year 0 do not count on; astronomical ones do.
    const long long month = (c.year + (c.year < 1)) * 12LL + c.month - 1 + months;
    const long long astronomical = (month - (month < 0 ? 11 : 0)) / 12;
    const int of_year = static_cast<int>(month - astronomical * 12) + 1;
    if (astronomical < -4712 || astronomical > 1000000) return datatraits<date>::null;
    const int year = static_cast<int>(astronomical - (astronomical < 1));
    const int length = calendar::month_length(year, of_year);
    const int result = calendar::days(year, of_year, c.day < length ? c.day : length);
    return result < 0 ? datatraits<date>::null : date{static_cast<unsigned>(result)};
}

/// Moving by Op::months months.
template <class Op>
struct month_addition {
    static constexpr const wchar_t* name = Op::name;
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    static R apply(A a, B b) {
        constexpr long long most = std::numeric_limits<int>::max();
        const long long wide = b;
        const long long count = wide > most ? most : wide < -most ? -most : wide;
        const date day = moved_months(day_number(a), count * Op::months);
        if constexpr (std::is_same_v<A, date>) {
            return day;
        } else {
            return is_null(day) ? datatraits<datetime>::null : datetime::at(day, a.ticks());
        }
    }
};

/// Moving by Op::ticks ticks; dates by the days in them.
template <class Op>
struct tick_addition {
    static constexpr const wchar_t* name = Op::name;
    static constexpr bool nulls_apart = true;
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    static constexpr bool vectorised_for = !std::is_same_v<A, duration>;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        constexpr long long most = std::numeric_limits<long long>::max() / Op::ticks;
        const long long count = b;
        const bool fits = count >= -most && count <= most;
        const duration shift = fits ? duration{count * Op::ticks} : datatraits<duration>::null;
        if constexpr (std::is_same_v<A, date> && Op::ticks == ticks_per_day && sizeof(B) <= sizeof(int)) {
            return moved(a, static_cast<int>(b));
        } else if constexpr (std::is_same_v<A, date>) {
            constexpr long long beyond = -(1LL << 62);  // every date
            return moved(a, fits ? count * (Op::ticks / ticks_per_day) : beyond);
        } else if constexpr (std::is_same_v<A, datetime>) {
            return moved(a, shift);
        } else {
            long long sum = 0;
            const bool overflow = __builtin_add_overflow(a.value, shift.value, &sum);
            return fits && !overflow ? duration{sum} : datatraits<duration>::null;
        }
    }
};

// The difference of two moments in a unit: the second minus the first, by the boundaries of the unit between them.

template <class A, class B>
using diff_sig = sig<int, A, B>;
using diff_day_signatures = for_each_pair<diff_sig, day_atoms>;
using diff_clock_signatures = joined<diff_day_signatures, signatures<sig<int, duration, duration>>>;

/// Op::of(day) numbers the units.
template <class Op>
struct day_difference {
    static constexpr const wchar_t* name = Op::name;
    static constexpr bool vectorised = true;
    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        return Op::of(day_number(b)) - Op::of(day_number(a));
    }
};

/// Units of Op::ticks ticks, counted from Op::origin ticks on. What does not fit "long" is null.
template <class Op>
struct tick_difference {
    static constexpr const wchar_t* name = Op::name;
    static constexpr bool nulls_apart = true;
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    // Whole days between dates need no 64-bit division.
    template <class A, class B>
    static constexpr bool in_days =
        std::is_same_v<A, date>&& std::is_same_v<B, date>&& Op::ticks == ticks_per_day&& Op::origin == 0;
    template <class R, class A, class B>
    static constexpr bool vectorised_for = in_days<A, B>;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        if constexpr (in_days<A, B>) {
            // In 32 bits: what does not fit has the wrong sign, and the lowest number is the null.
            const int days = static_cast<int>(b.value - a.value);
            return (days < 0) == (b.value < a.value) ? days : datatraits<int>::null;
        } else {
            const long long units = unit(count_ticks(b)) - unit(count_ticks(a));
            const bool fits = units > std::numeric_limits<int>::min() && units <= std::numeric_limits<int>::max();
            return fits ? static_cast<int>(units) : datatraits<int>::null;
        }
    }

private:
    static long long unit(long long ticks) {
        long long shifted = 0;
        if (__builtin_add_overflow(ticks, Op::origin, &shifted)) shifted = ticks;
        return shifted / Op::ticks - (shifted % Op::ticks < 0);
    }
};

}  // namespace qve
