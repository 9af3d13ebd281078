#include "vql/VQLLowerAggregates.h"

#include <algorithm>

#include "metrics/Scope.h"
#include "vql/VQLExpressionCloner.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"
#include "vql/VQLSharedBindings.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

// Takes the aggregate calls out of a measure. What comes back is an expression over their names.
class VQLLowerAggregateExpressions : public VQLExpressionCloner {
public:
    VQLLowerAggregateExpressions(SymbolDictionary& dictionary, VQLSharedBindings& arguments, VQLSharedBindings& calls)
        : VQLExpressionCloner(dictionary), m_arguments(arguments), m_calls(calls) {}

    RefCntPtr<VQLExpression> VisitFuncall(const VQLFuncallExpression& call) override {
        if (!IsAggregateFunction(call)) return VQLExpressionCloner::VisitFuncall(call);
        return Column(m_calls.NameOf(SimpleCall(call)), call, VQLExpressionType::scalar);
    }

    // A call of an aggregate function, and not of a scalar one over aggregates.
    static bool IsAggregateFunction(const VQLFuncallExpression& call) {
        return call.GetExpressionType() == VQLExpressionType::aggregate &&
               std::none_of(call.GetArguments().begin(), call.GetArguments().end(), HoldsAggregate);
    }

    // An aggregate call whose arguments are columns and literals.
    RefCntPtr<VQLExpression> SimpleCall(const VQLFuncallExpression& call) {
        VQLExpressions arguments;
        for (const auto& argument : call.GetArguments()) arguments.push_back(SimpleArgument(argument));
        auto simple = MakeRef<VQLFuncallExpression>(call.GetPosition(), call.GetName(), std::move(arguments));
        CopyProperties(call, *simple);
        return simple;
    }

private:
    static bool HoldsAggregate(const RefCntPtr<VQLExpression>& expression) {
        return expression->GetExpressionType() == VQLExpressionType::aggregate;
    }

    RefCntPtr<VQLExpression> SimpleArgument(const RefCntPtr<VQLExpression>& argument) {
        if (dynamic_cast<const VQLIdentifierExpression*>(argument.get()) ||
            dynamic_cast<const VQLLiteralExpression*>(argument.get())) {
            return Clone(argument);
        }
        return Column(m_arguments.NameOf(argument), *argument, argument->GetExpressionType());
    }

    static RefCntPtr<VQLExpression> Column(const VQLIdentifier& name, const VQLExpression& value,
                                           VQLExpressionType type) {
        auto column = MakeRef<VQLIdentifierExpression>(value.GetPosition(), name);
        CopyProperties(value, *column);
        column->SetExpressionType(type);
        return column;
    }

    VQLSharedBindings& m_arguments;
    VQLSharedBindings& m_calls;
};

class VQLLowerAggregateQueries : public VQLQueryCloner {
public:
    explicit VQLLowerAggregateQueries(VQLIdentifierFactory& factory)
        : VQLQueryCloner(factory.GetDictionary()), m_factory(factory) {}

    RefCntPtr<VQLQuery> VisitAggregate(const VQLAggregateQuery& query) override {
        VQLSharedBindings below(m_factory);
        VQLSharedBindings calls(m_factory);
        VQLBindings above;
        VQLBindings groupBys;
        for (const auto& [name, expression] : query.GetGroupBys()) {
            const auto* column = dynamic_cast<const VQLIdentifierExpression*>(expression.get());
            const VQLIdentifier key = column ? column->GetIdentifier() : below.NameOf(expression);
            const bool isNew = std::none_of(groupBys.begin(), groupBys.end(),
                                            [&key](const VQLBinding& binding) { return binding.first == key; });
            if (isNew) groupBys.emplace_back(key, MakeRef<VQLIdentifierExpression>(expression->GetPosition(), key));
            if (!(key == name)) {
                above.emplace_back(name, MakeRef<VQLIdentifierExpression>(expression->GetPosition(), key));
            }
        }

        VQLLowerAggregateExpressions lower(GetDictionary(), below, calls);
        for (const auto& [name, expression] : query.GetMeasures()) {
            const auto* call = dynamic_cast<const VQLFuncallExpression*>(expression.get());
            const bool isKey = std::any_of(groupBys.begin(), groupBys.end(),
                                           [&name = name](const VQLBinding& key) { return key.first == name; });
            const bool keepsName = call && !isKey && VQLLowerAggregateExpressions::IsAggregateFunction(*call) &&
                                   calls.NameOf(lower.SimpleCall(*call), name) == name;
            if (!keepsName) above.emplace_back(name, lower(expression));
        }

        RefCntPtr<VQLQuery> result = Clone(query.GetInput());
        if (!below.Get().empty()) {
            result = MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(result), below.Get());
        }
        result = MakeRef<VQLAggregateQuery>(query.GetPosition(), std::move(result), std::move(groupBys), calls.Get(),
                                            query.IsOrdered());
        if (!above.empty()) result = MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(result), std::move(above));
        return result;
    }

private:
    VQLIdentifierFactory& m_factory;
};

}  // namespace

RefCntPtr<VQLQuery> VQLLowerAggregates(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLLowerAggregates");
    return VQLLowerAggregateQueries(factory)(query);
}

}  // namespace qve
