#pragma once

#include <bit>
#include <type_traits>

#include "types/datatraits.h"

namespace qve {

/// The 32-bit hash of a value of up to 32 bits, extended to 32 by its own sign.
constexpr unsigned hash_mix32(unsigned x) {
    x = ~x + (x << 15);
    x ^= x >> 12;
    x *= 5;
    x ^= x >> 4;
    x *= 2057;
    x ^= x >> 16;
    return x;
}

/// The 32-bit hash of a 64-bit value.
constexpr unsigned hash_mix64(unsigned long long x) {
    x = ~x + (x << 18);
    x ^= x >> 31;
    x *= 21;
    x ^= x >> 11;
    x *= 65;
    x ^= x >> 22;
    return static_cast<unsigned>(x);
}

/// The hash of an atom; floating-point values hash their bits. Types, kernels and groupings all use this one.
template <class T>
constexpr unsigned atom_hash(const T& value) {
    if constexpr (std::is_same_v<T, float>) {
        return hash_mix32(std::bit_cast<unsigned>(value));
    } else if constexpr (std::is_same_v<T, double>) {
        return hash_mix64(std::bit_cast<unsigned long long>(value));
    } else if constexpr (sizeof(T) <= 4) {
        return hash_mix32(static_cast<unsigned>(raw(value)));
    } else {
        return hash_mix64(static_cast<unsigned long long>(raw(value)));
    }
}

/// Folds the hash of a further value into an existing one, for keys of several columns.
constexpr unsigned hash_combine(unsigned hash, unsigned next) {
    return hash_mix64(next | static_cast<unsigned long long>(hash) << 32);
}

}  // namespace qve
