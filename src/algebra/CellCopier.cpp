#include "algebra/CellCopier.h"

#include <algorithm>

#include "algebra/adopt_cells.h"
#include "algebra/status.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

CellCopier::CellCopier(RefCntPtr<Column> from, RefCntPtr<Column> to) : m_from(std::move(from)), m_to(std::move(to)) {}

void CellCopier::Bind() {
    adopt_cells(*m_to, *m_from);
    m_copy = map_fetch_ulng_col_type_col(m_to->GetTokenSize());
}

void CellCopier::Append(unsigned count, const unsigned* rows) {
    if (m_to->IsCompressed() && m_from->GetDict() != m_to->GetDict()) {
        throw QVE_LogicError(status::CellCopier_Append, "CellCopier::Append: dictionary replaced");
    }
    if (m_from->GetStorageName() == Column::storageVal) {
        m_firstRow.resize(std::max<size_t>(m_firstRow.size(), count));
        rows = m_firstRow.data();
    }
    m_to->Extend(count);
    // What the page says about nulls is not true of the rows before.
    unsigned char flags = 0;
    output_column out = m_to->GetOutput();
    out.flags = &flags;
    m_copy(count, out, input_column{rows, nullptr, sizeof(unsigned), count, column_flags::not_null}, m_from->GetInput(),
           nullptr);
}

}  // namespace qve
