#include "primitives/run_marks.h"

#include <algorithm>

#include "primitives/text_comparison.h"
#include "primitives/tokens.h"

namespace qve {

unsigned mark_text_runs(unsigned n, output_column out, input_column a, unsigned const* sel, bool again) {
    n = rows_that_fit(n, out, 1, sel);
    rows_that_fit(n, is_token_width(a.width));
    const token_view tokens(a, false);
    unsigned char* marks = out.values<unsigned char>();
    constexpr unsigned block = 512;
    unsigned long long gathered[block + 1];
    text_order orders[block];
    for (unsigned base = 1; base < n; base += block) {
        const unsigned rows = std::min(block, n - base);
        for (unsigned k = 0; k <= rows; ++k) gathered[k] = tokens[sel ? sel[base + k - 1] : base + k - 1];
        compare_text(rows, orders, {gathered, a.heap, sizeof gathered[0], rows, 0}, false,
                     {gathered + 1, a.heap, sizeof gathered[0], rows, 0}, false, 0, nullptr, true);
        for (unsigned k = 0; k < rows; ++k) {
            unsigned char& mark = marks[sel ? sel[base + k] : base + k];
            const unsigned char differs = orders[k] != text_equal && orders[k] != both_null;
            mark = again ? mark | differs : differs;
        }
    }
    return n;
}

}  // namespace qve
