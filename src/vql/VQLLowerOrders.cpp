#include "vql/VQLLowerOrders.h"

#include "metrics/Scope.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

class OrderLowerer : public VQLQueryCloner {
public:
    explicit OrderLowerer(VQLIdentifierFactory& factory)
        : VQLQueryCloner(factory.GetDictionary()), m_factory(factory) {}

    RefCntPtr<VQLQuery> VisitOrder(const VQLOrderQuery& query) override {
        auto [input, orders] = Lower(query);
        return MakeRef<VQLOrderQuery>(query.GetPosition(), std::move(input), std::move(orders));
    }
    RefCntPtr<VQLQuery> VisitTop(const VQLTopQuery& query) override {
        auto [input, orders] = Lower(query);
        return MakeRef<VQLTopQuery>(query.GetPosition(), std::move(input), std::move(orders), query.GetTopCount());
    }

private:
    std::pair<RefCntPtr<VQLQuery>, VQLOrderQuery::Orders> Lower(const VQLOrderQuery& query) {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        VQLOrderQuery::Orders orders = Clone(query.GetOrders());
        VQLBindings bindings;
        for (auto& order : orders) {
            if (dynamic_cast<const VQLIdentifierExpression*>(order.expression.get())) continue;
            const VQLIdentifier name = m_factory();
            const VQLPosition position = order.expression->GetPosition();
            bindings.emplace_back(name, std::move(order.expression));
            order.expression = MakeRef<VQLIdentifierExpression>(position, name);
        }
        if (!bindings.empty()) {
            input = MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(input), std::move(bindings));
        }
        return {std::move(input), std::move(orders)};
    }

    VQLIdentifierFactory& m_factory;
};

}  // namespace

RefCntPtr<VQLQuery> VQLLowerOrders(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLLowerOrders");
    return OrderLowerer(factory)(query);
}

}  // namespace qve
