#include "primitives/key_check.h"

#include <algorithm>

#include "primitives/text_comparison.h"
#include "primitives/tokens.h"

namespace qve {

unsigned check_text_keys(unsigned n, output_column out, input_column key, bool constant, input_column table,
                         input_column groups, bool constant_group, unsigned const* sel, bool again) {
    n = rows_that_fit(n, out, 1, sel);
    rows_that_fit(n, is_token_width(key.width) && is_token_width(table.width) && groups.width == sizeof(unsigned));
    if (n == 0) return 0;
    const token_view keys(key, constant);
    const token_view stored(table, false);
    unsigned const* group = groups.values<unsigned>();
    const bool one_group = constant_group || groups.flags & column_flags::constant;
    unsigned char* differs = out.values<unsigned char>();
    constexpr unsigned block = 512;
    unsigned long long left[block];
    unsigned long long right[block];
    text_order orders[block];
    for (unsigned base = 0; base < n; base += block) {
        const unsigned rows = std::min(block, n - base);
        for (unsigned k = 0; k < rows; ++k) {
            const unsigned i = sel ? sel[base + k] : base + k;
            left[k] = keys[i];
            right[k] = stored[one_group ? *group : group[i]];
        }
        compare_text(rows, orders, {left, key.heap, sizeof left[0], rows, 0}, false,
                     {right, table.heap, sizeof right[0], rows, 0}, false, 0, nullptr, true);
        for (unsigned k = 0; k < rows; ++k) {
            const unsigned i = sel ? sel[base + k] : base + k;
            const unsigned char different = orders[k] != text_equal && orders[k] != both_null;
            differs[i] = again ? differs[i] | different : different;
        }
    }
    if (out.flags) *out.flags |= column_flags::not_null;
    return n;
}

}  // namespace qve
