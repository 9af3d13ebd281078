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

Query OptQueryCopier::VisitRestrict(const VQLRestrictQuery&) {
    throw VQLException(status::OptQueryCopier_VisitRestrict, L"Restrict operator not expected");
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
