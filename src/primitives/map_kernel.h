#pragma once

#include <algorithm>
#include <concepts>

#include "primitives/capacity.h"
#include "primitives/kernel_table.h"
#include "primitives/registration.h"
#include "primitives/signatures.h"
#include "primitives/vector_level.h"
#include "primitives/views.h"

namespace qve {

// How a map walks its vectors, for any number of arguments. What one row means is the operation Op:
//
//   static constexpr const wchar_t* name         the operation's name
//   template <class R> static R apply(x...)      the result of one row
//   null_rule::strict (default)                  a null argument gives a null; apply may see nulls and must survive
//   them null_rule::own                               apply answers for nulls itself
//
// and, optionally, as static constexpr bool:
//   never_null                                   the result is never null, whatever the arguments
//   makes_nulls<R, atoms...>                     whole arguments may still give a null
//   nulls_apart                                  nulls are looked for in a pass of their own: beside the computation
//                                                they would keep it from being vectorised
//   vectorised                                   dense loops exist for the wider vector units too;
//                                                as vectorised_for<R, atoms...> for some
//   halves<R, atoms...>                          on whole arguments the units of 512 bits would be slower than those of
//                                                256: for products of halves the compiler takes its instruction for
//                                                whole ones there

enum class null_rule { strict, own };

namespace detail {

template <class Op>
constexpr null_rule rule_of() {
    if constexpr (requires { Op::nulls; }) return Op::nulls;
    return null_rule::strict;
}
template <class Op>
constexpr bool never_null() {
    if constexpr (requires { Op::never_null; }) return Op::never_null;
    return false;
}
template <class Op, class R, class... A>
constexpr bool makes_nulls() {
    if constexpr (requires { Op::template makes_nulls<R, A...>; }) return Op::template makes_nulls<R, A...>;
    return false;
}
template <class Op>
constexpr bool nulls_apart() {
    if constexpr (requires { Op::nulls_apart; }) return Op::nulls_apart;
    return false;
}
template <class Op, class R, class... A>
constexpr bool halves() {
    if constexpr (requires { Op::template halves<R, A...>; }) return Op::template halves<R, A...>;
    return false;
}
template <class Op, class R, class... A>
constexpr bool vectorised() {
    if constexpr (requires { Op::template vectorised_for<R, A...>; }) {
        return Op::template vectorised_for<R, A...>;
    } else if constexpr (requires { Op::vectorised; }) {
        return Op::vectorised;
    } else {
        return false;
    }
}
}  // namespace detail

/// The kernel of Op with result R over arguments read through Views.
template <class Op, class R, class... Views>
struct map_kernel {
    /// True when every result of whole arguments is known not to be null.
    static constexpr bool keeps_whole = !detail::makes_nulls<Op, R, typename Views::atom...>();
    static constexpr bool own_nulls = detail::rule_of<Op>() == null_rule::own;

    template <class... X>
    [[gnu::always_inline]] static bool any_null(X... x) {
        return (is_null(x) || ...);
    }
    /// The null of a signed integer is the least one: one comparison for two of them.
    template <std::signed_integral X>
    [[gnu::always_inline]] static bool any_null(X a, X b) {
        return is_null(std::min(a, b));
    }

    template <bool Nulls, class... X>
    [[gnu::always_inline]] static R row(X... x) {
        const R result = Op::template apply<R>(x...);
        if constexpr (Nulls && !own_nulls) {
            return any_null(x...) ? datatraits<R>::null : result;
        } else {
            return result;
        }
    }

    /// The dense loop. Returns 0 when no result is null; only asked where whole arguments may give nulls.
    /// ivdep and not restrict: an output may be the very vector of an input (rehash folds in place).
    template <bool Nulls>
    [[gnu::always_inline]] static unsigned dense(unsigned n, R* out, Views... views) {
        if constexpr (Nulls || keeps_whole) {
#pragma GCC ivdep
            for (unsigned i = 0; i < n; ++i) out[i] = row<Nulls>(views[i]...);
            return 0;
        } else if constexpr (detail::nulls_apart<Op>()) {
            constexpr unsigned block = 4096 / sizeof(R);
            unsigned_of<R> made = 0;
            for (unsigned base = 0; base < n; base += block) {
                const unsigned end = n - base < block ? n : base + block;
#pragma GCC ivdep
                for (unsigned i = base; i < end; ++i) out[i] = row<false>(views[i]...);
                for (unsigned i = base; i < end; ++i) made = static_cast<unsigned_of<R>>(made | is_null(out[i]));
            }
            return made != 0;
        } else {
            unsigned_of<R> made = 0;
#pragma GCC ivdep
            for (unsigned i = 0; i < n; ++i) {
                const R result = row<false>(views[i]...);
                made = static_cast<unsigned_of<R>>(made | is_null(result));
                out[i] = result;
            }
            return made != 0;
        }
    }

    /// The same with nulls, for the widest units, where the work of an iteration is so short that going around costs
    /// more.
    [[gnu::always_inline]] static unsigned dense_nulls_unrolled(unsigned n, R* out, Views... views) {
#pragma GCC ivdep
#pragma GCC unroll 4
        for (unsigned i = 0; i < n; ++i) out[i] = row<true>(views[i]...);
        return 0;
    }

    [[gnu::flatten]] static unsigned nulls_scalar(unsigned n, R* out, Views... views) {
        return dense<true>(n, out, views...);
    }
    [[gnu::flatten, gnu::target("sse4.1")]] static unsigned nulls_sse41(unsigned n, R* out, Views... views) {
        return dense<true>(n, out, views...);
    }
    [[gnu::flatten, gnu::target("avx2")]] static unsigned nulls_avx2(unsigned n, R* out, Views... views) {
        return dense<true>(n, out, views...);
    }
    [[gnu::flatten]] static unsigned whole_scalar(unsigned n, R* out, Views... views) {
        return dense<false>(n, out, views...);
    }
    [[gnu::flatten, gnu::target("avx2")]] static unsigned whole_avx2(unsigned n, R* out, Views... views) {
        return dense<false>(n, out, views...);
    }

    [[gnu::flatten, gnu::target("avx512f,avx512dq,avx512bw,avx512vl")]] static unsigned nulls_avx512(unsigned n, R* out,
                                                                                                     Views... views) {
        return dense_nulls_unrolled(n, out, views...);
    }
    [[gnu::flatten, gnu::target("avx512f,avx512dq,avx512bw,avx512vl")]] static unsigned whole_avx512(unsigned n, R* out,
                                                                                                     Views... views) {
        return dense<false>(n, out, views...);
    }

    /// All rows from 0 to n-1. Returns 0 when whole arguments gave no null.
    static unsigned dense_rows(bool whole, unsigned n, R* out, Views... views) {
        if constexpr (detail::vectorised<Op, R, typename Views::atom...>()) {
            const vector_level level = current_vector_level();
            if (level == vector_level::avx512) {
                if (!whole) return nulls_avx512(n, out, views...);
                if constexpr (!detail::halves<Op, R, typename Views::atom...>()) return whole_avx512(n, out, views...);
            }
            if (level >= vector_level::avx2) return whole ? whole_avx2(n, out, views...) : nulls_avx2(n, out, views...);
            if (level == vector_level::sse41 && !whole) return nulls_sse41(n, out, views...);
        }
        return whole ? whole_scalar(n, out, views...) : nulls_scalar(n, out, views...);
    }

    /// The rows of a selection, or all when it is null.
    static unsigned selected_rows(unsigned n, R* out, unsigned const* sel, Views... views) {
        unsigned made = 0;
#pragma GCC ivdep
        for (unsigned k = 0; k < n; ++k) {
            const unsigned i = sel ? sel[k] : k;
            const R result = row<true>(views[i]...);
            if constexpr (!keeps_whole) made |= is_null(result);
            out[i] = result;
        }
        return made;
    }

    template <class>
    using input = input_column;

    static unsigned run(unsigned n, output_column out, input<Views>... arguments, unsigned const* sel) {
        n = rows_that_fit(n, holds_rows(n, out, sizeof(R), sel) && (Views::fits(arguments) && ... && true));
        if (n == 0) return 0;
        return walk(n, out, sel, Views(arguments)...);
    }

    static unsigned walk(unsigned n, output_column out, unsigned const* sel, Views... views) {
        const bool whole = (views.whole && ... && true);
        unsigned made;
        if constexpr ((is_val<Views> && ...)) {
            made = selected_rows(n, out.values<R>(), sel, views...);  // evaluated once per query: one loop will do
        } else {
            made = sel ? selected_rows(n, out.values<R>(), sel, views...)
                       : dense_rows(whole, n, out.values<R>(), views...);
        }
        if (out.flags && ((whole && !made) || detail::never_null<Op>())) *out.flags |= column_flags::not_null;
        return n;
    }
};

/// Enters the maps of Op for each signature in each mode.
template <class Op>
struct map_maker {
    template <class R, class... A, template <class> class... View>
    static constexpr auto entry(sig<R, A...>, mode<View...>) {
        using kernel = map_kernel<Op, kernel_atom<Op, R>, View<kernel_atom<Op, A>>...>;
        return kernel_entry<decltype(&kernel::run)>{
            &kernel::run, type_name<R>, {type_name<A>...}, {View<A>::storage...}};
    }
};

/// Registers the maps of Op: the signatures in the modes given.
template <class Op, class Sigs, class Modes>
class register_maps : public registration {
public:
    explicit register_maps(const wchar_t* name = Op::name)
        : registration(primitive::klassMap, name, kernel_span(kernel_table<map_maker<Op>, Sigs, Modes>)) {}
};

}  // namespace qve
