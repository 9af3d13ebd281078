#pragma once

#include "types/bit.h"

namespace qve {

/// Writes the cells of the rows whose bit is true, and leaves the others: of `n` rows from row 0 on, in cells of
/// `width` bytes (1, 2, 4 or 8). `from` holds a cell a row, or with `single` one for all. A null bit is not true.
void blend_cells(unsigned n, unsigned width, void* out, const bit* hits, const void* from, bool single);

}  // namespace qve
