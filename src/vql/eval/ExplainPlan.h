#pragma once

#include <memory>

#include "commands/Statement.h"

namespace qve {

class Database;
class MeteredPlan;

/// Lists a plan, one row an operator, each below the one that reads it: table "PLAN" with "OPERATOR", its text in the
/// language of plans, and "NOTE", what is known of it: grouping, rows of stored tables, encodings of their columns.
/// When the plan is to be run, also "ROWS", how many it gave, and "MS", the milliseconds that took, its sources'
/// included; and the rows of the plan itself are dropped.
class ExplainPlan : public Statement {
public:
    /// `database` is the one that tables without a path belong to.
    ExplainPlan(RefCntPtr<Namespace> plan, const RefCntPtr<Database>& database, bool analyze);
    ~ExplainPlan() override;

    /// Visits the plan, so that a cancel reaches it.
    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const RefCntPtr<Namespace> m_plan;  // of the metered plan when there is one
    const RefCntPtr<Database> m_database;
    const std::unique_ptr<MeteredPlan> m_metered;
};

}  // namespace qve
