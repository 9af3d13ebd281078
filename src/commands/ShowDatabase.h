#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

/// Describes a database: table "DATABASE" with "DATABASE_KEY" and "DATABASE_VALUE", one row for its path, its numbers
/// of schemas, tables and columns, and each of its properties.
class ShowDatabase : public Statement {
public:
    explicit ShowDatabase(RefCntPtr<Database> database);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const RefCntPtr<Database> m_database;
};

}  // namespace qve
