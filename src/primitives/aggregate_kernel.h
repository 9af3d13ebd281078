#pragma once

#include <algorithm>
#include <cstdint>

#include "primitives/add_by_group.h"
#include "primitives/capacity.h"
#include "primitives/groups.h"
#include "primitives/kernel_table.h"
#include "primitives/null_lanes.h"
#include "primitives/vector_level.h"
#include "primitives/wide_lanes.h"

namespace qve {

// How an aggregate of one argument walks its vectors. What it computes is the operation Op, a monoid:
//
//   template <class P> static constexpr P identity()       what changes nothing when merged
//   template <class P> static P merge(P left, P right)     of two partial results; the order of merging is fixed, so
//   that
//                                                          every vector level gives the same floating-point sum
//   template <class P, class A> static P lift(A value)     the partial result of one value
//   starts_null                                            true when a group without a value is null, false when it is
//                                                          the identity
//
// The result R of a group is a partial result, or null.

template <class Op, class R, class View>
struct aggregate_kernel {
    using A = typename View::atom;
    static constexpr unsigned lanes = 8;
    /// Up to this many groups each row's group gets its own accumulator in one of several copies, so that rows of one
    /// group in a row do not wait for each other.
    static constexpr unsigned few_groups = 64;
    static constexpr unsigned copies = sums_of_group;

    /// Whether folding is to add one double to another.
    static constexpr bool adds_doubles = requires { Op::adds; }
    &&std::is_same_v<R, double>&& std::is_same_v<View, col<double>>;

    static constexpr bool has_lanes = std::is_same_v<View, col<A>> && has_null_lanes<Op, R, A>;

    struct partial {
        R value = Op::template identity<R>();
        bool seen = false;
    };

    template <bool Nulls>
    [[gnu::always_inline]] static R lifted(A x) {
        const R value = Op::template lift<R>(x);
        if constexpr (Nulls) return is_null(x) ? Op::template identity<R>() : value;
        return value;
    }

    /// All rows as one group.
    template <bool Nulls, vector_level Lanes = vector_level::scalar>
    [[gnu::always_inline]] static partial reduce(unsigned n, View a, unsigned const* sel) {
        R parts[lanes];
        unsigned_of<R> seen[lanes] = {};
        for (unsigned l = 0; l < lanes; ++l) parts[l] = Op::template identity<R>();
        unsigned k = 0;
        if constexpr (has_lanes && Lanes != vector_level::scalar) {
            k = n / lanes * lanes;
            if constexpr (Lanes == vector_level::avx512) {
                seen[0] = wide_lanes<Op, R, A>::merge(k, a.data, parts);
            } else {
                seen[0] = null_lanes<Op, R, A>::merge_avx2(k, a.data, parts);
            }
        }
        for (; k + lanes <= n; k += lanes) {
            for (unsigned l = 0; l < lanes; ++l) {
                const A x = a[sel ? sel[k + l] : k + l];
                parts[l] = Op::merge(parts[l], lifted<Nulls>(x));
                if constexpr (Nulls) seen[l] = static_cast<unsigned_of<R>>(seen[l] | !is_null(x));
            }
        }
        for (; k < n; ++k) {
            const A x = a[sel ? sel[k] : k];
            parts[0] = Op::merge(parts[0], lifted<Nulls>(x));
            if constexpr (Nulls) seen[0] = static_cast<unsigned_of<R>>(seen[0] | !is_null(x));
        }
        for (unsigned half = lanes / 2; half; half /= 2) {
            for (unsigned l = 0; l < half; ++l) {
                parts[l] = Op::merge(parts[l], parts[l + half]);
                seen[l] = static_cast<unsigned_of<R>>(seen[l] | seen[l + half]);
            }
        }
        return {parts[0], !Nulls || seen[0]};
    }
    static partial reduce_nulls(unsigned n, View a) { return reduce<true>(n, a, nullptr); }
    static partial reduce_whole(unsigned n, View a) { return reduce<false>(n, a, nullptr); }
    [[gnu::target("sse4.1")]] static partial reduce_nulls_sse41(unsigned n, View a) {
        return reduce<true>(n, a, nullptr);
    }
    [[gnu::target("avx2")]] static partial reduce_nulls_avx2(unsigned n, View a) {
        return reduce<true, vector_level::avx2>(n, a, nullptr);
    }
    static partial reduce_nulls_avx512(unsigned n, View a) { return reduce<true, vector_level::avx512>(n, a, nullptr); }
    [[gnu::target("avx2")]] static partial reduce_whole_avx2(unsigned n, View a) {
        return reduce<false>(n, a, nullptr);
    }

    static partial reduce_rows(unsigned n, View a, unsigned const* sel) {
        if (sel) return a.whole ? reduce<false>(n, a, sel) : reduce<true>(n, a, sel);
        const vector_level level = current_vector_level();
        if constexpr (has_lanes && has_wide_lanes<Op, R, A>()) {
            if (level == vector_level::avx512 && !a.whole) return reduce_nulls_avx512(n, a);
        }
        if (level >= vector_level::avx2) return a.whole ? reduce_whole_avx2(n, a) : reduce_nulls_avx2(n, a);
        if (a.whole) return reduce_whole(n, a);
        return level == vector_level::sse41 ? reduce_nulls_sse41(n, a) : reduce_nulls(n, a);
    }

    /// Folds a partial result into a group's accumulator.
    [[gnu::always_inline]] static R folded(R accumulator, R value, bool seen) {
        if constexpr (Op::starts_null) {
            const R sum = is_null(accumulator) ? value : Op::merge(accumulator, value);
            return seen ? sum : accumulator;
        } else {
            return Op::merge(accumulator, value);
        }
    }

    /// The accumulators that are null, of the first ones up to `highest`, which is below few_groups; bit g for group g.
    static uint64_t nulls_of(const R* accumulators, unsigned highest) {
        uint64_t nulls = 0;
        for (unsigned g = 0; g <= highest; ++g) nulls |= uint64_t{is_null(accumulators[g])} << g;
        return nulls;
    }
    /// The groups that rows are of, likewise.
    static uint64_t groups_of(unsigned n, unsigned const* groups, unsigned const* sel) {
        uint64_t seen = 0;
        for (unsigned k = 0; k < n; ++k) seen |= uint64_t{1} << groups[sel ? sel[k] : k];
        return seen;
    }

    using few_parts = R[copies][few_groups];

    /// The rows from `k` on into the copies. Returns the groups of values, where they are asked for.
    template <bool Nulls, bool Seen>
    static uint64_t fold_copies(unsigned k, unsigned n, few_parts& parts, View a, unsigned const* groups,
                                unsigned const* sel) {
        uint64_t seen = 0;
        const auto fold = [&](unsigned copy, unsigned k) [[gnu::always_inline]] {
            const unsigned i = sel ? sel[k] : k;
            const unsigned group = groups[i];
            const A x = a[i];
            R& part = parts[copy][group];
            part = Op::merge(part, lifted<Nulls>(x));
            if constexpr (Seen) seen |= uint64_t{!is_null(x)} << group;
        };
        for (; k + copies <= n; k += copies) {
            for (unsigned copy = 0; copy < copies; ++copy) fold(copy, k + copy);
        }
        for (; k < n; ++k) fold(0, k);
        return seen;
    }

    template <bool Nulls>
    static void fold_few(unsigned n, R* out, View a, unsigned const* groups, unsigned const* sel, unsigned highest) {
        few_parts parts;
        for (auto& copy : parts)
            std::fill_n(copy, std::max(highest + 1, most_added_groups), Op::template identity<R>());
        // Whether a group has a value matters only where its accumulator is null; without nulls a row is a value.
        const bool asks = Op::starts_null && nulls_of(out, highest) != 0;
        uint64_t seen = 0;
        unsigned k = 0;
        if constexpr (adds_doubles) {
            if (!sel && highest < most_added_groups) {
                k = Nulls ? add_nullable_by_group(n, parts[0], few_groups, a.data, groups, highest + 1, seen)
                          : add_by_group(n, parts[0], few_groups, a.data, groups, highest + 1);
            }
        }
        if (Op::starts_null && Nulls && asks) {
            seen |= fold_copies < Nulls, Op::starts_null && Nulls > (k, n, parts, a, groups, sel);
        } else {
            fold_copies<Nulls, false>(k, n, parts, a, groups, sel);
            seen = asks ? groups_of(n, groups, sel) : ~uint64_t{0};
        }
        for (unsigned g = 0; g <= highest; ++g) {
            for (unsigned half = copies / 2; half; half /= 2) {
                for (unsigned c = 0; c < half; ++c) parts[c][g] = Op::merge(parts[c][g], parts[c + half][g]);
            }
            out[g] = folded(out[g], parts[0][g], seen >> g & 1);
        }
    }

    template <bool Nulls>
    static void fold_many(unsigned n, R* out, View a, unsigned const* groups, unsigned const* sel) {
        for (unsigned k = 0; k < n; ++k) {
            const unsigned i = sel ? sel[k] : k;
            const A x = a[i];
            R& accumulator = out[groups[i]];
            accumulator = folded(accumulator, lifted<Nulls>(x), !Nulls || !is_null(x));
        }
    }

    template <bool ConstantGroup>
    static unsigned run(unsigned n, output_column out, input_column a, input_column groups, unsigned const* sel) {
        rows_that_fit(n, out.width == sizeof(R) && View::fits(a) && groups.width == sizeof(unsigned));
        if (n == 0) return 0;
        const View values(a);
        R* accumulators = out.values<R>();
        unsigned const* group = groups.values<unsigned>();
        if (ConstantGroup || groups.flags & column_flags::constant) {
            rows_that_fit(n, *group < out.limit);
            const partial part = reduce_rows(n, values, sel);
            accumulators[*group] = folded(accumulators[*group], part.value, part.seen);
        } else {
            const unsigned highest = highest_group(n, group, sel);
            rows_that_fit(n, highest < out.limit);
            if (highest < few_groups && n >= few_groups) {
                values.whole ? fold_few<false>(n, accumulators, values, group, sel, highest)
                             : fold_few<true>(n, accumulators, values, group, sel, highest);
            } else {
                values.whole ? fold_many<false>(n, accumulators, values, group, sel)
                             : fold_many<true>(n, accumulators, values, group, sel);
            }
        }
        if (!Op::starts_null && out.flags) *out.flags |= column_flags::not_null;
        return n;
    }
};

/// Enters the aggregates of Op; the last mode is that of the group index.
template <class Op>
struct aggregate_maker {
    template <class R, class A, template <class> class View, template <class> class Group>
    static constexpr auto entry(sig<R, A>, mode<View, Group>) {
        using kernel = aggregate_kernel<Op, kernel_atom<Op, R>, View<kernel_atom<Op, A>>>;
        return kernel_entry<binary_func>{&kernel::template run<is_val<Group<unsigned>>>,
                                         type_name<R>,
                                         {type_name<A>, L"ulng"},
                                         {View<A>::storage, Group<unsigned>::storage}};
    }
};

template <class Op, class Sigs>
class register_aggregate : public registration {
public:
    explicit register_aggregate(const wchar_t* name = Op::name)
        : registration(primitive::klassAggregate, name, kernel_span(kernel_table<aggregate_maker<Op>, Sigs, modes2>)) {}
};

}  // namespace qve
