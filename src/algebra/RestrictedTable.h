#pragma once

#include <string>

#include "algebra/DelegatedTable.h"

namespace qve {

/// A table of which only some columns show.
class RestrictedTable : public DelegatedTable {
public:
    RestrictedTable(RefCntPtr<Table> delegate, ColumnNames names);

    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Raises 40380 for a hidden column.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// Raises 40379 for a hidden column.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;

private:
    ColumnNames m_names;
};

}  // namespace qve
