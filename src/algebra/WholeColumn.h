#pragma once

#include <cstdint>

#include "os/BudgetedMemory.h"
#include "types/input_column.h"

namespace qve {

class Column;
class ProgressCallback;

/// The cells of a range of rows of a table's column as one vector, to be read in any order: the column's own memory
/// where that will do, else a copy of what is stored encoded or once for all rows.
class WholeColumn {
public:
    /// The rows `start` to `start` + `count` - 1. The column must not be sought while the view is used. `progress` may
    /// be null; when it says cancelled, the copying ends with CancelledException. Raises QVE_RangeError 40580 when the
    /// column is shorter.
    WholeColumn(Column& column, uint64_t start, uint64_t count, const ProgressCallback* progress);

    /// Lives as long as this object.
    const input_column& GetInput() const { return m_view; }

private:
    dense_vector<char> m_copy;
    input_column m_view;
};

}  // namespace qve
