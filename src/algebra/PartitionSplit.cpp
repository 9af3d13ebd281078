#include "algebra/PartitionSplit.h"

#include <numeric>

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

PartitionSplit::PartitionSplit(RefCntPtr<DataFlow> source, std::wstring column)
    : DataFlow(source, source ? source->GetColumnNames() : ColumnNames()), m_column(std::move(column)) {
    if (!m_source) throw QVE_InvalidArgument(status::PartitionSplit_source, "PartitionSplit::m_source");
    if (!m_source->HasColumn(m_column)) {
        throw QVE_InvalidArgument(status::PartitionSplit_LookupPartition,
                                  "PartitionSplit::LookupPartition: " + narrow(m_column));
    }
}

PartitionSplit::~PartitionSplit() = default;

void PartitionSplit::Accept(OperatorVisitor& visitor) {
    visitor.VisitPartitionSplit(*this);
}

void PartitionSplit::ResetCursor() {
    DataFlow::ResetCursor();
    m_changes.Reset();
    m_rows.clear();
    m_position = 0;
    m_begun = m_atEnd = m_exhausted = false;
    SetPage(0);
}

// The next page of the source that has selected rows, with the places where its values change.
bool PartitionSplit::NextPage(unsigned pageSize) {
    if (m_exhausted) return false;
    unsigned count = 0;
    do {
        if (m_source->Next(pageSize) == 0) {
            m_exhausted = true;
            m_rows.clear();
            m_position = 0;
            return false;
        }
        count = m_source->GetSelectionCount();
    } while (count == 0);
    if (!m_key) {
        m_key = m_source->GetColumn(m_column);
        m_changing = m_key->GetStorageName() != Column::storageVal;
        if (m_changing && !m_changes.AddKey(*m_key)) {
            throw QVE_InvalidArgument(status::PartitionSplit_LookupPartition,
                                      "PartitionSplit::LookupPartition: cannot compare [" + narrow(m_column) + "]");
        }
    }
    m_rows.resize(count);
    if (const unsigned* selection = m_source->GetSelection()) {
        m_rows.assign(selection, selection + count);
    } else {
        std::iota(m_rows.begin(), m_rows.end(), 0u);
    }
    m_position = 0;
    if (m_changing) {
        const input_column cells = m_key->GetInput();
        m_marks = m_changes.Mark(count, m_source->GetExtent(), m_source->GetSelection(), {&cells, 1});
    }
    return true;
}

// The position of the first row behind `from` that begins a partition.
unsigned PartitionSplit::SeekPartition(unsigned from) const {
    const auto count = static_cast<unsigned>(m_rows.size());
    if (!m_changing) return count;
    unsigned position = from + 1;
    while (position < count && !m_marks[m_rows[position]]) ++position;
    return position;
}

unsigned PartitionSplit::Next(unsigned pageSize) {
    if (pageSize == 0 || m_atEnd) return SetPage(0);
    if (m_position == m_rows.size()) {
        if (!NextPage(pageSize)) {
            m_atEnd = true;
            return SetPage(0);
        }
        if (m_begun && m_changing && m_marks[m_rows.front()]) {
            m_atEnd = true;
            return SetPage(0);
        }
    } else if (m_begun) {
        // A page ends at the last row or in front of a new value.
        m_atEnd = true;
        return SetPage(0);
    }
    m_begun = true;
    const unsigned end = SeekPartition(m_position);
    m_selection = m_rows.data() + m_position;
    m_selectionCount = end - m_position;
    m_position = end;
    return m_extent = m_source->GetExtent();
}

bool PartitionSplit::Restart(unsigned pageSize) {
    while (!m_atEnd) Next(pageSize);
    SetPage(0);
    if (m_exhausted) return false;
    m_begun = m_atEnd = false;
    return true;
}

const usratom& PartitionSplit::LookupPartition() const {
    const unsigned row = m_changing ? m_rows[m_position] : 0;
    m_key->GetType()->get(m_key->GetInput(), row, m_value);
    return m_value;
}

}  // namespace qve
