#pragma once

#include <limits>
#include <type_traits>

#include "primitives/signatures.h"

namespace qve {

// What the arithmetic of several operations has in common: which result two numbers have, and how moments move.

/// A number that counts nothing in particular.
template <class T>
inline constexpr bool is_plain_number = std::is_arithmetic_v<T>;
template <class T>
inline constexpr bool is_time = std::is_same_v<T, date> || std::is_same_v<T, datetime> || std::is_same_v<T, duration>;

namespace detail {

template <class A, class B>
constexpr auto sum_of() {
    if constexpr (std::is_same_v<A, double> || std::is_same_v<B, double>) {
        return double();
    } else if constexpr (std::is_same_v<A, float> || std::is_same_v<B, float>) {
        return float();
    } else if constexpr (sizeof(A) + sizeof(B) >= 8) {  // two "long", or one "bigint"
        return bigint();
    } else if constexpr (sizeof(A) + sizeof(B) <= 3) {
        return short();
    } else {
        return int();
    }
}

template <class A, class B>
constexpr auto product_of() {
    using sum = decltype(sum_of<A, B>());
    if constexpr (std::is_floating_point_v<sum>) {
        return sum();
    } else if constexpr (sizeof(A) + sizeof(B) <= 3) {
        return int();
    } else {
        return bigint();
    }
}

}  // namespace detail

/// The type of the sum or difference of two numbers, and of their product.
template <class A, class B>
using sum_type = decltype(detail::sum_of<A, B>());
template <class A, class B>
using product_type = decltype(detail::product_of<A, B>());

/// The signature of a sum, of a product, and of operations that stay in one type.
template <class A, class B>
using sum_sig = sig<sum_type<A, B>, A, B>;
template <class A, class B>
using product_sig = sig<product_type<A, B>, A, B>;
template <class T>
using same1_sig = sig<T, T>;
template <class T>
using same2_sig = sig<T, T, T>;

/// Sums and differences of integers that are not null lie within these; where the result is no wider than an argument
/// they may wrap, and then also hit its null.
template <class R, class A, class B>
inline constexpr bool sum_may_wrap = std::is_integral_v<R> && (sizeof(R) == sizeof(A) || sizeof(R) == sizeof(B));

/// One past the last day number: beyond it a date would not fit 32 signed bits.
inline constexpr unsigned long long day_limit = 1ULL << 31;
inline constexpr unsigned long long moment_limit = day_limit * static_cast<unsigned long long>(ticks_per_day);

/// The whole part of `x`, or null where R does not hold it.
template <class R>
constexpr R truncated(double x) {
    using raw_type = typename datatraits<R>::raw;
    constexpr double low = static_cast<double>(std::numeric_limits<raw_type>::min());
    constexpr double high = sizeof(R) == 8 ? static_cast<double>(1ULL << 63) * (std::is_signed_v<raw_type> ? 1 : 2)
                                           : static_cast<double>(std::numeric_limits<raw_type>::max()) + 1;
    // For signed types the lowest value is the null and needs no exception; unsigned ones take -0.9 for 0.
    const bool fits = std::is_signed_v<raw_type> ? x >= low && x < high : x > -1.0 && x < high;
    return fits ? from_raw<R>(static_cast<raw_type>(fits ? x : 0.0)) : datatraits<R>::null;
}

/// `x` ticks, to the nearest; null where they do not fit.
constexpr duration rounded_ticks(double x) {
    return truncated<duration>(x < 0 ? x - 0.5 : x + 0.5);
}

/// A number of days in ticks; null where it does not fit.
template <class T>
constexpr duration days_in_ticks(T days) {
    if constexpr (std::is_floating_point_v<T>) {
        return rounded_ticks(static_cast<double>(days) * static_cast<double>(ticks_per_day));
    } else {
        constexpr long long limit = std::numeric_limits<long long>::max() / ticks_per_day;
        const long long wide = days;
        const bool fits = wide >= -limit && wide <= limit;
        return fits ? duration{wide * ticks_per_day} : datatraits<duration>::null;
    }
}

/// `t` moved by `shift`; null when that is null or leaves the range of datetime.
constexpr datetime moved(datetime t, duration shift) {
    const unsigned long long sum = t.value + static_cast<unsigned long long>(shift.value);
    return sum < moment_limit && !is_null(shift) ? datetime{sum} : datatraits<datetime>::null;
}

/// `d` moved by days; null outside the range of date.
constexpr date moved(date d, long long days) {
    const unsigned long long sum = d.value + static_cast<unsigned long long>(days);
    return sum < day_limit ? date{static_cast<unsigned>(sum)} : datatraits<date>::null;
}

/// The same in 32 bits, twice as many to a vector.
constexpr date moved(date d, int days) {
    const unsigned sum = d.value + static_cast<unsigned>(days);
    const bool wrapped = (sum < d.value) != (days < 0);
    return sum < day_limit && !wrapped ? date{sum} : datatraits<date>::null;
}

/// The opposite shift; null stays null.
constexpr duration reversed(duration d) {
    return {static_cast<long long>(0 - static_cast<unsigned long long>(d.value))};
}

/// The start of a day; null for null and beyond the range of datetime.
constexpr datetime midnight(date d) {
    return d.value < day_limit ? datetime::at(d) : datatraits<datetime>::null;
}

}  // namespace qve
