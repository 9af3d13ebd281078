#pragma once

#include "primitives/map_kernel.h"

namespace qve {

/// The hash of the values of a token column; with `fold` folded into what the output holds. Tokens without a heap hash
/// as the numbers they are.
unsigned hash_text(unsigned n, output_column out, input_column a, bool constant, unsigned const* sel, bool fold);

template <bool Fold>
struct hash_text_maker {
    template <bool Constant>
    static unsigned run(unsigned n, output_column out, input_column a, unsigned const* sel) {
        return hash_text(n, out, a, Constant, sel, Fold);
    }
    template <class R, class A, template <class> class View>
    static constexpr auto entry(sig<R, A>, mode<View>) {
        return kernel_entry<unary_func>{&run<is_val<View<A>>>, type_name<R>, {type_name<A>}, {View<A>::storage}};
    }
};

template <class T>
using hash_sig = sig<ulng, T>;

}  // namespace qve
