#pragma once

#include <vector>

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The input's rows in order.
class VQLOrderQuery : public VQLUnaryQuery {
public:
    /// One sort key, outermost first.
    struct Order {
        RefCntPtr<VQLExpression> expression;
        VQLSortSense sense = VQLSortSense::ascending;
        /// The output column that holds the rank by the keys up to this one; empty for none.
        VQLIdentifier output;
    };
    using Orders = std::vector<Order>;

    VQLOrderQuery(VQLPosition position, RefCntPtr<VQLQuery> input, Orders orders);
    void Accept(VQLQueryVisitor& visitor) override;
    const Orders& GetOrders() const { return m_orders; }

private:
    Orders m_orders;
};

}  // namespace qve
