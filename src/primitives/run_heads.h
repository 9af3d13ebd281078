#pragma once

namespace qve {

/// Lists the rows, of `n` from row 0 on, whose cell differs bit for bit from the one before, and row 0: where the runs
/// of equal cells begin. Cells are of `width` bytes (1, 2, 4 or 8). Gives up with a number above `most` when there are
/// more than that; `heads` has room for `most` + 32. 0 only for no rows.
unsigned run_heads(unsigned n, const void* cells, unsigned width, unsigned* heads, unsigned most);

/// Copies the cell at the head of each run to all rows of it. `out` has `n` cells.
void spread_heads(unsigned n, void* out, unsigned width, unsigned count, const unsigned* heads);

}  // namespace qve
