#pragma once

#include <bit>
#include <limits>
#include <string_view>
#include <type_traits>

#include "types/bit.h"
#include "types/date.h"
#include "types/datetime.h"
#include "types/duration.h"
#include "types/usr.h"

namespace qve {

/// The atom types by their registered names, where the language has none of its own. "long" is int, "double" is double.
using tiny = char;
using bigint = long long;
using uchr = unsigned char;
using usht = unsigned short;
using ulng = unsigned int;
using oid = unsigned long long;
static_assert(std::is_signed_v<char>, "the type \"tiny\" is a signed char");

/// What is known at compile time of an atom type T:
///   raw      the integer or floating-point type that holds the value
///   null     the in-band null; it is recognised bit for bit
///   name     the registered name, as in "bigint"
template <class T>
struct datatraits;

namespace detail {

template <class T, T Null>
struct integer_traits {
    using raw = T;
    static constexpr T null = Null;
};
template <class T>
struct lowest_is_null : integer_traits<T, std::numeric_limits<T>::min()> {};
template <class T>
struct highest_is_null : integer_traits<T, std::numeric_limits<T>::max()> {};
// A structure with the one member `value`.
template <class T, class Raw, Raw Null>
struct wrapped_traits {
    using raw = Raw;
    static constexpr T null{Null};
};

}  // namespace detail

template <>
struct datatraits<bit> : detail::wrapped_traits<bit, unsigned char, 128> {
    static constexpr std::wstring_view name = L"bit";
};
template <>
struct datatraits<char> : detail::lowest_is_null<char> {
    static constexpr std::wstring_view name = L"tiny";
};
template <>
struct datatraits<short> : detail::lowest_is_null<short> {
    static constexpr std::wstring_view name = L"short";
};
template <>
struct datatraits<int> : detail::lowest_is_null<int> {
    static constexpr std::wstring_view name = L"long";
};
template <>
struct datatraits<long long> : detail::lowest_is_null<long long> {
    static constexpr std::wstring_view name = L"bigint";
};
template <>
struct datatraits<unsigned char> : detail::highest_is_null<unsigned char> {
    static constexpr std::wstring_view name = L"uchr";
};
template <>
struct datatraits<unsigned short> : detail::highest_is_null<unsigned short> {
    static constexpr std::wstring_view name = L"usht";
};
template <>
struct datatraits<unsigned int> : detail::highest_is_null<unsigned int> {
    static constexpr std::wstring_view name = L"ulng";
};
template <>
struct datatraits<unsigned long long> : detail::highest_is_null<unsigned long long> {
    static constexpr std::wstring_view name = L"oid";
};
template <>
struct datatraits<float> {
    using raw = float;
    static constexpr unsigned null_bits = 0x7FC10000;
    static constexpr float null = std::bit_cast<float>(null_bits);
    static constexpr std::wstring_view name = L"float";
};
template <>
struct datatraits<double> {
    using raw = double;
    static constexpr unsigned long long null_bits = 0x7FF9000000000000;
    static constexpr double null = std::bit_cast<double>(null_bits);
    static constexpr std::wstring_view name = L"double";
};
template <>
struct datatraits<date> : detail::wrapped_traits<date, unsigned, ~0U> {
    static constexpr std::wstring_view name = L"date";
};
template <>
struct datatraits<datetime> : detail::wrapped_traits<datetime, unsigned long long, ~0ULL> {
    static constexpr std::wstring_view name = L"datetime";
};
template <>
struct datatraits<duration> : detail::wrapped_traits<duration, long long, std::numeric_limits<long long>::min()> {
    static constexpr std::wstring_view name = L"duration";
};
template <>
struct datatraits<usr1> : detail::wrapped_traits<usr1, unsigned char, 0xFF> {
    static constexpr std::wstring_view name = L"usr1";
};
template <>
struct datatraits<usr2> : detail::wrapped_traits<usr2, unsigned short, 0xFFFF> {
    static constexpr std::wstring_view name = L"usr2";
};
template <>
struct datatraits<usr4> : detail::wrapped_traits<usr4, unsigned int, ~0U> {
    static constexpr std::wstring_view name = L"usr4";
};
template <>
struct datatraits<usr8> : detail::wrapped_traits<usr8, unsigned long long, ~0ULL> {
    static constexpr std::wstring_view name = L"usr8";
};

/// The number inside an atom: the value itself, or the member of a structure.
template <class T>
constexpr typename datatraits<T>::raw raw(const T& x) {
    if constexpr (std::is_arithmetic_v<T>) {
        return x;
    } else {
        return x.value;
    }
}
/// The atom that holds a number.
template <class T>
constexpr T from_raw(typename datatraits<T>::raw x) {
    if constexpr (std::is_arithmetic_v<T>) {
        return x;
    } else {
        return T{x};
    }
}

/// True for the null of the type. Floating nulls are one bit pattern; any other NaN is an ordinary value.
template <class T>
constexpr bool is_null(const T& x) {
    if constexpr (std::is_floating_point_v<T>) {
        using bits = std::conditional_t<sizeof(T) == 4, unsigned, unsigned long long>;
        return std::bit_cast<bits>(x) == datatraits<T>::null_bits;
    } else {
        return x == datatraits<T>::null;
    }
}

}  // namespace qve
