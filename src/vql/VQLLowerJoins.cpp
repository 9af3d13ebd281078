#include "vql/VQLLowerJoins.h"

#include "metrics/Scope.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

class LowerQueries : public VQLQueryCloner {
public:
    explicit LowerQueries(VQLIdentifierFactory& factory)
        : VQLQueryCloner(factory.GetDictionary()), m_factory(factory) {}

    RefCntPtr<VQLQuery> VisitJoin(const VQLJoinQuery& query) override {
        RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
        RefCntPtr<VQLQuery> right = Clone(query.GetRight());
        VQLBindings leftBindings;
        VQLBindings rightBindings;
        VQLJoinQuery::Conditions conditions;
        for (const auto& [leftSide, rightSide] : query.GetConditions()) {
            RefCntPtr<VQLExpression> leftName = MakeIdentifier(leftSide, leftBindings);
            conditions.emplace_back(std::move(leftName), MakeIdentifier(rightSide, rightBindings));
        }
        VQLBindings imports;
        for (const auto& [name, expression] : query.GetImports()) {
            imports.emplace_back(name, MakeIdentifier(expression, rightBindings));
        }
        if (!leftBindings.empty()) {
            left = MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(left), std::move(leftBindings));
        }
        if (!rightBindings.empty()) {
            right = MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(right), std::move(rightBindings));
        }
        return MakeRef<VQLJoinQuery>(query.GetPosition(), std::move(left), std::move(right), std::move(conditions),
                                     std::move(imports), query.GetJoinType(), query.UseEqualToComparison(),
                                     query.IsLookup());
    }

private:
    // The identifier itself, or a fresh one to which the expression is bound.
    RefCntPtr<VQLExpression> MakeIdentifier(const RefCntPtr<VQLExpression>& side, VQLBindings& bindings) {
        if (dynamic_cast<const VQLIdentifierExpression*>(side.get())) return Clone(side);
        const VQLIdentifier name = m_factory();
        bindings.emplace_back(name, Clone(side));
        return MakeRef<VQLIdentifierExpression>(side->GetPosition(), name);
    }

    VQLIdentifierFactory& m_factory;
};

}  // namespace

RefCntPtr<VQLQuery> VQLLowerJoins(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLLowerJoins");
    return LowerQueries(factory)(query);
}

}  // namespace qve
