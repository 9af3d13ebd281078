#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

class CreateSchema : public Statement {
public:
    CreateSchema(RefCntPtr<Database> database, std::wstring name);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetName() const { return m_name; }

private:
    const RefCntPtr<Database> m_database;
    const std::wstring m_name;
};

}  // namespace qve
