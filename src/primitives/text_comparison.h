#pragma once

#include <algorithm>

#include "primitives/capacity.h"
#include "primitives/kernel_table.h"
#include "primitives/positions.h"
#include "types/bit.h"

namespace qve {

/// How two heap values compare.
enum text_order : signed char { text_less = -1, text_equal = 0, text_greater = 1, one_null = 64, both_null = 65 };

/// Compares `n` rows of two token columns, each perhaps a constant, in the collation of their types, or as numbers
/// where neither has a heap. Result k is of row sel[k], or of row base + k without a selection. With `equality` any
/// unequal pair may be given as text_greater.
void compare_text(unsigned n, text_order* orders, const input_column& a, bool a_constant, const input_column& b,
                  bool b_constant, unsigned base, unsigned const* sel, bool equality);

/// The map and the select of a comparison over tokens of any widths. Op has
///   static bit of_order(text_order)   the answer, nulls included
///   equality                          true when it only asks whether the two are equal
template <class Op, bool AConstant, bool BConstant>
struct text_kernel {
    static constexpr unsigned block = 1024;

    static unsigned map(unsigned n, output_column out, input_column a, input_column b, unsigned const* sel) {
        n = rows_that_fit(n, out, 1, sel);
        bit* results = out.values<bit>();
        unsigned char nulls = 0;
        text_order orders[block];
        for (unsigned base = 0; base < n; base += block) {
            const unsigned rows = std::min(block, n - base);
            compare_text(rows, orders, a, AConstant, b, BConstant, base, sel ? sel + base : nullptr, Op::equality);
            for (unsigned k = 0; k < rows; ++k) {
                const bit result = Op::of_order(orders[k]);
                nulls |= result.value;
                results[sel ? sel[base + k] : base + k] = result;
            }
        }
        if (out.flags && n && !(nulls & 128)) *out.flags |= column_flags::not_null;
        return n;
    }

    static unsigned select(unsigned n, output_column out, input_column a, input_column b, unsigned const* sel) {
        n = rows_that_fit(n, out.width == sizeof(unsigned) && out.limit >= n);
        unsigned* positions = out.values<unsigned>();
        unsigned count = 0;
        text_order orders[block];
        for (unsigned base = 0; base < n; base += block) {
            const unsigned rows = std::min(block, n - base);
            compare_text(rows, orders, a, AConstant, b, BConstant, base, sel ? sel + base : nullptr, Op::equality);
            for (unsigned k = 0; k < rows; ++k) {
                positions[count] = sel ? sel[base + k] : base + k;
                count += Op::of_order(orders[k]).value & 1;
            }
        }
        return count;
    }
};

template <class Op>
struct text_map_maker {
    template <class R, class A, class B, template <class> class VA, template <class> class VB>
    static constexpr auto entry(sig<R, A, B>, mode<VA, VB>) {
        using kernel = text_kernel<Op, is_val<VA<A>>, is_val<VB<B>>>;
        return kernel_entry<binary_func>{
            &kernel::map, L"bit", {type_name<A>, type_name<B>}, {VA<A>::storage, VB<B>::storage}};
    }
};
template <class Op>
struct text_select_maker {
    template <class R, class A, class B, template <class> class VA, template <class> class VB>
    static constexpr auto entry(sig<R, A, B>, mode<VA, VB>) {
        using kernel = text_kernel<Op, is_val<VA<A>>, is_val<VB<B>>>;
        return kernel_entry<binary_func>{
            &kernel::select, L"ulng", {type_name<A>, type_name<B>}, {VA<A>::storage, VB<B>::storage}};
    }
};

}  // namespace qve
