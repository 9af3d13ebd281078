#pragma once

#include <type_traits>

namespace qve {

/// A NaN that is not null is above every number, so that the extreme of a group does not depend on the order of its
/// rows.
template <class T>
[[gnu::always_inline]] constexpr bool value_less(T x, T y) {
    if constexpr (std::is_floating_point_v<T>) {
        return (x < y) | ((y != y) & (x == x));
    } else {
        return x < y;
    }
}

}  // namespace qve
