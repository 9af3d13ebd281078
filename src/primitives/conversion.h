#pragma once

#include <limits>

#include "primitives/arithmetic.h"

namespace qve {

// What a value of one plain type is in another. Numbers keep their value, fractions are cut off, and what does not fit
// is null. Where moments meet numbers these count days: a date is its day number, a datetime days and fractions of days
// since day 0, a duration days. A datetime and a duration turn into each other by their counts.

namespace detail {

template <class T>
inline constexpr bool is_real = std::is_floating_point_v<T>;

// Every value of A that is not null is a value of R that is not null.
template <class R, class A>
constexpr bool conversion_keeps_whole() {
    if constexpr (std::is_same_v<R, A> || std::is_same_v<A, bit> || std::is_same_v<R, bit> || is_real<R>) {
        return true;
    } else if constexpr (std::is_integral_v<R> && std::is_integral_v<A>) {
        return sizeof(R) > sizeof(A) && (std::is_signed_v<R> || std::is_unsigned_v<A>);
    } else {
        return false;
    }
}

template <class R, class A>
constexpr R converted_number(A a) {
    if constexpr (std::is_same_v<R, A>) {
        return a;
    } else if constexpr (std::is_same_v<R, bit>) {
        return {static_cast<unsigned char>(a != 0)};
    } else if constexpr (is_real<R>) {
        return static_cast<R>(a);
    } else if constexpr (is_real<A>) {
        return truncated<R>(static_cast<double>(a));
    } else if constexpr (conversion_keeps_whole<R, A>()) {
        return static_cast<R>(a);
    } else {
        const R narrowed = static_cast<R>(a);
        const bool fits = static_cast<A>(narrowed) == a && (narrowed < R(0)) == (a < A(0));
        return fits ? narrowed : datatraits<R>::null;
    }
}

template <class R>
constexpr R from_days(long long days) {
    return converted_number<R>(days);
}
template <class R>
constexpr R from_ticks(long long ticks, long long whole_days) {
    if constexpr (is_real<R>) {
        return static_cast<R>(static_cast<double>(ticks) / static_cast<double>(ticks_per_day));
    } else {
        return converted_number<R>(whole_days);
    }
}

}  // namespace detail

/// False when a value of A that is not null may become a null of R.
template <class R, class A>
inline constexpr bool conversion_keeps_whole = detail::conversion_keeps_whole<R, A>();

/// `a` as an R. `a` is not null, or the result is not used.
template <class R, class A>
constexpr R converted(A a) {
    if constexpr (std::is_same_v<R, A>) {
        return a;
    } else if constexpr (std::is_same_v<A, bit>) {
        if constexpr (is_time<R>)
            return converted<R>(static_cast<int>(a.value));
        else
            return detail::converted_number<R>(a.value);
    } else if constexpr (std::is_same_v<A, date>) {
        if constexpr (std::is_same_v<R, datetime>) {
            return midnight(a);
        } else if constexpr (std::is_same_v<R, duration>) {
            return {static_cast<long long>(midnight(a).value)};
        } else {
            return detail::from_days<R>(a.value);
        }
    } else if constexpr (std::is_same_v<A, datetime>) {
        if constexpr (std::is_same_v<R, date>)
            return a.day();
        else if constexpr (std::is_same_v<R, duration>)
            return {static_cast<long long>(a.value)};
        else
            return detail::from_ticks<R>(static_cast<long long>(a.value),
                                         static_cast<long long>(a.value / ticks_per_day));
    } else if constexpr (std::is_same_v<A, duration>) {
        if constexpr (std::is_same_v<R, datetime>)
            return moved(datetime{0}, a);
        else
            return detail::from_ticks<R>(a.value, a.value / ticks_per_day);
    } else if constexpr (std::is_same_v<R, date>) {
        return moved(date{0}, detail::converted_number<bigint>(a));
    } else if constexpr (std::is_same_v<R, datetime>) {
        return moved(datetime{0}, days_in_ticks(a));
    } else if constexpr (std::is_same_v<R, duration>) {
        return days_in_ticks(a);
    } else {
        return detail::converted_number<R>(a);
    }
}

/// From which plain types there is a conversion to R.
template <class R>
using conversion_sources = std::conditional_t<
    std::is_same_v<R, date>, joined<atoms<bit>, number_atoms, atoms<date, datetime>>,
    std::conditional_t<std::is_same_v<R, datetime> || std::is_same_v<R, duration>,
                       joined<atoms<bit>, number_atoms, time_atoms>,
                       std::conditional_t<std::is_same_v<R, bit>, joined<atoms<bit>, number_atoms, index_atoms>,
                                          joined<atoms<bit>, number_atoms, index_atoms, time_atoms>>>>;

}  // namespace qve
