#include "algebra/RestrictedTable.h"

#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

RestrictedTable::RestrictedTable(RefCntPtr<Table> delegate, ColumnNames names)
    : DelegatedTable(std::move(delegate)), m_names(std::move(names)) {}

ColumnNames RestrictedTable::GetColumnNames() const {
    return m_names;
}

bool RestrictedTable::HasColumn(const std::wstring& name) const {
    return m_names.contains(name);
}

RefCntPtr<Column> RestrictedTable::GetColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::RestrictedTable_GetColumn, "RestrictedTable::GetColumn");
    return m_delegate->GetColumn(name);
}

unsigned RestrictedTable::GetColumnCount() const {
    return static_cast<unsigned>(m_names.size());
}

RefCntPtr<Column> RestrictedTable::DescribeColumn(const std::wstring& name) const {
    if (!HasColumn(name)) {
        throw QVE_OutOfRange(status::RestrictedTable_DescribeColumn, "RestrictedTable::DescribeColumn");
    }
    return m_delegate->DescribeColumn(name);
}

}  // namespace qve
