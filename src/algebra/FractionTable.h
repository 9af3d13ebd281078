#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/RangeTable.h"

namespace qve {

/// One of several shares of a table: consecutive rows, about as many as in each other share. The shares of all indexes
/// are all rows, each once. Rows that have equal values in the cluster columns and lie side by side fall into one
/// share.
class FractionTable : public RangeTable {
public:
    /// Share `index`, counted from 0, of `count`. `clusters` are columns of `table` by which its rows lie together;
    /// none cuts anywhere. Raises QVE_InvalidArgument 40186 unless `index` is below `count`.
    FractionTable(RefCntPtr<Table> table, unsigned index, unsigned count, std::vector<std::wstring> clusters = {});

    void Accept(OperatorVisitor& visitor) override;
    /// Raises QVE_RuntimeError 40187 for a cluster column whose values cannot be compared.
    uint64_t Build(unsigned pageSize) override;

    unsigned GetFraction() const { return m_index; }
    unsigned GetFractionCount() const { return m_shares; }
    const std::vector<std::wstring>& GetClusters() const { return m_clusters; }

private:
    uint64_t ClusterCursor(uint64_t row, uint64_t rows) const;

    const unsigned m_index;
    const unsigned m_shares;
    const std::vector<std::wstring> m_clusters;
};

}  // namespace qve
