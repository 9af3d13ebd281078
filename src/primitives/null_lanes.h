#pragma once

#include <bit>
#include <cstring>
#include <type_traits>

#include "primitives/arithmetic.h"
#include "types/datatraits.h"

namespace qve {

/// Adds a vector of lanes to another; integers wrap.
template <class V>
[[gnu::always_inline]] inline void add_lanes(V& sums, const V& more) {
    using lane = std::remove_cvref_t<decltype(sums[0])>;
    if constexpr (std::is_floating_point_v<lane>) {
        sums += more;
    } else {
        typedef wrapping<lane> vector __attribute__((vector_size(sizeof(V))));
        sums = (V)((vector)sums + (vector)more);
    }
}

/// Whether null_lanes is there for an operation with result R over values A.
template <class Op, class R, class A>
inline constexpr bool has_null_lanes = std::is_arithmetic_v<R>&& std::is_arithmetic_v<A> && sizeof(A) >= 4 &&
                                       sizeof(A) <= sizeof(R) && requires {
    Op::has_lanes;
};

/// Merges the values of rows of which some are null, `rows_in_turn` at a time: what stands for a null changes nothing.
/// The compiler vectorises no such loop by itself. Row k is merged in lane k % rows_in_turn, so the result has the bits
/// that merging one row after the other in the same lanes gives.
///
/// For an operation that has, besides what aggregate_kernel asks for, over vectors of lanes
///
///   template <class V> static void merge_lanes(V& parts, const V& more)
///   template <class V, class X> static void lift_lanes(V& lifted, const X& values)
///
/// which take references, as how vectors are passed depends on the unit.
template <class Op, class R, class A>
struct null_lanes {
    static constexpr unsigned rows_in_turn = 8;

    /// Merges the rows from 0 to n-1, a multiple of rows_in_turn, into `parts`, one for each lane. Returns whether one
    /// is not null.
    [[gnu::target("avx2")]] static bool merge_avx2(unsigned n, const A* rows, R* parts) {
        return merge(n, rows, parts);
    }

private:
    template <class T, unsigned Count>
    struct lanes_of {
        typedef T type __attribute__((vector_size(Count * sizeof(T))));
    };

    [[gnu::always_inline]] static bool merge(unsigned n, const A* rows, R* parts) {
        constexpr unsigned width = 32 / sizeof(R);
        constexpr unsigned vectors = rows_in_turn / width;
        using results = typename lanes_of<R, width>::type;
        using values = typename lanes_of<A, width>::type;
        using value_bits = typename lanes_of<std::make_signed_t<unsigned_of<A>>, width>::type;
        using result_bits = typename lanes_of<std::make_signed_t<unsigned_of<R>>, width>::type;
        constexpr auto null_bits = std::bit_cast<std::make_signed_t<unsigned_of<A>>>(datatraits<A>::null);

        results merged[vectors];
        std::memcpy(merged, parts, sizeof merged);
        result_bits seen = {};
        const results nothing = results{} + Op::template identity<R>();
        for (unsigned k = 0; k < n; k += rows_in_turn) {
            for (unsigned v = 0; v < vectors; ++v) {
                values x;
                value_bits bits;
                std::memcpy(&x, rows + k + v * width, sizeof x);
                std::memcpy(&bits, rows + k + v * width, sizeof bits);
                // Compared as wide as the results are, so that the mask is of their width.
                const result_bits is_value = __builtin_convertvector(bits, result_bits) != null_bits;
                results lifted;
                Op::lift_lanes(lifted, x);
                lifted = is_value ? lifted : nothing;
                Op::merge_lanes(merged[v], lifted);
                seen |= is_value;
            }
        }
        std::memcpy(parts, merged, sizeof merged);
        bool any = false;
        for (unsigned l = 0; l < width; ++l) any |= seen[l] != 0;
        return any;
    }
};

}  // namespace qve
