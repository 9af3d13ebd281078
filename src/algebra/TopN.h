#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/FlowTable.h"
#include "system/ProgressCallback.h"

namespace qve {

/// The first rows of a flow in sorted order, without keeping the flow: a bounded set of candidates, whose worst row is
/// the cut-off that later pages must beat. Of a page that holds nothing better only the keys are read.
class TopN : public FlowTable {
public:
    /// The best `limit` rows of `source` by `specs`, sorted; with no specs the first `limit` rows as they come. Raises
    /// 40181 for a null source.
    TopN(RefCntPtr<DataFlow> source, std::vector<SortSpec> specs, uint64_t limit);
    ~TopN() override;

    void Accept(OperatorVisitor& visitor) override;
    /// Complete once the table is built. Raises 40571.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    /// Raises 40570.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    const std::vector<SortSpec>& GetSpecs() const { return m_specs; }
    uint64_t GetLimit() const { return m_limit; }
    /// Where a cancel of the running sort is posted. Any thread.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    const std::vector<SortSpec> m_specs;
    const uint64_t m_limit;
    const RefCntPtr<ProgressCallback> m_progress;
    mutable ColumnMap m_columns;
    mutable ColumnMap m_descriptions;
    uint64_t m_count = 0;
    bool m_built = false;
};

}  // namespace qve
