#pragma once

namespace qve {

class VQLTableQuery;
class VQLDomainQuery;
class VQLTextQuery;
class VQLSelectQuery;
class VQLProjectQuery;
class VQLRestrictQuery;
class VQLPivotQuery;
class VQLAggregateQuery;
class VQLOrderQuery;
class VQLTopQuery;
class VQLJoinQuery;
class VQLIndexTableQuery;
class VQLIndexJoinQuery;
class VQLExchangeQuery;
class VQLAppendQuery;
class VQLRemoteQuery;

class VQLQueryVisitor {
public:
    virtual ~VQLQueryVisitor() = default;
    virtual void VisitTable(VQLTableQuery& query) = 0;
    virtual void VisitDomain(VQLDomainQuery& query) = 0;
    virtual void VisitText(VQLTextQuery& query) = 0;
    virtual void VisitSelect(VQLSelectQuery& query) = 0;
    virtual void VisitProject(VQLProjectQuery& query) = 0;
    virtual void VisitRestrict(VQLRestrictQuery& query) = 0;
    virtual void VisitPivot(VQLPivotQuery& query) = 0;
    virtual void VisitAggregate(VQLAggregateQuery& query) = 0;
    virtual void VisitOrder(VQLOrderQuery& query) = 0;
    virtual void VisitTop(VQLTopQuery& query) = 0;
    virtual void VisitJoin(VQLJoinQuery& query) = 0;
    virtual void VisitIndexTable(VQLIndexTableQuery& query) = 0;
    virtual void VisitIndexJoin(VQLIndexJoinQuery& query) = 0;
    virtual void VisitExchange(VQLExchangeQuery& query) = 0;
    virtual void VisitAppend(VQLAppendQuery& query) = 0;
    virtual void VisitRemoteQuery(VQLRemoteQuery& query) = 0;
};

}  // namespace qve
