#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "algebra/Table.h"
#include "system/ProgressCallback.h"

namespace qve {

class TableSorter;

/// A table in sorted order. Only columns that are asked for are moved.
class Order : public Table {
public:
    static constexpr uint64_t noLimit = ~uint64_t{0};

    /// The rows of `source` by `specs`, the first `limit` of them. `rankColumns` are the names of further columns, of
    /// type "bigint", that receive the row number in the new order, counted from 0; a name may be empty, which means
    /// none. Raises 40302 for a null source, logic error 40559 when a rank column has the name of a column
    /// of the source, and 40560 when two have the same.
    Order(RefCntPtr<Table> source, std::vector<SortSpec> specs, std::vector<std::wstring> rankColumns = {},
          uint64_t limit = noLimit);
    ~Order() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// May be called by any thread once the table is built. Raises 40301.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// Raises 40300.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    uint64_t GetStart() const override;
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    const RefCntPtr<Table>& GetSource() const { return m_source; }
    const std::vector<SortSpec>& GetSpecs() const { return m_specs; }
    const std::vector<std::wstring>& GetRankColumns() const { return m_rankColumns; }
    uint64_t GetLimit() const { return m_limit; }
    /// Where a cancel of the running sort is posted. Any thread.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    bool IsRank(const std::wstring& name) const;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const;
    void InitColumn(const std::wstring& name, Column& column) const;

    const RefCntPtr<Table> m_source;
    const std::vector<SortSpec> m_specs;
    const std::vector<std::wstring> m_rankColumns;
    const uint64_t m_limit;
    const RefCntPtr<ProgressCallback> m_progress;
    RefCntPtr<TableSorter> m_sorter;
    mutable std::mutex m_mutex;
    mutable ColumnMap m_columns;
    mutable ColumnMap m_descriptions;
    uint64_t m_count = 0;
    bool m_built = false;
};

}  // namespace qve
