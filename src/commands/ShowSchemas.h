#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

/// Lists the schemas: table "SCHEMAS" with "SCHEMAS_NAME", in the order of their creation.
class ShowSchemas : public Statement {
public:
    explicit ShowSchemas(RefCntPtr<Database> database);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const RefCntPtr<Database> m_database;
};

}  // namespace qve
