#pragma once

#include <cstdint>
#include <string>

#include "algebra/Table.h"

namespace qve {

/// The runs of a run-length encoded column of a stored table: for each its value under the column's own name, its first
/// row under the name with ".START" behind it, and the number of its rows under that with ".COUNT", both "bigint".
class IndexTable : public Table {
public:
    IndexTable(RefCntPtr<Table> table, std::wstring name);
    ~IndexTable() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Complete once the table is built. Raises 40213.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// Raises 40212.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    uint64_t GetStart() const override;
    /// The number of runs.
    uint64_t GetCount() const override;
    /// Raises QVE_RuntimeError 40211 when the column is not stored as runs.
    uint64_t Build(unsigned pageSize) override;

    const RefCntPtr<Table>& GetTable() const { return m_table; }
    const std::wstring& GetName() const { return m_name; }

private:
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const;
    void BuildIndex();

    const RefCntPtr<Table> m_table;
    const std::wstring m_name;
    mutable ColumnMap m_columns;
    uint64_t m_count = 0;
    bool m_built = false;
};

}  // namespace qve
