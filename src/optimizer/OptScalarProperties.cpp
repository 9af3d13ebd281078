#include "optimizer/OptScalarProperties.h"

#include "vql/VQLExpressions.h"

namespace qve {

namespace {

class OptScalarPropertiesDeriver : private VQLExpressionVisitor {
public:
    RefCntPtr<OptScalarProperties> operator()(const RefCntPtr<VQLExpression>& expression) {
        expression->Accept(*this);
        return MakeRef<OptScalarProperties>(std::move(m_columns), m_hasAggregate);
    }

private:
    void VisitLiteral(VQLLiteralExpression&) override {}
    void VisitIdentifier(VQLIdentifierExpression& expression) override { m_columns.insert(expression.GetIdentifier()); }
    void VisitFuncall(VQLFuncallExpression& expression) override { VisitInner(expression, expression.GetArguments()); }
    void VisitCase(VQLCaseExpression& expression) override { VisitInner(expression, expression.GetArguments()); }
    void VisitInner(const VQLExpression& expression, const VQLExpressions& arguments) {
        if (expression.GetExpressionType() == VQLExpressionType::aggregate) m_hasAggregate = true;
        for (const RefCntPtr<VQLExpression>& argument : arguments) argument->Accept(*this);
    }

    VQLIdentifierSet m_columns;
    bool m_hasAggregate = false;
};

}  // namespace

RefCntPtr<OptScalarProperties> OptDeriveScalarProperties(const RefCntPtr<VQLExpression>& expression) {
    return OptScalarPropertiesDeriver()(expression);
}

}  // namespace qve
