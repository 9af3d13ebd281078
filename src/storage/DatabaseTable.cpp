#include "storage/DatabaseTable.h"

#include <algorithm>

#include "storage/DatabaseSchema.h"
#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

DatabaseTable::DatabaseTable(std::wstring name, DatabaseSchema* schema) : m_name(std::move(name)), m_schema(schema) {
    if (!schema) throw QVE_InvalidArgument(status::DatabaseTable_DatabaseTable, "DatabaseTable::DatabaseTable");
}

std::vector<std::wstring> DatabaseTable::GetColumnNames() const {
    return m_schema->GetColumnNames(m_name);
}

bool DatabaseTable::HasColumn(const std::wstring& column) const {
    const std::vector<std::wstring> names = GetColumnNames();
    return std::find(names.begin(), names.end(), column) != names.end();
}

usrprops DatabaseTable::DescribeColumn(const std::wstring& column) const {
    return m_schema->DescribeColumn(m_name, column);
}

RefCntPtr<Column> DatabaseTable::LoadColumn(const std::wstring& column) const {
    return m_schema->LoadColumn(m_name, column);
}

}  // namespace qve
