#pragma once

#include "vql/VQLQueryCloner.h"

namespace qve {

/// The base of the optimizer's passes: rebuilds the inner nodes of a query and shares its leaves. A pass overrides the
/// visits of the nodes that it changes, and for all cases that it leaves alone calls the copy operation, which puts a
/// node over new children.
class OptQueryCopier : public VQLQueryCloner {
public:
    using VQLQueryCloner::Clone;
    using VQLQueryCloner::VQLQueryCloner;

    RefCntPtr<VQLQuery> VisitTable(const VQLTableQuery& query) override;
    RefCntPtr<VQLQuery> VisitDomain(const VQLDomainQuery& query) override;
    RefCntPtr<VQLQuery> VisitText(const VQLTextQuery& query) override;
    RefCntPtr<VQLQuery> VisitIndexTable(const VQLIndexTableQuery& query) override;
    RefCntPtr<VQLQuery> VisitRemoteQuery(const VQLRemoteQuery& query) override;
    /// Throws VQLException 48016 "Restrict operator not expected": the evaluator has taken them out, and puts the one
    /// that the client sees back at the end.
    RefCntPtr<VQLQuery> VisitRestrict(const VQLRestrictQuery& query) override;

    /// Visits a child and gives the new child.
    RefCntPtr<VQLQuery> Visit(const RefCntPtr<VQLQuery>& query) { return Clone(query); }
    RefCntPtr<VQLQuery> Clone(const RefCntPtr<VQLQuery>& query) override;

protected:
    using Query = RefCntPtr<VQLQuery>;

    Query CopySelect(Query input, const VQLSelectQuery& query);
    Query CopyProject(Query input, const VQLProjectQuery& query);
    Query CopyRestrict(Query input, const VQLRestrictQuery& query);
    Query CopyPivot(Query input, const VQLPivotQuery& query);
    Query CopyAggregate(Query input, const VQLAggregateQuery& query);
    Query CopyOrder(Query input, const VQLOrderQuery& query);
    Query CopyTop(Query input, const VQLTopQuery& query);
    Query CopyJoin(Query left, Query right, const VQLJoinQuery& query);
    Query CopyIndexJoin(Query left, Query right, const VQLIndexJoinQuery& query);
    Query CopyExchange(Query input, const VQLExchangeQuery& query);
    Query CopyAppend(Query left, std::vector<Query> rights, const VQLAppendQuery& query);

    /// Throws VQLParseException 49038 at the query's position.
    [[noreturn]] static void Raise(std::wstring text, const VQLQuery& query);

private:
    Query m_visited;  // the node that is being visited; what leaves give back
};

}  // namespace qve
