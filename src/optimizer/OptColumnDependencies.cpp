#include "optimizer/OptColumnDependencies.h"

#include "vql/VQLDerivedFacts.h"
#include "vql/VQLQueries.h"

namespace qve {

namespace {

void Add(const RefCntPtr<VQLExpression>& expression, VQLIdentifierSet& columns) {
    columns.merge(VQLColumnsOf(expression));
}

void Add(const VQLBindings& bindings, VQLIdentifierSet& columns) {
    for (const auto& [name, expression] : bindings) Add(expression, columns);
}

class OptColumnDependenciesDeriver : private VQLQueryVisitor {
public:
    VQLIdentifierSet operator()(VQLQuery& query) {
        query.Accept(*this);
        return std::move(m_columns);
    }

private:
    void VisitTable(VQLTableQuery&) override {}
    void VisitDomain(VQLDomainQuery&) override {}
    void VisitText(VQLTextQuery&) override {}
    void VisitIndexTable(VQLIndexTableQuery&) override {}
    void VisitRemoteQuery(VQLRemoteQuery&) override {}
    void VisitExchange(VQLExchangeQuery&) override {}
    void VisitSelect(VQLSelectQuery& query) override { Add(query.GetPredicate(), m_columns); }
    void VisitProject(VQLProjectQuery& query) override { Add(query.GetBindings(), m_columns); }
    void VisitRestrict(VQLRestrictQuery& query) override {
        m_columns.insert(query.GetIdentifiers().begin(), query.GetIdentifiers().end());
    }
    void VisitPivot(VQLPivotQuery& query) override {
        m_columns.insert(query.GetTags().first);
        for (const auto& [name, members] : query.GetGroups()) m_columns.insert(members.begin(), members.end());
    }
    void VisitAggregate(VQLAggregateQuery& query) override {
        Add(query.GetGroupBys(), m_columns);
        Add(query.GetMeasures(), m_columns);
    }
    void VisitOrder(VQLOrderQuery& query) override {
        for (const VQLOrderQuery::Order& order : query.GetOrders()) Add(order.expression, m_columns);
    }
    void VisitTop(VQLTopQuery& query) override { VisitOrder(query); }
    void VisitJoin(VQLJoinQuery& query) override {
        m_columns = OptDeriveJoinLeftColumnDependencies(query);
        m_columns.merge(OptDeriveJoinRightColumnDependencies(query));
    }
    void VisitIndexJoin(VQLIndexJoinQuery& query) override {
        Add(query.GetImports(), m_columns);
        m_columns.insert(query.GetStartColumnName());
        m_columns.insert(query.GetCountColumnName());
    }
    void VisitAppend(VQLAppendQuery& query) override {
        for (const VQLAppendQuery::Renames& renames : query.GetRenamesList())
            for (const auto& [from, to] : renames) m_columns.insert(from);
    }

    VQLIdentifierSet m_columns;
};

}  // namespace

VQLIdentifierSet OptDeriveColumnDependencies(const RefCntPtr<VQLQuery>& query) {
    return OptColumnDependenciesDeriver()(*query);
}

VQLIdentifierSet OptDeriveJoinLeftColumnDependencies(const VQLJoinQuery& join) {
    VQLIdentifierSet columns;
    for (const auto& [left, right] : join.GetConditions()) Add(left, columns);
    return columns;
}

VQLIdentifierSet OptDeriveJoinRightColumnDependencies(const VQLJoinQuery& join) {
    VQLIdentifierSet columns;
    for (const auto& [left, right] : join.GetConditions()) Add(right, columns);
    Add(join.GetImports(), columns);
    return columns;
}

}  // namespace qve
