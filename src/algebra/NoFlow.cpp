#include "algebra/NoFlow.h"

#include "storage/Column.h"

namespace qve {

NoFlow::NoFlow(RefCntPtr<DataFlow> source) : DataFlow(source, source->GetColumnNames()) {}

void NoFlow::Accept(OperatorVisitor& visitor) {
    m_source->Accept(visitor);
}

unsigned NoFlow::Next(unsigned pageSize) {
    m_selection = m_source->GetSelection();
    m_selectionCount = m_source->GetSelectionCount();
    return m_extent = pageSize;
}

}  // namespace qve
