#include "storage/DatabaseSchema.h"

#include <algorithm>

#include "storage/Database.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

DatabaseSchema::DatabaseSchema(std::wstring name, Database* database) : m_name(std::move(name)), m_database(database) {
    if (!database) {
        throw QVE_InvalidArgument(status::DatabaseSchema_DatabaseSchema, "DatabaseSchema::DatabaseSchema");
    }
}

DatabaseSchema::~DatabaseSchema() = default;

std::vector<std::wstring> DatabaseSchema::GetTableNames() const {
    return m_database->GetTableNames(m_name);
}

bool DatabaseSchema::HasTable(const std::wstring& table) const {
    const std::vector<std::wstring> names = GetTableNames();
    return std::find(names.begin(), names.end(), table) != names.end();
}

std::unique_ptr<DatabaseTable> DatabaseSchema::LoadTable(const std::wstring& table) {
    if (!HasTable(table)) {
        throw QVE_RangeError(status::DatabaseSchema_GetTable,
                             "DatabaseSchema::GetTable: no such table " + narrow(m_name) + "." + narrow(table));
    }
    return std::make_unique<DatabaseTable>(table, this);
}

DatabaseTable* DatabaseSchema::GetTable(const std::wstring& table) {
    std::unique_ptr<DatabaseTable> loaded = LoadTable(table);
    std::lock_guard lock(m_tablesMutex);
    return m_tables.try_emplace(table, std::move(loaded)).first->second.get();
}

usrprops DatabaseSchema::DescribeTable(const std::wstring& table) const {
    return m_database->DescribeTable(table, m_name);
}

std::vector<std::wstring> DatabaseSchema::GetColumnNames(const std::wstring& table) const {
    return m_database->GetColumnNames(table, m_name);
}

usrprops DatabaseSchema::DescribeColumn(const std::wstring& table, const std::wstring& column) const {
    return m_database->DescribeColumn(column, table, m_name);
}

RefCntPtr<Column> DatabaseSchema::LoadColumn(const std::wstring& table, const std::wstring& column) const {
    return m_database->LoadColumn(column, table, m_name);
}

}  // namespace qve
