#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

/// Describes a table, one row for each column: table "COLUMNS" with "COLUMNS_NAME", "COLUMNS_TYPE" and
/// "COLUMNS_PROPERTIES", the column's properties in the catalog as "key=value", one behind the other. No visitor has a
/// slot for it.
class DescribeTable : public Statement {
public:
    DescribeTable(RefCntPtr<Database> database, std::wstring schema, std::wstring table);

    void Accept(OperatorVisitor&) override {}
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
    const std::wstring m_table;
};

}  // namespace qve
