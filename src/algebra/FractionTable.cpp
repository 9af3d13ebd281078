#include "algebra/FractionTable.h"

#include <algorithm>

#include "algebra/KeyChanges.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

FractionTable::FractionTable(RefCntPtr<Table> table, unsigned index, unsigned count, std::vector<std::wstring> clusters)
    : RangeTable(std::move(table)), m_index(index), m_shares(count), m_clusters(std::move(clusters)) {
    if (m_index >= m_shares) {
        throw QVE_InvalidArgument(status::FractionTable_fraction,
                                  "FractionTable: no share " + std::to_string(index) + " of " + std::to_string(count));
    }
}

void FractionTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitFractionTable(*this);
}

// The first row from `row` on that differs from the row before it in a cluster column.
uint64_t FractionTable::ClusterCursor(uint64_t row, uint64_t rows) const {
    constexpr uint64_t page = 1024;
    if (m_clusters.empty() || row == 0 || row >= rows) return row;
    KeyChanges changes;
    std::vector<RefCntPtr<Column>> columns;
    for (const std::wstring& name : m_clusters) {
        columns.push_back(m_delegate->GetColumn(name));
        if (!changes.AddKey(*columns.back())) {
            throw QVE_RuntimeError(status::FractionTable_clusters,
                                   "FractionTable::ClusterCursor: cannot compare [" + narrow(name) + "]");
        }
    }
    std::vector<input_column> cells(columns.size());
    uint64_t at = row - 1;
    while (at < rows) {
        uint64_t extent = std::min(page, rows - at);
        for (const auto& column : columns) {
            extent = std::min(extent, column->Seek(m_delegate->GetStart() + at, extent));
        }
        for (size_t i = 0; i < columns.size(); ++i) cells[i] = columns[i]->GetInput();
        const unsigned char* const marks =
            changes.Mark(static_cast<unsigned>(extent), static_cast<unsigned>(extent), nullptr, cells);
        // The row before the first is a mark of its own.
        for (uint64_t i = at + 1 == row ? 1 : 0; i < extent; ++i) {
            if (marks[i]) return at + i;
        }
        at += extent;
    }
    return rows;
}

uint64_t FractionTable::Build(unsigned pageSize) {
    if (IsBuilt()) return GetCount();
    for (const std::wstring& name : m_clusters) m_delegate->GetColumn(name);
    const uint64_t rows = m_delegate->Build(pageSize);
    const auto boundary = [&](uint64_t share) {
        const uint64_t equal = rows / m_shares * share + rows % m_shares * share / m_shares;
        return ClusterCursor(equal, rows);
    };
    const uint64_t first = boundary(m_index);
    SetRange(first, boundary(uint64_t{m_index} + 1));
    return GetCount();
}

}  // namespace qve
