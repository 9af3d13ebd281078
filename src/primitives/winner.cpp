#include "primitives/winner.h"

#include "primitives/token_copier.h"
#include "primitives/tokens.h"

namespace qve {

unsigned choose_text(unsigned n, output_column out, input_column a, bool a_constant, input_column b, bool b_constant,
                     unsigned const* sel, bool greatest) {
    n = rows_that_fit(n, out, out.width, sel);
    rows_that_fit(n, is_token_width(out.width) && is_token_width(a.width) && is_token_width(b.width));
    if (n == 0) return 0;
    const token_view left(a, a_constant);
    const token_view right(b, b_constant);
    token_copier copy_left(a.heap, out.heap);
    token_copier copy_right(b.heap, out.heap);
    const token_writer writer(out);
    constexpr unsigned block = 1024;
    text_order orders[block];
    for (unsigned base = 0; base < n; base += block) {
        const unsigned rows = std::min(block, n - base);
        compare_text(rows, orders, a, a_constant, b, b_constant, base, sel ? sel + base : nullptr, false);
        for (unsigned k = 0; k < rows; ++k) {
            const unsigned i = sel ? sel[base + k] : base + k;
            if (orders[k] >= one_null) {
                writer.put(i, usrheap::null_token);
            } else {
                const bool take_right = greatest ? orders[k] == text_less : orders[k] == text_greater;
                writer.put(i, take_right ? copy_right(right[i]) : copy_left(left[i]));
            }
        }
    }
    return n;
}

}  // namespace qve
