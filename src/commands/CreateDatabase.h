#pragma once

#include "commands/Statement.h"
#include "storage/Database.h"
#include "system/ProgressCallback.h"

namespace qve {

/// Says that a database was made: the session has made it by then.
class CreateDatabase : public Statement {
public:
    explicit CreateDatabase(RefCntPtr<Database> database, RefCntPtr<ProgressCallback> progress = nullptr);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const RefCntPtr<Database>& GetDatabase() const { return m_database; }
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }
    const std::wstring& GetPath() const { return m_database->GetRoot(); }

private:
    const RefCntPtr<Database> m_database;
    const RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
