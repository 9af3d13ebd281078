#pragma once

#include <limits>

#include "primitives/aggregate_kernel.h"
#include "primitives/text_aggregate.h"
#include "primitives/value_order.h"

namespace qve {

/// The least value, or the greatest.
template <bool Greatest>
struct extreme {
    static constexpr bool starts_null = true;
    static constexpr text_pick pick = Greatest ? text_pick::greatest : text_pick::least;

    template <class P>
    static constexpr P identity() {
        using raw_type = typename datatraits<P>::raw;
        using limits = std::numeric_limits<raw_type>;
        if constexpr (limits::has_infinity) {
            return Greatest ? -limits::infinity() : limits::quiet_NaN();
        } else {
            return from_raw<P>(Greatest ? limits::min() : limits::max());
        }
    }
    template <class P>
    [[gnu::always_inline]] static P merge(P left, P right) {
        const bool take = Greatest ? value_less(raw(left), raw(right)) : value_less(raw(right), raw(left));
        return take ? right : left;
    }
    template <class P, class A>
    [[gnu::always_inline]] static P lift(A value) {
        return value;
    }
    static constexpr bool has_lanes = true;
    static constexpr wide_merge wide = Greatest ? wide_merge::greatest : wide_merge::least;
    template <class V>
    [[gnu::always_inline]] static void merge_lanes(V& parts, const V& more) {
        const V& less = Greatest ? parts : more;
        const V& greater = Greatest ? more : parts;
        parts = ((less < greater) | ((greater != greater) & (less == less))) ? more : parts;
    }
    template <class V, class X>
    [[gnu::always_inline]] static void lift_lanes(V& lifted, const X& values) {
        lifted = values;
    }
    template <class T>
    using kernel_atom = equivalent<T>;
};

template <class T>
using extreme_sig = sig<T, T>;
using extreme_signatures = for_each_atom<extreme_sig, plain_atoms>;
using extreme_text_signatures = for_each_atom<extreme_sig, usr_atoms>;

/// Registers the aggregate of Op over plain values and over text.
template <class Op>
class register_extreme : public registration {
public:
    explicit register_extreme(const wchar_t* name) {
        add(primitive::klassAggregate, name,
            kernel_span(kernel_table<aggregate_maker<Op>, extreme_signatures, modes2>));
        add(primitive::klassAggregate, name,
            kernel_span(kernel_table<text_aggregate_maker<Op::pick>, extreme_text_signatures, modes2>));
    }
};

}  // namespace qve
