#pragma once

#include <utility>
#include <vector>

#include "commands/Statement.h"
#include "storage/Database.h"
#include "system/ProgressCallback.h"
#include "types/usrprops.h"

namespace qve {

/// Makes a table, with empty columns if there are definitions. Either all of it is made or nothing.
class CreateTable : public Statement {
public:
    /// A column's name and the properties that describe it, `type` at least.
    using ColumnDefinition = std::pair<std::wstring, usrprops>;

    CreateTable(RefCntPtr<Database> database, std::wstring schema, std::wstring name,
                std::vector<ColumnDefinition> columns = {});

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetSchemaName() const { return m_schema; }
    const std::wstring& GetName() const { return m_name; }
    /// The plan whose rows go into the table; null for a table that begins empty.
    virtual RefCntPtr<Namespace> GetPlan() const { return nullptr; }

    /// What cancels the making of the table; null when that takes no time.
    virtual RefCntPtr<ProgressCallback> GetProgressCallback() const { return nullptr; }

protected:
    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
    const std::wstring m_name;

private:
    const std::vector<ColumnDefinition> m_columns;
};

}  // namespace qve
