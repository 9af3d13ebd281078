#include "algebra/WholeColumn.h"

#include <algorithm>
#include <cstring>

#include "algebra/OperatorProgressCallback.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// Rows that are copied between two looks at the cancelled flag.
constexpr uint64_t blockRows = 1u << 16;

}  // namespace

WholeColumn::WholeColumn(Column& column, uint64_t start, uint64_t count, const ProgressCallback* progress) {
    const unsigned width = column.GetTokenSize();
    if (count == 0) {
        m_view.width = width;
        m_view.heap = column.GetHeap();
        return;
    }
    const bool single = column.GetStorageName() == Column::storageVal;
    if (!single && !column.HasProperty(usrpropkey::encoding) && column.Seek(start, count) >= count) {
        m_view = column.GetInput();
        m_view.count = static_cast<unsigned>(count);
        return;
    }
    m_copy.resize(count * width);
    for (uint64_t row = 0; row < count;) {
        OperatorProgressCallback::Check(progress);
        const uint64_t wanted = single ? 1 : std::min<uint64_t>(blockRows, count - row);
        const uint64_t rows = std::min(column.Seek(single ? 0 : start + row, wanted), wanted);
        if (rows == 0) {
            throw QVE_RangeError(status::WholeColumn_Short, "WholeColumn: short column " + narrow(column.GetName()));
        }
        std::memcpy(m_copy.data() + row * width, column.GetInput().data, rows * width);
        row += rows;
    }
    m_view = column.GetInput();
    m_view.data = m_copy.data();
    m_view.count = static_cast<unsigned>(count);
}

}  // namespace qve
