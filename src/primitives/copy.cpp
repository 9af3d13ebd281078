#include "primitives/capacity.h"
#include "primitives/column_kernels.h"
#include "primitives/positions.h"
#include "primitives/registration.h"
#include "types/bit.h"

namespace qve {
namespace {

// A truth value is its own predicate: no comparison, only positions.
unsigned copy_col(unsigned n, output_column out, input_column a, unsigned const* sel) {
    n = rows_that_fit(n, out.width == sizeof(unsigned) && out.limit >= n && a.width == 1);
    const bit* hits = a.values<bit>();
    unsigned* positions = out.values<unsigned>();
    if (!sel) return positions_of(n, hits, 0, positions);
    unsigned count = 0;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel[k];
        positions[count] = i;
        count += hits[i].value & 1;
    }
    return count;
}

unsigned copy_val(unsigned n, output_column out, input_column a, unsigned const* sel) {
    n = rows_that_fit(n, out.width == sizeof(unsigned) && out.limit >= n && a.width == 1);
    if (n == 0 || !(a.values<bit>()->value & 1)) return 0;
    unsigned* positions = out.values<unsigned>();
    for (unsigned k = 0; k < n; ++k) positions[k] = sel ? sel[k] : k;
    return n;
}

constexpr kernel_entry<unary_func> entries[] = {
    {copy_col, L"ulng", {L"bit"}, {L"col"}},
    {copy_val, L"ulng", {L"bit"}, {L"val"}},
};

const registration registered(primitive::klassSelect, L"copy", std::span<const kernel_entry<unary_func>>(entries));

}  // namespace

unary_func sel_copy_bit_col() {
    return copy_col;
}
unary_func sel_copy_bit_val() {
    return copy_val;
}

void define_copy() {}

}  // namespace qve
