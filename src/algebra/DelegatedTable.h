#pragma once

#include <string>

#include "algebra/Table.h"

namespace qve {

/// A table that passes everything on to another one.
class DelegatedTable : public Table {
public:
    explicit DelegatedTable(RefCntPtr<Table> delegate);

    /// Visits the delegate.
    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    unsigned long GetMemoryBudget() const override;
    void SetMemoryBudget(unsigned long bytes) override;
    uint64_t GetStart() const override;
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    const RefCntPtr<Table>& GetDelegate() const { return m_delegate; }

protected:
    RefCntPtr<Table> m_delegate;
};

}  // namespace qve
