#pragma once

#include <cstdint>

#include "vql/VQLQuery.h"
#include "vql/VQLQueryVisitor.h"

namespace qve {

class DatabaseFamily;

/// The greatest number of rows that a checked query can yield, by the sizes of its tables. Runs nothing.
class VQLRowBound : private VQLQueryVisitor {
public:
    static constexpr uint64_t unknown = ~uint64_t{0};

    explicit VQLRowBound(const DatabaseFamily& databases) : m_databases(databases) {}

    uint64_t operator()(const RefCntPtr<VQLQuery>& query);

private:
    void VisitTable(VQLTableQuery& query) override;
    void VisitDomain(VQLDomainQuery&) override {}
    void VisitText(VQLTextQuery&) override {}
    void VisitSelect(VQLSelectQuery& query) override;
    void VisitProject(VQLProjectQuery& query) override;
    void VisitRestrict(VQLRestrictQuery& query) override;
    void VisitPivot(VQLPivotQuery&) override {}
    void VisitAggregate(VQLAggregateQuery& query) override;
    void VisitOrder(VQLOrderQuery& query) override;
    void VisitTop(VQLTopQuery& query) override;
    void VisitJoin(VQLJoinQuery& query) override;
    void VisitIndexTable(VQLIndexTableQuery&) override {}
    void VisitIndexJoin(VQLIndexJoinQuery&) override {}
    void VisitExchange(VQLExchangeQuery& query) override;
    void VisitAppend(VQLAppendQuery& query) override;
    void VisitRemoteQuery(VQLRemoteQuery&) override {}

    const DatabaseFamily& m_databases;
    uint64_t m_rows = unknown;
};

}  // namespace qve
