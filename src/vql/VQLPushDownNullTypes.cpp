#include "vql/VQLPushDownNullTypes.h"

#include "metrics/Scope.h"
#include "vql/VQLExpressionCloner.h"
#include "vql/VQLQueryCloner.h"

namespace qve {

namespace {

class ExpressionPushDownNullTypes : public VQLExpressionCloner {
public:
    using VQLExpressionCloner::VQLExpressionCloner;

    RefCntPtr<VQLExpression> VisitLiteral(const VQLLiteralExpression& expression) override {
        const VQLDataValue& literal = expression.GetLiteral();
        if (expression.GetType() || !literal.IsNull() || literal.GetType() != VQLDataType::unknown)
            return VQLExpressionCloner::VisitLiteral(expression);
        const auto typed = MakeRef<VQLLiteralExpression>(
            expression.GetPosition(), VQLDataValue::Null(expression.GetDataType()), expression.GetUsrProps());
        CopyProperties(expression, *typed);
        return typed;
    }
};

class QueryPushDownNullTypes : public VQLQueryCloner {
public:
    using VQLQueryCloner::Clone;
    using VQLQueryCloner::VQLQueryCloner;

    RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression) override {
        return ExpressionPushDownNullTypes(GetDictionary())(expression);
    }
};

}  // namespace

RefCntPtr<VQLQuery> VQLPushDownNullTypes(SymbolDictionary& dictionary, const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLPushDownNullTypes");
    return QueryPushDownNullTypes(dictionary)(query);
}

}  // namespace qve
