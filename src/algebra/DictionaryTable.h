#pragma once

#include <cstdint>
#include <string>

#include "algebra/Table.h"

namespace qve {

/// The entries of the dictionary of a column, each once, under the name of the column: what the rows may hold, but for
/// nulls. Values of a "heap" dictionary keep their tokens; those of an "array" dictionary are plain.
class DictionaryTable : public Table {
public:
    /// The dictionary of the column `name` of `table`.
    DictionaryTable(RefCntPtr<Table> table, std::wstring name);
    ~DictionaryTable() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Complete once the table is built. Raises 40341.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// Raises 40340.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    uint64_t GetStart() const override;
    /// The number of entries.
    uint64_t GetCount() const override;
    /// Raises QVE_RuntimeError 40342 when the column has no dictionary, and 40343 for tokens of a width that they
    /// cannot have.
    uint64_t Build(unsigned pageSize) override;

    const RefCntPtr<Table>& GetTable() const { return m_table; }
    const std::wstring& GetName() const { return m_name; }

private:
    RefCntPtr<Column> LookupColumn() const;
    void BuildArrayValues(const Column& source);
    void BuildHeapTokens(const Column& source);

    const RefCntPtr<Table> m_table;
    const std::wstring m_name;
    mutable RefCntPtr<Column> m_column;
    uint64_t m_count = 0;
    bool m_built = false;
};

}  // namespace qve
