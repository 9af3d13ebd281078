#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "algebra/FlowTable.h"

namespace qve {

/// The first rows of a flow in sorted order, without keeping the flow: a bounded set of candidates, whose worst row is
/// the cut-off that later pages must beat.
class TopN : public FlowTable {
public:
    /// The best `limit` rows of `source` by `specs`, sorted; with no specs the first `limit` rows as they come.
    TopN(RefCntPtr<DataFlow> source, std::vector<SortSpec> specs, uint64_t limit);
    ~TopN() override;

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    const std::vector<SortSpec>& GetSpecs() const { return m_specs; }
    uint64_t GetLimit() const { return m_limit; }

private:
    const std::vector<SortSpec> m_specs;
    const uint64_t m_limit;
    mutable ColumnMap m_columns;
    mutable ColumnMap m_descriptions;
    uint64_t m_count = 0;
    bool m_built = false;
};

}  // namespace qve
