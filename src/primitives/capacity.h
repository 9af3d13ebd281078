#pragma once

#include <cstdint>

#include "types/output_column.h"

namespace qve {

/// Returns `n` when `fits` is true; otherwise stops the program by an arithmetic trap. A kernel asked for more rows
/// than its output holds must end here and never run over. The volatile divisor keeps compilers from seeing that a
/// divisor of 0 is undefined; the empty instruction, from dropping a division whose result nobody takes.
inline unsigned rows_that_fit(unsigned n, bool fits) {
    volatile unsigned divisor = fits;
    const unsigned rows = n / divisor;
    asm volatile("" : : "r"(rows));
    return rows;
}

/// Whether an output holds `n` rows, or the rows that `sel` lists in ascending order, of `width` bytes each.
inline bool holds_rows(unsigned n, const output_column& out, uint64_t width, unsigned const* sel) {
    return out.width == width && out.limit >= n && (n == 0 || !sel || sel[n - 1] < out.limit);
}

/// The capacity stop of maps.
inline unsigned rows_that_fit(unsigned n, const output_column& out, uint64_t width, unsigned const* sel) {
    return rows_that_fit(n, holds_rows(n, out, width, sel));
}

}  // namespace qve
