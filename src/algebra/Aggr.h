#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "algebra/CellCopier.h"
#include "algebra/DataFlow.h"
#include "algebra/Exp.h"
#include "algebra/Grouping.h"
#include "algebra/RadixCluster.h"
#include "algebra/Table.h"
#include "os/BudgetedMemory.h"

namespace qve {

class GroupPartition;
class GroupParts;
class PartitionSplit;
class ProgressCallback;
class SpilledRows;

/// Reduces the rows of a flow to groups of equal keys. The groups are the rows of the table, in the order in which
/// their keys first appear; null keys form a group. Without keys there is one group, and none when there is no row.
class Aggr : public Table {
public:
    static constexpr unsigned noLimit = ~0u;

    /// The columns are the keys `keyNames` of `source` and the `aggregates`, each an aggregate expression that carries
    /// the name of its column. Reading stops after the page in which the number of groups passes `groupLimit`.
    /// `estimate` is the expected number of groups, 0 when unknown. Raises QVE_InvalidArgument for a null source.
    Aggr(RefCntPtr<DataFlow> source, ColumnNames keyNames, std::vector<RefCntPtr<Exp>> aggregates,
         unsigned groupLimit = noLimit, unsigned estimate = 0);
    ~Aggr() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Complete once the table is built. Raises QVE_OutOfRange 40014 for an unknown name.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    uint64_t GetStart() const override;
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    /// A new output column: for a key an empty one on temporary streams, for an aggregate the expression's
    /// accumulators.
    virtual RefCntPtr<Column> LoadColumn(const std::wstring& name) const;
    /// The description of an output column.
    virtual RefCntPtr<Column> LookupColumn(const std::wstring& name) const;

    /// Installs a grouping, or drops it when null. Done by the build itself; from outside only before it.
    void SetGrouping(RefCntPtr<Grouping> grouping);

    /// The name of the grouping that the build took; before it of the one that it would take.
    std::wstring GetGroupingName() const;

    const RefCntPtr<DataFlow>& GetSource() const { return m_source; }
    /// Where a cancel of the running build is posted. Any thread.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }
    const ColumnNames& GetKeyNames() const { return m_keyNames; }
    const std::vector<RefCntPtr<Exp>>& GetAggregates() const { return m_aggregates; }
    unsigned GetGroupLimit() const { return m_groupLimit; }
    unsigned GetEstimate() const { return m_estimate; }

protected:
    virtual void BuildPartitioned(unsigned pageSize);
    /// Drains the source. Raises 40017 when there is none.
    virtual void ProcessData(unsigned pageSize);
    /// Appends the keys of `count` rows of the page as new groups, with fresh accumulators.
    virtual void InsertRows(unsigned count, const unsigned* rows);
    virtual void InsertRow(unsigned row);

private:
    // Group numbers stay below what marks entries of the groupings.
    static constexpr unsigned mostGroups = ~0u - 2;

    unsigned NextPage(unsigned pageSize);
    void ProcessPage(unsigned count, unsigned extent, const unsigned* sel);
    void ProcessSpilled(SpilledRows& rows, unsigned level, unsigned pageSize);
    void MergeParts();
    bool CanSpill() const;
    bool HasPartialMeasures() const;
    unsigned FirstTableSize() const;
    bool WantsToSpill(unsigned misses, unsigned count);
    void Spill(unsigned misses, unsigned count, const unsigned* sel, input_column hashes);
    ColumnNames GetInputNames() const;

    void BindKeys();
    std::vector<std::wstring> SeparatingKeys() const;
    RefCntPtr<Grouping> ChooseGrouping() const;
    RefCntPtr<Grouping> MakeGrouping(GroupingIdType strategy, const std::vector<std::wstring>& keys) const;
    void ReplaceByHash();
    input_column AssignGroups(unsigned count, unsigned extent, const unsigned* sel);
    void Accumulate(unsigned count, input_column groups, const unsigned* sel);
    void FoldPage(unsigned count, input_column groups, const unsigned* sel);
    Exp* FindAggregate(const std::wstring& name) const;

    const RefCntPtr<DataFlow> m_source;
    const ColumnNames m_keyNames;
    const std::vector<RefCntPtr<Exp>> m_aggregates;
    const unsigned m_groupLimit;
    const unsigned m_estimate;
    mutable ColumnMap m_columns;
    mutable ColumnMap m_descriptions;
    RefCntPtr<Grouping> m_grouping;
    RefCntPtr<Grouping::Context> m_context;
    RefCntPtr<Column> m_groupIds;
    const std::unique_ptr<GroupPartition> m_partition;
    RadixCluster m_cluster;
    std::vector<CellCopier> m_keys;
    std::vector<unsigned> m_missList;
    std::vector<unsigned> m_insertList;
    const RefCntPtr<ProgressCallback> m_progress;
    RefCntPtr<PartitionSplit> m_restarted;   // the source, where its partitions are to be read as one flow
    std::unique_ptr<SpilledRows> m_spilled;  // rows of groups that are not among those at work
    std::unique_ptr<GroupParts> m_parts;     // once there were any
    unsigned m_spillLevel = 0;
    unsigned m_nextSpillCheck = 0;
    bool m_pageSpilled = false;  // rows of the page were set aside, m_hits are left
    std::vector<unsigned> m_hits;
    const uint64_t* m_sequence = nullptr;   // of the page's rows, when they had been set aside
    budgeted_vector<uint64_t> m_firstSeen;  // of the groups at work, likewise
    uint64_t m_nextSequence = 0;
    std::wstring m_groupingName;
    unsigned m_groupCount = 0;
    bool m_built = false;
};

}  // namespace qve
