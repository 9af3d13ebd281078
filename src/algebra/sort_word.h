#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

#include "types/datatraits.h"

namespace qve {

/// A number by which values of T compare as a sort wants them: nulls first, then ascending; of the floating-point
/// values both zeros are the same, and what is not a number comes last.
template <class T>
constexpr uint64_t sort_word(T x) {
    using R = typename datatraits<T>::raw;
    if constexpr (std::is_floating_point_v<R>) {
        using U = std::conditional_t<sizeof(R) == 4, uint32_t, uint64_t>;
        constexpr U sign = U{1} << (sizeof(U) * 8 - 1);
        if (is_null(x)) return 0;
        if (x != x) return std::numeric_limits<U>::max();
        const U bits = std::bit_cast<U>(static_cast<R>(x + R{0}));
        return static_cast<U>(bits ^ (bits & sign ? static_cast<U>(~U{0}) : sign));
    } else if constexpr (std::is_same_v<T, bit>) {
        return static_cast<unsigned char>(raw(x) + 128);
    } else if constexpr (std::is_signed_v<R>) {
        using U = std::make_unsigned_t<R>;
        return static_cast<U>(static_cast<U>(raw(x)) ^ static_cast<U>(U{1} << (sizeof(U) * 8 - 1)));
    } else {
        return static_cast<R>(raw(x) + 1);
    }
}

template <class T>
struct atom_tag {
    using type = T;
};

/// Calls f(atom_tag<T>) for the atom type of this registered name; false when there is none.
template <class F>
bool with_atom(std::wstring_view name, F f) {
    const auto attempt = [&](auto tag) {
        if (name != datatraits<typename decltype(tag)::type>::name) return false;
        f(tag);
        return true;
    };
    return attempt(atom_tag<bit>()) || attempt(atom_tag<tiny>()) || attempt(atom_tag<short>()) ||
           attempt(atom_tag<int>()) || attempt(atom_tag<bigint>()) || attempt(atom_tag<uchr>()) ||
           attempt(atom_tag<usht>()) || attempt(atom_tag<ulng>()) || attempt(atom_tag<oid>()) ||
           attempt(atom_tag<float>()) || attempt(atom_tag<double>()) || attempt(atom_tag<date>()) ||
           attempt(atom_tag<datetime>()) || attempt(atom_tag<duration>());
}

}  // namespace qve
