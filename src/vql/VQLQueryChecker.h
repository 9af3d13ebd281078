#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLFunctionTable.h"
#include "vql/VQLOrderQuery.h"
#include "vql/VQLQuery.h"
#include "vql/VQLQueryVisitor.h"
#include "vql/VQLTableSpaceFamily.h"

namespace qve {

class VQLDerivedFacts;

/// Resolves every name of a query, types every expression, and gives every node its output columns and what is known of
/// its rows. Stops at the first error and may leave the tree partly annotated; the caller discards it then.
/// Errors are VQLParseException 49035 to 49037, those of the expression checker and those of the table spaces.
class VQLQueryChecker : private VQLQueryVisitor {
public:
    explicit VQLQueryChecker(const VQLTableSpaceFamily& family,
                             const VQLFunctionTable& functions = VQLFunction::Table())
        : m_family(family), m_functions(functions) {}

    void operator()(const RefCntPtr<VQLQuery>& query);

    /// Whether nodes that were checked before are checked again; off at first.
    bool GetForceRebuild() const { return m_forceRebuild; }
    void SetForceRebuild(bool on) { m_forceRebuild = on; }
    /// Whether orderings and unique keys are derived; on at first.
    bool GetDeriveSortsAndUniqueKeys() const { return m_deriveSortsAndUniqueKeys; }
    void SetDeriveSortsAndUniqueKeys(bool on) { m_deriveSortsAndUniqueKeys = on; }
    SymbolDictionary& GetSessionSymbols() const { return m_family.GetDictionary(); }

    /// A column for the value of a checked expression.
    static RefCntPtr<VQLColumn> MakeColumn(const VQLIdentifier& name, const VQLExpression& expression);

private:
    void VisitTable(VQLTableQuery& query) override;
    void VisitDomain(VQLDomainQuery& query) override;
    void VisitText(VQLTextQuery& query) override;
    void VisitSelect(VQLSelectQuery& query) override;
    void VisitProject(VQLProjectQuery& query) override;
    void VisitRestrict(VQLRestrictQuery& query) override;
    void VisitPivot(VQLPivotQuery& query) override;
    void VisitAggregate(VQLAggregateQuery& query) override;
    void VisitOrder(VQLOrderQuery& query) override;
    void VisitTop(VQLTopQuery& query) override;
    void VisitJoin(VQLJoinQuery& query) override;
    void VisitIndexTable(VQLIndexTableQuery& query) override;
    void VisitIndexJoin(VQLIndexJoinQuery& query) override;
    void VisitExchange(VQLExchangeQuery& query) override;
    void VisitAppend(VQLAppendQuery& query) override;
    void VisitRemoteQuery(VQLRemoteQuery& query) override;

    /// Visits a child query unless it was checked before and need not be checked again.
    void Visit(const RefCntPtr<VQLQuery>& query);
    /// Checks an expression against the columns of `input`.
    void Visit(const RefCntPtr<VQLExpression>& expression, const VQLQuery& input);
    void Store(VQLQuery& query, RefCntPtr<VQLColumnSpace> columns, VQLDerivedFacts facts) const;
    void CheckOrders(const VQLOrderQuery& query);

    const VQLTableSpaceFamily& m_family;
    const VQLFunctionTable& m_functions;
    bool m_forceRebuild = false;
    bool m_deriveSortsAndUniqueKeys = true;
};

}  // namespace qve
