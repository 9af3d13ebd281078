#pragma once

#include <string>
#include <vector>

#include "commands/Statement.h"
#include "ingest/InsertRows.h"
#include "system/ProgressCallback.h"

namespace qve {

class Database;

/// Adds the records of a delimited text file to a table. All are added or none.
class Insert : public Statement {
public:
    /// The columns of the text go to the named ones in order; none means all. Throws what InsertRows throws.
    Insert(RefCntPtr<Database> database, std::wstring schema, std::wstring table, std::vector<std::wstring> columns,
           std::wstring path);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetName() const { return m_table; }
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    const std::wstring m_table;
    InsertRows m_rows;
    const std::vector<std::wstring> m_columns;
    const std::wstring m_path;
    const RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
