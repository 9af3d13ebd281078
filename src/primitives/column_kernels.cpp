#include "primitives/column_kernels.h"

#include "primitives/cast_kernel.h"
#include "primitives/extreme.h"
#include "primitives/run_marks.h"
#include "primitives/status.h"
#include "primitives/tokens.h"

namespace qve {
namespace {

// Calls pick.operator()<U>() with the unsigned type of a width.
template <class Pick>
auto by_width(unsigned long width, const char* name, Pick pick) {
    switch (width) {
        case 1:
            return pick.template operator()<uchr>();
        case 2:
            return pick.template operator()<usht>();
        case 4:
            return pick.template operator()<ulng>();
        case 8:
            return pick.template operator()<oid>();
        default:
            throw QVE_LogicError(status::column_kernel_width, name);
    }
}

template <class U>
unsigned scatter(unsigned n, output_column out, input_column a, input_column index, unsigned const* sel) {
    rows_that_fit(n, out.width == sizeof(U) && a.width == sizeof(U) && index.width == sizeof(unsigned));
    if (n == 0) return 0;
    unsigned const* places = index.values<unsigned>();
    rows_that_fit(n, highest_group(n, places, sel) < out.limit);
    const U* values = a.values<U>();
    U* results = out.values<U>();
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        results[places[i]] = values[i];
    }
    return n;
}

// A vector of unknown type is copied bit for bit; all ones is no special value then, and the flag is the source's.
template <class View>
unsigned copy_values(unsigned n, output_column out, input_column a, unsigned const* sel) {
    using T = typename View::atom;
    n = rows_that_fit(n, out, sizeof(T), sel);
    rows_that_fit(n, View::fits(a));
    if (n == 0) return 0;
    const View values(a);
    T* results = out.values<T>();
    if (sel) {
        for (unsigned k = 0; k < n; ++k) results[sel[k]] = values[sel[k]];
    } else {
#pragma GCC ivdep
        for (unsigned i = 0; i < n; ++i) results[i] = values[i];
    }
    if (out.flags && a.flags & column_flags::not_null) *out.flags |= column_flags::not_null;
    return n;
}

struct any_of_width {
    static constexpr bool starts_null = true;
    template <class P>
    static constexpr P identity() {
        return datatraits<P>::null;
    }
    template <class P>
    static P merge(P left, P right) {
        return is_null(left) ? right : left;
    }
    template <class P, class A>
    static P lift(A value) {
        return value;
    }
};

}  // namespace

unary_func map_type_type_col(unsigned long width) {
    return by_width(width, "map_type_type_col", []<class U>() -> unary_func { return copy_values<col<U>>; });
}
unary_func map_type_type_val(unsigned long width) {
    return by_width(width, "map_type_type_val", []<class U>() -> unary_func { return copy_values<val<U>>; });
}

unary_func map_idx_col_idx_col(unsigned long from, unsigned long to) {
    constexpr const char* name = "map_idx_col_idx_col";
    return by_width(from, name, [to]<class From>() {
        return by_width(to, name, []<class To>() -> unary_func { return map_kernel<cast_op, To, col<From>>::run; });
    });
}

binary_func map_any_type_col_ulng_col(unsigned long width) {
    return by_width(width, "map_any_type_col_ulng_col", []<class U>() -> binary_func { return scatter<U>; });
}

binary_func agg_any_type_col_uidx_col(unsigned long width) {
    return by_width(width, "agg_any_type_col_uidx_col", []<class U>() -> binary_func {
        return aggregate_kernel<any_of_width, U, col<U>>::template run<false>;
    });
}

binary_func agg_any_usr_col_uidx_col(unsigned long width) {
    if (!is_token_width(width)) throw QVE_LogicError(status::column_kernel_width, "agg_any_usr_col_uidx_col");
    return text_aggregate_maker<text_pick::any>::run<false, false>;
}

unary_func map_run_type_col(unsigned long width) {
    return by_width(width, "map_run_type_col", []<class U>() -> unary_func { return mark_runs<U, false>; });
}
unary_func map_rerun_type_col(unsigned long width) {
    return by_width(width, "map_rerun_type_col", []<class U>() -> unary_func { return mark_runs<U, true>; });
}

}  // namespace qve
