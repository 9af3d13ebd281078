#include "vql/VQLFindRequestedOrder.h"

#include "metrics/Scope.h"
#include "system/VQLException.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryVisitor.h"
#include "vql/status.h"

namespace qve {
namespace {

class OrderFinder : public VQLQueryVisitor {
public:
    bool Find(const RefCntPtr<VQLQuery>& query) {
        query->Accept(*this);
        return m_found;
    }

private:
    void VisitTable(VQLTableQuery&) override {}
    void VisitDomain(VQLDomainQuery&) override {}
    void VisitText(VQLTextQuery&) override {}
    void VisitSelect(VQLSelectQuery& query) override { Find(query.GetInput()); }
    void VisitProject(VQLProjectQuery& query) override { Find(query.GetInput()); }
    void VisitRestrict(VQLRestrictQuery& query) override { Find(query.GetInput()); }
    void VisitPivot(VQLPivotQuery& query) override { Find(query.GetInput()); }
    void VisitAggregate(VQLAggregateQuery&) override {}
    void VisitOrder(VQLOrderQuery&) override { m_found = true; }
    void VisitTop(VQLTopQuery&) override { m_found = true; }
    void VisitJoin(VQLJoinQuery& query) override { Find(query.GetLeft()); }
    void VisitIndexTable(VQLIndexTableQuery&) override {}
    void VisitIndexJoin(VQLIndexJoinQuery& query) override { Find(query.GetLeft()); }
    void VisitExchange(VQLExchangeQuery&) override {
        throw VQLException(status::VQLFindRequestedOrder_Exchange, L"Exchange operator not expected");
    }
    void VisitAppend(VQLAppendQuery& query) override {
        Find(query.GetLeft());
        for (const auto& right : query.GetRightList()) Find(right);
    }
    void VisitRemoteQuery(VQLRemoteQuery&) override {}

    bool m_found = false;
};

}  // namespace

bool VQLFindRequestedOrder(const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLFindRequestedOrder");
    return OrderFinder().Find(query);
}

}  // namespace qve
