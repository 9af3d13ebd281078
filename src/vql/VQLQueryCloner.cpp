#include "vql/VQLQueryCloner.h"

#include "vql/VQLExpressionCloner.h"

namespace qve {

namespace {

/// Hands a node to the visit of the cloner and keeps what comes back.
class Dispatcher : public VQLQueryVisitor {
public:
    explicit Dispatcher(VQLQueryCloner& cloner) : m_cloner(cloner) {}
    RefCntPtr<VQLQuery> operator()(VQLQuery& query) {
        query.Accept(*this);
        return std::move(m_result);
    }

private:
    void VisitTable(VQLTableQuery& query) override { m_result = m_cloner.VisitTable(query); }
    void VisitDomain(VQLDomainQuery& query) override { m_result = m_cloner.VisitDomain(query); }
    void VisitText(VQLTextQuery& query) override { m_result = m_cloner.VisitText(query); }
    void VisitSelect(VQLSelectQuery& query) override { m_result = m_cloner.VisitSelect(query); }
    void VisitProject(VQLProjectQuery& query) override { m_result = m_cloner.VisitProject(query); }
    void VisitRestrict(VQLRestrictQuery& query) override { m_result = m_cloner.VisitRestrict(query); }
    void VisitPivot(VQLPivotQuery& query) override { m_result = m_cloner.VisitPivot(query); }
    void VisitAggregate(VQLAggregateQuery& query) override { m_result = m_cloner.VisitAggregate(query); }
    void VisitOrder(VQLOrderQuery& query) override { m_result = m_cloner.VisitOrder(query); }
    void VisitTop(VQLTopQuery& query) override { m_result = m_cloner.VisitTop(query); }
    void VisitJoin(VQLJoinQuery& query) override { m_result = m_cloner.VisitJoin(query); }
    void VisitIndexTable(VQLIndexTableQuery& query) override { m_result = m_cloner.VisitIndexTable(query); }
    void VisitIndexJoin(VQLIndexJoinQuery& query) override { m_result = m_cloner.VisitIndexJoin(query); }
    void VisitExchange(VQLExchangeQuery& query) override { m_result = m_cloner.VisitExchange(query); }
    void VisitAppend(VQLAppendQuery& query) override { m_result = m_cloner.VisitAppend(query); }
    void VisitRemoteQuery(VQLRemoteQuery& query) override { m_result = m_cloner.VisitRemoteQuery(query); }

    VQLQueryCloner& m_cloner;
    RefCntPtr<VQLQuery> m_result;
};

}  // namespace

RefCntPtr<VQLQuery> VQLQueryCloner::Clone(const RefCntPtr<VQLQuery>& query) {
    return query ? Dispatcher(*this)(*query) : nullptr;
}

RefCntPtr<VQLExpression> VQLQueryCloner::Clone(const RefCntPtr<VQLExpression>& expression) {
    return VQLExpressionCloner(m_dictionary)(expression);
}

VQLBindings VQLQueryCloner::Clone(const VQLBindings& bindings) {
    VQLBindings clones;
    clones.reserve(bindings.size());
    for (const auto& [name, expression] : bindings) clones.emplace_back(name, Clone(expression));
    return clones;
}

VQLOrderQuery::Orders VQLQueryCloner::Clone(const VQLOrderQuery::Orders& orders) {
    VQLOrderQuery::Orders clones;
    clones.reserve(orders.size());
    for (const VQLOrderQuery::Order& order : orders)
        clones.push_back({Clone(order.expression), order.sense, order.output});
    return clones;
}

VQLJoinQuery::Conditions VQLQueryCloner::Clone(const VQLJoinQuery::Conditions& conditions) {
    VQLJoinQuery::Conditions clones;
    clones.reserve(conditions.size());
    for (const auto& [left, right] : conditions) {
        RefCntPtr<VQLExpression> clonedLeft = Clone(left);
        clones.emplace_back(std::move(clonedLeft), Clone(right));
    }
    return clones;
}

std::vector<RefCntPtr<VQLQuery>> VQLQueryCloner::Clone(const std::vector<RefCntPtr<VQLQuery>>& queries) {
    std::vector<RefCntPtr<VQLQuery>> clones;
    clones.reserve(queries.size());
    for (const RefCntPtr<VQLQuery>& query : queries) clones.push_back(Clone(query));
    return clones;
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitTable(const VQLTableQuery& query) {
    return MakeRef<VQLTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                  query.GetColumnMap(), query.GetScanColumns(), query.GetParallelism(),
                                  query.GetClusterNames());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitDomain(const VQLDomainQuery& query) {
    return MakeRef<VQLDomainQuery>(query.GetPosition(), query.GetQualifiedColumnName(), query.GetDatabasePath(),
                                   query.GetColumnMap(), query.GetScanColumns(), query.GetParallelism(),
                                   query.GetClusterNames());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitText(const VQLTextQuery& query) {
    return MakeRef<VQLTextQuery>(query.GetPosition(), query.GetPath(), query.GetSchema(), query.GetTextProperties(),
                                 query.GetScanColumns(), query.GetColumnMap());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitSelect(const VQLSelectQuery& query) {
    RefCntPtr<VQLQuery> input = Clone(query.GetInput());
    return MakeRef<VQLSelectQuery>(query.GetPosition(), std::move(input), Clone(query.GetPredicate()));
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitProject(const VQLProjectQuery& query) {
    RefCntPtr<VQLQuery> input = Clone(query.GetInput());
    return MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(input), Clone(query.GetBindings()));
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitRestrict(const VQLRestrictQuery& query) {
    return MakeRef<VQLRestrictQuery>(query.GetPosition(), Clone(query.GetInput()), query.GetIdentifiers());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitPivot(const VQLPivotQuery& query) {
    return MakeRef<VQLPivotQuery>(query.GetPosition(), Clone(query.GetInput()), query.GetTags(), query.GetGroups(),
                                  query.DefaultCollation());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitAggregate(const VQLAggregateQuery& query) {
    RefCntPtr<VQLQuery> input = Clone(query.GetInput());
    VQLBindings groupBys = Clone(query.GetGroupBys());
    return MakeRef<VQLAggregateQuery>(query.GetPosition(), std::move(input), std::move(groupBys),
                                      Clone(query.GetMeasures()), query.IsOrdered());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitOrder(const VQLOrderQuery& query) {
    RefCntPtr<VQLQuery> input = Clone(query.GetInput());
    return MakeRef<VQLOrderQuery>(query.GetPosition(), std::move(input), Clone(query.GetOrders()));
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitTop(const VQLTopQuery& query) {
    RefCntPtr<VQLQuery> input = Clone(query.GetInput());
    return MakeRef<VQLTopQuery>(query.GetPosition(), std::move(input), Clone(query.GetOrders()), query.GetTopCount());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitJoin(const VQLJoinQuery& query) {
    RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
    RefCntPtr<VQLQuery> right = Clone(query.GetRight());
    VQLJoinQuery::Conditions conditions = Clone(query.GetConditions());
    return MakeRef<VQLJoinQuery>(query.GetPosition(), std::move(left), std::move(right), std::move(conditions),
                                 Clone(query.GetImports()), query.GetJoinType(), query.UseEqualToComparison(),
                                 query.IsLookup());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitIndexTable(const VQLIndexTableQuery& query) {
    return MakeRef<VQLIndexTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                       query.GetRLEColumnName(), m_dictionary, query.GetColumnMap(),
                                       query.GetParallelism(), query.GetClusterNames());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitIndexJoin(const VQLIndexJoinQuery& query) {
    RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
    RefCntPtr<VQLQuery> right = Clone(query.GetRight());
    return MakeRef<VQLIndexJoinQuery>(query.GetPosition(), std::move(left), std::move(right), Clone(query.GetImports()),
                                      query.GetStartColumnName(), query.GetCountColumnName());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitExchange(const VQLExchangeQuery& query) {
    return MakeRef<VQLExchangeQuery>(query.GetPosition(), Clone(query.GetInput()), query.GetProducerCount());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitAppend(const VQLAppendQuery& query) {
    RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
    return MakeRef<VQLAppendQuery>(query.GetPosition(), std::move(left), Clone(query.GetRightList()),
                                   query.GetRenamesList());
}

RefCntPtr<VQLQuery> VQLQueryCloner::VisitRemoteQuery(const VQLRemoteQuery& query) {
    return MakeRef<VQLRemoteQuery>(query.GetPosition(), query.GetName(), query.GetSchema(), query.GetRemoteProperties(),
                                   query.GetScanColumns(), query.GetColumnMap());
}

}  // namespace qve
