#pragma once

#include "algebra/DataFlow.h"

namespace qve {

class PartitionSplit;

/// Reads a flow over a partitioned one to the end of its last partition: at the end of each it opens the next. The
/// flows between the two must be such that go on after an end, as those do that keep nothing beyond a page.
class PartitionRestart : public DataFlow {
public:
    /// Raises QVE_InvalidArgument 40346 when `source` is null, or there is no PartitionSplit among its sources.
    explicit PartitionRestart(RefCntPtr<DataFlow> source);
    ~PartitionRestart() override;

    void Accept(OperatorVisitor& visitor) override;
    unsigned Next(unsigned pageSize) override;

    /// The first split among a flow and its sources; null when there is none.
    static RefCntPtr<PartitionSplit> FindSplit(const RefCntPtr<DataFlow>& flow);

private:
    const RefCntPtr<PartitionSplit> m_split;
};

}  // namespace qve
