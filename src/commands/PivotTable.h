#pragma once

#include <string>
#include <vector>

#include "commands/CreateTableFromFlow.h"

namespace qve {

/// Makes rows of columns of a stored table: each row comes once for each of these columns, with the column's name in a
/// key column and its value in a value column. The other columns stay. The rows are computed first; then they take the
/// table's place in one step, and a failure, a cancel or a kill before that leaves the table as it was.
class PivotTable : public CreateTableFromFlow {
public:
    /// @param plan of BuildPivotQuery
    PivotTable(RefCntPtr<Database> database, std::wstring schema, std::wstring table, RefCntPtr<Namespace> plan);

    /// The query that gives the rows.
    static std::wstring BuildPivotQuery(const std::wstring& schema, const std::wstring& table, const std::wstring& key,
                                        const std::wstring& value, const std::vector<std::wstring>& values);

    /// Raises QVE_RuntimeError 40616 "PivotTable: No such schema." and 40617 "PivotTable: No such table.".
    static void CheckTable(const Database& database, const std::wstring& schema, const std::wstring& table);

private:
    void CheckName() const override;
    void MakeEmpty() override;
};

}  // namespace qve
