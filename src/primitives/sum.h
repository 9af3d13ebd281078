#pragma once

#include "primitives/aggregate_kernel.h"

namespace qve {

/// Adding up. Integers wrap. The sum that starts from null stays null in a group without values.
struct adding {
    static constexpr bool adds = true;
    template <class P>
    static constexpr P identity() {
        return P(0);
    }
    template <class P>
    [[gnu::always_inline]] static P merge(P left, P right) {
        return static_cast<P>(static_cast<wrapping<P>>(left) + static_cast<wrapping<P>>(right));
    }
    template <class P, class A>
    [[gnu::always_inline]] static P lift(A value) {
        return static_cast<P>(value);
    }
    static constexpr bool has_lanes = true;
    static constexpr wide_merge wide = wide_merge::add;
    template <class V>
    [[gnu::always_inline]] static void merge_lanes(V& parts, const V& more) {
        add_lanes(parts, more);
    }
    template <class V, class X>
    [[gnu::always_inline]] static void lift_lanes(V& lifted, const X& values) {
        lifted = __builtin_convertvector(values, V);
    }
    /// Durations add like the counts they hold.
    template <class T>
    using kernel_atom = equivalent<T>;
};

using sum_signatures = signatures<sig<bigint, tiny>, sig<bigint, short>, sig<bigint, int>, sig<bigint, bigint>,
                                  sig<bigint, uchr>, sig<bigint, usht>, sig<bigint, ulng>, sig<oid, oid>,
                                  sig<double, float>, sig<double, double>, sig<duration, duration>>;

}  // namespace qve
