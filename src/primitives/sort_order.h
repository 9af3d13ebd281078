#pragma once

#include <bit>

#include "primitives/signatures.h"

namespace qve {

// The order of sorts and merges. Every plain type has a one-to-one map to unsigned numbers of its width that keeps its
// order with nulls first: so one sort per width serves all types, and a comparison is that of two integers. Descending
// order is the mirrored number. Floating-point numbers order NaN last (those with a sign right behind the nulls), and
// -0 before 0.

enum class sort_sense { ascending, descending };

namespace detail {

// Moves `null` to 0 and everything below it up by one.
template <class U>
constexpr U null_first(U x, U null) {
    return x == null ? U(0) : static_cast<U>(x + (x < null));
}
template <class U>
constexpr U null_back(U x, U null) {
    return x == 0 ? null : static_cast<U>(x - (x <= null));
}

// Negative numbers order the other way round than their bits.
template <class U>
constexpr U real_rank(U bits) {
    constexpr U sign = U(1) << (8 * sizeof(U) - 1);
    return bits & sign ? static_cast<U>(~bits) : static_cast<U>(bits | sign);
}
template <class U>
constexpr U real_bits(U rank) {
    constexpr U sign = U(1) << (8 * sizeof(U) - 1);
    return rank & sign ? static_cast<U>(rank ^ sign) : static_cast<U>(~rank);
}

}  // namespace detail

/// The place of a value in the order, and back.
template <class T, sort_sense Sense>
struct sort_order {
    using rank = unsigned_of<T>;

    [[gnu::always_inline]] static constexpr rank ranked(T value) {
        const rank up = ascending(value);
        return Sense == sort_sense::ascending ? up : static_cast<rank>(~up);
    }
    [[gnu::always_inline]] static constexpr T value(rank place) {
        return ascending_value(Sense == sort_sense::ascending ? place : static_cast<rank>(~place));
    }

private:
    static constexpr rank sign = rank(1) << (8 * sizeof(rank) - 1);
    static constexpr bool is_real = std::is_floating_point_v<T>;
    // A truth value orders like a signed number: null, false, true.
    static constexpr bool lowest_is_null = std::is_signed_v<typename datatraits<T>::raw> || std::is_same_v<T, bit>;

    static constexpr rank ascending(T value) {
        if constexpr (is_real) {
            return detail::null_first(detail::real_rank(std::bit_cast<rank>(value)),
                                      detail::real_rank(rank(datatraits<T>::null_bits)));
        } else if constexpr (lowest_is_null) {
            return static_cast<rank>(static_cast<rank>(raw(value)) ^ sign);
        } else {
            return static_cast<rank>(static_cast<rank>(raw(value)) + 1);  // all ones wraps to 0
        }
    }
    static constexpr T ascending_value(rank place) {
        if constexpr (is_real) {
            return std::bit_cast<T>(
                detail::real_bits(detail::null_back(place, detail::real_rank(rank(datatraits<T>::null_bits)))));
        } else if constexpr (lowest_is_null) {
            return from_raw<T>(static_cast<typename datatraits<T>::raw>(static_cast<rank>(place ^ sign)));
        } else {
            return from_raw<T>(static_cast<rank>(place - 1));
        }
    }
};

}  // namespace qve
