#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/CellCopier.h"
#include "algebra/DataFlow.h"
#include "algebra/Exp.h"
#include "algebra/KeyChanges.h"

namespace qve {

/// Reduces a flow in which equal keys lie side by side to its groups, in the order of the flow. Holds no more than a
/// page of groups; a page is given out when it is full, and its last group is complete then.
class OrdAggr : public DataFlow {
public:
    /// The columns are the keys `keyNames` of `source`, one at least, and the `aggregates`, each an aggregate
    /// expression that carries the name of its column and needs nothing but its accumulator.
    OrdAggr(RefCntPtr<DataFlow> source, ColumnNames keyNames, std::vector<RefCntPtr<Exp>> aggregates);
    ~OrdAggr() override;

    /// Whether equal cells of these columns are equal keys, and unequal ones are not: with real numbers, which have two
    /// zeros, they are not.
    static bool CanCompare(const Namespace& source, const ColumnNames& keyNames);

    void Accept(OperatorVisitor& visitor) override;
    unsigned Next(unsigned pageSize) override;
    /// The row of the source that the next page's first group begins with.
    uint64_t GetCursor() const override;
    uint64_t GetPreviousCursor() const override;
    void ResetCursor() override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const ColumnNames& GetKeyNames() const { return m_keyNames; }
    const std::vector<RefCntPtr<Exp>>& GetAggregates() const { return m_aggregates; }

private:
    Exp* FindAggregate(const std::wstring& name) const;
    void Bind();
    void LoadCheckers();
    bool NextBlock(unsigned pageSize);
    void MarkHeads(unsigned extent);
    void ConsumeBlock(unsigned pageSize);
    void Fold(unsigned begin, unsigned end, unsigned firstGroup);
    const unsigned* GetBlockRows() const;

    const ColumnNames m_keyNames;
    const std::vector<RefCntPtr<Exp>> m_aggregates;
    std::vector<CellCopier> m_keys;
    KeyChanges m_changes;
    std::vector<RefCntPtr<Column>> m_checked;  // the keys that may change
    std::vector<input_column> m_checkedPages;
    const unsigned char* m_heads = nullptr;  // by row of the input page: a group begins here
    std::vector<unsigned> m_rowNumbers;      // 0, 1, 2, ...
    std::vector<unsigned> m_groupIds;        // by row of the input page
    std::vector<unsigned> m_starts;          // positions in the block's selection where the groups of a walk begin
    std::vector<unsigned> m_startRows;       // their rows
    unsigned m_blockStart = 0;               // next position in the selection of the input page
    unsigned m_blockCount = 0;               // positions in it
    unsigned m_groups = 0;                   // of the output page
    uint64_t m_previousCursor = 0;
    bool m_bound = false;
    bool m_ended = false;
};

}  // namespace qve
