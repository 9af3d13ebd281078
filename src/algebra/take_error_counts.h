#pragma once

#include <cstdint>

namespace qve {

class Column;

/// Gives a column what its source knows, at the end of its rows, of the values that it refused: `count-errors`,
/// `first-error` and `last-error`.
void TakeErrorCounts(const Column& source, Column& column);
/// Adds what a source knows whose rows come later in the column, from `firstRow` on.
void AddErrorCounts(const Column& source, uint64_t firstRow, Column& column);

}  // namespace qve
