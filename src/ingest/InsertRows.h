#pragma once

#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "system/ProgressCallback.h"
#include "types/usrprops.h"

namespace qve {

class Database;

/// Adds rows to a table of a database: the old rows and the new ones become the columns of the table, in one
/// transaction. Columns keep their kind of values; numbers may get wider.
class InsertRows {
public:
    /// Throws QVE_RangeError (status::InsertRows_column) when there is no such schema or table; what the database
    /// throws.
    InsertRows(RefCntPtr<Database> database, std::wstring schema, std::wstring table);
    ~InsertRows();

    /// What the rows should give for the named columns, or for all when there are none: each with its name, and the
    /// widest type of the values that it holds. Throws QVE_RangeError (status::InsertRows_column)
    /// "Insert: Unknown column name" for a name that is not there or stands twice.
    std::vector<usrprops> DescribeColumns(const std::vector<std::wstring>& names) const;

    /// The records of a delimited text file as values of the named columns, in the order of the names. Throws
    /// QVE_RuntimeError (status::InsertRows_text) "Insert::BuildTextFlow: Not enough text columns", and what TextScan
    /// throws.
    RefCntPtr<DataFlow> BuildTextFlow(const std::wstring& path, const std::vector<std::wstring>& names) const;

    /// Adds the rows of a flow, whose columns have names of the table's. The table's other columns get their default
    /// values, or nulls. All rows are added or, when anything fails or `progress` says cancelled, none.
    void Execute(RefCntPtr<DataFlow> rows, unsigned pageSize, const RefCntPtr<ProgressCallback>& progress);

private:
    /// The flow with what it lacks of the table's columns.
    RefCntPtr<DataFlow> PadFlow(RefCntPtr<DataFlow> rows, const ColumnNames& names) const;

    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
    const std::wstring m_table;
};

}  // namespace qve
