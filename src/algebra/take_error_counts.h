#pragma once

namespace qve {

class Column;

/// Gives a column what its source knows, at the end of its rows, of the values that it refused: `count-errors`,
/// `first-error` and `last-error`.
void TakeErrorCounts(const Column& source, Column& column);

}  // namespace qve
