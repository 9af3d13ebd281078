#include "algebra/RangeTable.h"

#include <algorithm>

namespace qve {

RangeTable::RangeTable(RefCntPtr<Table> table, uint64_t first, uint64_t count)
    : DelegatedTable(std::move(table)), m_first(first), m_most(count) {}

RangeTable::RangeTable(RefCntPtr<Table> table) : DelegatedTable(std::move(table)) {}

uint64_t RangeTable::GetStart() const {
    return m_delegate->GetStart() + m_first;
}

uint64_t RangeTable::GetCount() const {
    return m_count;
}

void RangeTable::SetRange(uint64_t first, uint64_t end) {
    m_first = first;
    m_count = end - first;
    m_built = true;
}

uint64_t RangeTable::Build(unsigned pageSize) {
    if (m_built) return m_count;
    const uint64_t rows = m_delegate->Build(pageSize);
    const uint64_t first = std::min(m_first, rows);
    SetRange(first, first + std::min(m_most, rows - first));
    return m_count;
}

}  // namespace qve
