#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"

namespace qve {

/// Reads a table that the session computes, of its schema ".SESSION".
class ShowVirtualTable : public Statement {
public:
    static const std::wstring schemaSession;           ///< ".SESSION"
    static const std::wstring tableSessions;           ///< "SESSIONS"
    static const std::wstring tableRuntimeQueryStats;  ///< "RUNTIMEQUERYSTATS"

    ShowVirtualTable(RefCntPtr<Database> database, std::wstring table);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const RefCntPtr<Database> m_database;
    const std::wstring m_table;
};

}  // namespace qve
