#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// One row for each group of input rows that agree in all group-bys.
class VQLAggregateQuery : public VQLUnaryQuery {
public:
    /// `ordered`: equal group-bys lie side by side in the input.
    VQLAggregateQuery(VQLPosition position, RefCntPtr<VQLQuery> input, VQLBindings groupBys, VQLBindings measures,
                      bool ordered = false);
    void Accept(VQLQueryVisitor& visitor) override;
    const VQLBindings& GetGroupBys() const { return m_groupBys; }
    const VQLBindings& GetMeasures() const { return m_measures; }
    bool IsOrdered() const { return m_ordered; }

private:
    VQLBindings m_groupBys;
    VQLBindings m_measures;
    bool m_ordered;
};

}  // namespace qve
