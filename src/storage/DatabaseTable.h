#pragma once

#include <string>
#include <vector>

#include "storage/Column.h"
#include "types/usrprops.h"

namespace qve {

class DatabaseSchema;

/// A handle on one table: forwards to the schema, which outlives it. Any thread.
class DatabaseTable {
public:
    /// Throws QVE_InvalidArgument 40107 for a null schema.
    DatabaseTable(std::wstring name, DatabaseSchema* schema);

    const std::wstring& GetName() const { return m_name; }
    DatabaseSchema* GetSchema() const { return m_schema; }

    std::vector<std::wstring> GetColumnNames() const;
    bool HasColumn(const std::wstring& column) const;
    usrprops DescribeColumn(const std::wstring& column) const;
    RefCntPtr<Column> LoadColumn(const std::wstring& column) const;

private:
    const std::wstring m_name;
    DatabaseSchema* const m_schema;
};

}  // namespace qve
