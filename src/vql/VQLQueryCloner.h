#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQueries.h"

namespace qve {

/// Copies a query tree; the base of all rewrites of queries. A subclass overrides the visit of what it changes and
/// gives back what shall stand there; `Clone` of a child goes on with the walk. The copy is unchecked: it has no column
/// spaces.
class VQLQueryCloner {
public:
    explicit VQLQueryCloner(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}
    virtual ~VQLQueryCloner() = default;

    RefCntPtr<VQLQuery> operator()(const RefCntPtr<VQLQuery>& query) { return Clone(query); }

    virtual RefCntPtr<VQLQuery> VisitTable(const VQLTableQuery& query);
    virtual RefCntPtr<VQLQuery> VisitDomain(const VQLDomainQuery& query);
    virtual RefCntPtr<VQLQuery> VisitText(const VQLTextQuery& query);
    virtual RefCntPtr<VQLQuery> VisitSelect(const VQLSelectQuery& query);
    virtual RefCntPtr<VQLQuery> VisitProject(const VQLProjectQuery& query);
    virtual RefCntPtr<VQLQuery> VisitRestrict(const VQLRestrictQuery& query);
    virtual RefCntPtr<VQLQuery> VisitPivot(const VQLPivotQuery& query);
    virtual RefCntPtr<VQLQuery> VisitAggregate(const VQLAggregateQuery& query);
    virtual RefCntPtr<VQLQuery> VisitOrder(const VQLOrderQuery& query);
    virtual RefCntPtr<VQLQuery> VisitTop(const VQLTopQuery& query);
    virtual RefCntPtr<VQLQuery> VisitJoin(const VQLJoinQuery& query);
    virtual RefCntPtr<VQLQuery> VisitIndexTable(const VQLIndexTableQuery& query);
    virtual RefCntPtr<VQLQuery> VisitIndexJoin(const VQLIndexJoinQuery& query);
    virtual RefCntPtr<VQLQuery> VisitExchange(const VQLExchangeQuery& query);
    virtual RefCntPtr<VQLQuery> VisitAppend(const VQLAppendQuery& query);
    virtual RefCntPtr<VQLQuery> VisitRemoteQuery(const VQLRemoteQuery& query);

    /// Null gives null.
    virtual RefCntPtr<VQLQuery> Clone(const RefCntPtr<VQLQuery>& query);
    /// Copies an expression with VQLExpressionCloner. A subclass that rewrites all expressions overrides this alone.
    virtual RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression);
    virtual VQLBindings Clone(const VQLBindings& bindings);
    virtual VQLOrderQuery::Orders Clone(const VQLOrderQuery::Orders& orders);
    virtual VQLJoinQuery::Conditions Clone(const VQLJoinQuery::Conditions& conditions);
    virtual std::vector<RefCntPtr<VQLQuery>> Clone(const std::vector<RefCntPtr<VQLQuery>>& queries);

protected:
    SymbolDictionary& GetDictionary() const { return m_dictionary; }

private:
    SymbolDictionary& m_dictionary;
};

}  // namespace qve
