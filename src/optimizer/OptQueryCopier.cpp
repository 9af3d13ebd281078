#include "optimizer/OptQueryCopier.h"

#include "optimizer/status.h"

namespace qve {

using Query = RefCntPtr<VQLQuery>;

Query OptQueryCopier::Clone(const Query& query) {
    m_visited = query;
    return VQLQueryCloner::Clone(query);
}

void OptQueryCopier::Raise(std::wstring text, const VQLQuery& query) {
    throw VQLParseException(status::OptQueryCopier_Raise, std::move(text), query.GetPosition());
}

Query OptQueryCopier::VisitTable(const VQLTableQuery&) {
    return m_visited;
}
Query OptQueryCopier::VisitDomain(const VQLDomainQuery&) {
    return m_visited;
}
Query OptQueryCopier::VisitText(const VQLTextQuery&) {
    return m_visited;
}
Query OptQueryCopier::VisitIndexTable(const VQLIndexTableQuery&) {
    return m_visited;
}
Query OptQueryCopier::VisitRemoteQuery(const VQLRemoteQuery&) {
    return m_visited;
}

Query OptQueryCopier::VisitSelect(const VQLSelectQuery& query) {
    return CopySelect(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitProject(const VQLProjectQuery& query) {
    return CopyProject(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitRestrict(const VQLRestrictQuery&) {
    throw VQLException(status::OptQueryCopier_VisitRestrict, L"Restrict operator not expected");
}
Query OptQueryCopier::VisitPivot(const VQLPivotQuery& query) {
    return CopyPivot(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitAggregate(const VQLAggregateQuery& query) {
    return CopyAggregate(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitOrder(const VQLOrderQuery& query) {
    return CopyOrder(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitTop(const VQLTopQuery& query) {
    return CopyTop(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitJoin(const VQLJoinQuery& query) {
    Query left = Visit(query.GetLeft());
    return CopyJoin(std::move(left), Visit(query.GetRight()), query);
}
Query OptQueryCopier::VisitIndexJoin(const VQLIndexJoinQuery& query) {
    Query left = Visit(query.GetLeft());
    return CopyIndexJoin(std::move(left), Visit(query.GetRight()), query);
}
Query OptQueryCopier::VisitExchange(const VQLExchangeQuery& query) {
    return CopyExchange(Visit(query.GetInput()), query);
}
Query OptQueryCopier::VisitAppend(const VQLAppendQuery& query) {
    Query left = Visit(query.GetLeft());
    return CopyAppend(std::move(left), Clone(query.GetRightList()), query);
}

Query OptQueryCopier::CopySelect(Query input, const VQLSelectQuery& query) {
    return MakeRef<VQLSelectQuery>(query.GetPosition(), std::move(input), Clone(query.GetPredicate()));
}

Query OptQueryCopier::CopyProject(Query input, const VQLProjectQuery& query) {
    return MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(input), Clone(query.GetBindings()));
}

Query OptQueryCopier::CopyRestrict(Query input, const VQLRestrictQuery& query) {
    return MakeRef<VQLRestrictQuery>(query.GetPosition(), std::move(input), query.GetIdentifiers());
}

Query OptQueryCopier::CopyPivot(Query input, const VQLPivotQuery& query) {
    return MakeRef<VQLPivotQuery>(query.GetPosition(), std::move(input), query.GetTags(), query.GetGroups(),
                                  query.DefaultCollation());
}

Query OptQueryCopier::CopyAggregate(Query input, const VQLAggregateQuery& query) {
    VQLBindings groupBys = Clone(query.GetGroupBys());
    return MakeRef<VQLAggregateQuery>(query.GetPosition(), std::move(input), std::move(groupBys),
                                      Clone(query.GetMeasures()), query.IsOrdered());
}

Query OptQueryCopier::CopyOrder(Query input, const VQLOrderQuery& query) {
    return MakeRef<VQLOrderQuery>(query.GetPosition(), std::move(input), Clone(query.GetOrders()));
}

Query OptQueryCopier::CopyTop(Query input, const VQLTopQuery& query) {
    return MakeRef<VQLTopQuery>(query.GetPosition(), std::move(input), Clone(query.GetOrders()), query.GetTopCount());
}

Query OptQueryCopier::CopyJoin(Query left, Query right, const VQLJoinQuery& query) {
    VQLJoinQuery::Conditions conditions = Clone(query.GetConditions());
    return MakeRef<VQLJoinQuery>(query.GetPosition(), std::move(left), std::move(right), std::move(conditions),
                                 Clone(query.GetImports()), query.GetJoinType(), query.UseEqualToComparison(),
                                 query.IsLookup());
}

Query OptQueryCopier::CopyIndexJoin(Query left, Query right, const VQLIndexJoinQuery& query) {
    return MakeRef<VQLIndexJoinQuery>(query.GetPosition(), std::move(left), std::move(right), Clone(query.GetImports()),
                                      query.GetStartColumnName(), query.GetCountColumnName());
}

Query OptQueryCopier::CopyExchange(Query input, const VQLExchangeQuery& query) {
    return MakeRef<VQLExchangeQuery>(query.GetPosition(), std::move(input), query.GetProducerCount());
}

Query OptQueryCopier::CopyAppend(Query left, std::vector<Query> rights, const VQLAppendQuery& query) {
    return MakeRef<VQLAppendQuery>(query.GetPosition(), std::move(left), std::move(rights), query.GetRenamesList());
}

}  // namespace qve
