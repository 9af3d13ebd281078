#pragma once

#include "primitives/map_kernel.h"

namespace qve {

/// A map that folds its argument into what the output holds: Op::apply(old, x). The output is the first vector of the
/// loop.
template <class Op, class R, class View>
struct folding_map {
    static unsigned run(unsigned n, output_column out, input_column a, unsigned const* sel) {
        n = rows_that_fit(n, out, sizeof(R), sel);
        rows_that_fit(n, View::fits(a));
        if (n == 0) return 0;
        const col<R> old(input_column{out.data, nullptr, sizeof(R), out.limit, 0});
        return map_kernel<Op, R, col<R>, View>::walk(n, out, sel, old, View(a));
    }
};

template <class Op>
struct folding_map_maker {
    template <class R, class A, template <class> class View>
    static constexpr auto entry(sig<R, A>, mode<View>) {
        using kernel = folding_map<Op, R, View<kernel_atom<Op, A>>>;
        return kernel_entry<unary_func>{&kernel::run, type_name<R>, {type_name<A>}, {View<A>::storage}};
    }
};

}  // namespace qve
