#include "primitives/capacity.h"
#include "primitives/column_kernels.h"
#include "primitives/status.h"
#include "primitives/text_values.h"
#include "primitives/token_copier.h"
#include "primitives/tokens.h"

namespace qve {

template <bool Constant>
unsigned copy_text(unsigned n, output_column out, input_column a, unsigned const* sel) {
    n = rows_that_fit(n, out, out.width, sel);
    rows_that_fit(n, is_token_width(out.width) && is_token_width(a.width));
    if (n == 0) return 0;
    const token_view tokens(a, Constant);
    const token_writer writer(out);
    token_copier copy(a.heap, out.heap);
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        writer.put(i, copy(tokens[i]));
    }
    if (out.flags && !Constant && a.flags & column_flags::not_null && a.width <= out.width) {
        *out.flags |= column_flags::not_null;
    }
    return n;
}

template unsigned copy_text<false>(unsigned, output_column, input_column, unsigned const*);
template unsigned copy_text<true>(unsigned, output_column, input_column, unsigned const*);

unary_func map_usr_usr_col(unsigned long width) {
    if (!is_token_width(width)) throw QVE_LogicError(status::column_kernel_width, "map_usr_usr_col");
    return copy_text<false>;
}
unary_func map_usr_usr_val(unsigned long width) {
    if (!is_token_width(width)) throw QVE_LogicError(status::column_kernel_width, "map_usr_usr_val");
    return copy_text<true>;
}

}  // namespace qve
