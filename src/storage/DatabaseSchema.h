#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "storage/Column.h"
#include "storage/DatabaseTable.h"
#include "types/usrprops.h"

namespace qve {

class Database;

/// A handle on one schema: forwards to the database, which outlives it. Any thread.
class DatabaseSchema {
public:
    /// Throws QVE_InvalidArgument 40106 for a null database.
    DatabaseSchema(std::wstring name, Database* database);
    ~DatabaseSchema();

    const std::wstring& GetName() const { return m_name; }
    Database* GetDatabase() const { return m_database; }

    std::vector<std::wstring> GetTableNames() const;
    bool HasTable(const std::wstring& table) const;
    /// The schema's own handle on a table, which lives as long as the schema's. Throws QVE_RangeError when there is no
    /// such table.
    DatabaseTable* GetTable(const std::wstring& table);
    usrprops DescribeTable(const std::wstring& table) const;
    /// A new handle; throws as GetTable.
    std::unique_ptr<DatabaseTable> LoadTable(const std::wstring& table);
    std::vector<std::wstring> GetColumnNames(const std::wstring& table) const;
    usrprops DescribeColumn(const std::wstring& table, const std::wstring& column) const;
    RefCntPtr<Column> LoadColumn(const std::wstring& table, const std::wstring& column) const;

private:
    const std::wstring m_name;
    Database* const m_database;
    std::mutex m_tablesMutex;
    std::map<std::wstring, std::unique_ptr<DatabaseTable>> m_tables;
};

}  // namespace qve
