#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

/// Lists the tables of a schema: table "TABLES" with "TABLES_SCHEMA", "TABLES_NAME", "TABLES_COLUMNS", the number of
/// columns, and "TABLES_ROWS", the number of rows.
class ShowTables : public Statement {
public:
    /// @param schema empty for all schemas but the catalog's own
    ShowTables(RefCntPtr<Database> database, std::wstring schema);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
};

}  // namespace qve
