#include "vql/VQLMarkOrderedAggregates.h"

#include "metrics/Scope.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueryChecker.h"
#include "vql/VQLQueryCloner.h"
#include "vql/status.h"

namespace qve {
namespace {

class OrderedAggregateMarker : public VQLQueryCloner {
public:
    OrderedAggregateMarker(const VQLTableSpaceFamily& family, const VQLFunctionTable& functions)
        : VQLQueryCloner(family.GetDictionary()), m_checker(family, functions) {}

    RefCntPtr<VQLQuery> VisitAggregate(const VQLAggregateQuery& query) override {
        VQLIdentifierSet keys;
        for (const auto& [name, expression] : query.GetGroupBys()) {
            const auto* column = dynamic_cast<const VQLIdentifierExpression*>(expression.get());
            if (!column) {
                throw VQLParseException(status::VQLMarkOrderedAggregates_GroupBy,
                                        L"group-bys should be trivial at this point", expression->GetPosition());
            }
            keys.insert(column->GetIdentifier());
        }
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        m_checker(input);
        const bool ordered = !keys.empty() && input->AreColumnsSorted(keys);
        VQLBindings groupBys = Clone(query.GetGroupBys());
        return MakeRef<VQLAggregateQuery>(query.GetPosition(), std::move(input), std::move(groupBys),
                                          Clone(query.GetMeasures()), ordered);
    }

private:
    VQLQueryChecker m_checker;  // copies come unchecked, so each is checked once
};

}  // namespace

RefCntPtr<VQLQuery> VQLMarkOrderedAggregates(const VQLTableSpaceFamily& family, const VQLFunctionTable& functions,
                                             const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLMarkOrderedAggregates");
    return OrderedAggregateMarker(family, functions)(query);
}

}  // namespace qve
