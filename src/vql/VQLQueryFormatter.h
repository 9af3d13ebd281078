#pragma once

#include <string>

#include "types/usrprops.h"
#include "vql/VQLColumnMap.h"
#include "vql/VQLExpression.h"
#include "vql/VQLFormatter.h"
#include "vql/VQLOrderQuery.h"
#include "vql/VQLQueryVisitor.h"

namespace qve {

/// Writes queries as VQL text, which parses to an equal query. What the language has no form for, as the columns that a
/// scan wants, is an annotation, written only with properties on.
class VQLQueryFormatter : private VQLQueryVisitor {
public:
    explicit VQLQueryFormatter(VQLFormatter& formatter) : m_formatter(formatter) {}
    void operator()(const RefCntPtr<VQLQuery>& query) { query->Accept(*this); }
    /// Adds scan columns, column space, unique keys, orderings and the like as annotations; off at first.
    void SetIncludeProperties(bool on) { m_includeProperties = on; }

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

    void Format(const RefCntPtr<VQLExpression>& expression);
    void Format(const VQLBindings& bindings);
    void Format(const VQLOrderQuery::Orders& orders);
    void Format(const VQLColumnMap& columnMap);
    void Format(const usrprops& properties);
    void Format(const std::vector<usrprops>& schema);
    void Format(const std::vector<VQLIdentifier>& identifiers);
    void AnnotateScan(const VQLIdentifierSet& scanColumns);
    void AnnotateColumnMap(const VQLColumnMap& columnMap);
    void Annotate(const VQLQuery& query);

    VQLFormatter& m_formatter;
    bool m_includeProperties = false;
};

/// A query as indented text.
std::wstring FormatQuery(const RefCntPtr<VQLQuery>& query, bool includeProperties = false);

}  // namespace qve
