#pragma once

#include "commands/CreateTable.h"

namespace qve {

/// Makes a table of the rows of a plan. The rows are computed first, beside the database; the table appears with all of
/// them in one step, and a failure, a cancel or a kill before that leaves the database as it was.
class CreateTableFromFlow : public CreateTable {
public:
    /// @param plan a flow or a table
    CreateTableFromFlow(RefCntPtr<Database> database, std::wstring schema, std::wstring name,
                        RefCntPtr<Namespace> plan);

    RefCntPtr<Namespace> Execute(unsigned pageSize) override;
    RefCntPtr<Namespace> GetPlan() const override { return m_plan; }

    RefCntPtr<ProgressCallback> GetProgressCallback() const override { return m_progress; }

    /// Makes the table at once.
    static void Do(RefCntPtr<Database> database, const std::wstring& schema, const std::wstring& name,
                   RefCntPtr<Namespace> plan);

protected:
    /// Whether the table may be made, as far as that can be said before the rows are computed: raises QVE_RuntimeError
    /// 40603 when the name is taken.
    virtual void CheckName() const;
    /// Makes the table without columns, within the transaction that fills it.
    virtual void MakeEmpty();

private:
    const RefCntPtr<Namespace> m_plan;
    const RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
