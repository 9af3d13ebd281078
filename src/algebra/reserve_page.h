#pragma once

#include "types/output_column.h"

namespace qve {

class Column;

/// Makes room for `extent` rows from row 0 on in a column that holds a page of computed values, on temporary streams
/// where it has none yet, and returns where they go.
output_column reserve_page(Column& column, unsigned extent);

}  // namespace qve
