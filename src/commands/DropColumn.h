#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

class DropColumn : public Statement {
public:
    /// @param ifexists a missing one is no failure
    DropColumn(RefCntPtr<Database> database, std::wstring schema, std::wstring table, std::wstring name, bool cascade,
               bool ifexists);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetSchemaName() const { return m_schema; }
    const std::wstring& GetTableName() const { return m_table; }
    const std::wstring& GetName() const { return m_name; }

private:
    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
    const std::wstring m_table;
    const std::wstring m_name;
    const bool m_cascade;
    const bool m_ifexists;
};

}  // namespace qve
