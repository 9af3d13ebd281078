#include "vql/VQLExpressionCloner.h"

namespace qve {

namespace {

/// Hands a node to the visit of the cloner and keeps what comes back.
class Dispatcher : public VQLExpressionVisitor {
public:
    explicit Dispatcher(VQLExpressionCloner& cloner) : m_cloner(cloner) {}
    RefCntPtr<VQLExpression> operator()(VQLExpression& expression) {
        expression.Accept(*this);
        return std::move(m_result);
    }

private:
    void VisitLiteral(VQLLiteralExpression& expression) override { m_result = m_cloner.VisitLiteral(expression); }
    void VisitIdentifier(VQLIdentifierExpression& expression) override {
        m_result = m_cloner.VisitIdentifier(expression);
    }
    void VisitFuncall(VQLFuncallExpression& expression) override { m_result = m_cloner.VisitFuncall(expression); }
    void VisitCase(VQLCaseExpression& expression) override { m_result = m_cloner.VisitCase(expression); }

    VQLExpressionCloner& m_cloner;
    RefCntPtr<VQLExpression> m_result;
};

}  // namespace

RefCntPtr<VQLExpression> VQLExpressionCloner::Clone(const RefCntPtr<VQLExpression>& expression) {
    return expression ? Dispatcher(*this)(*expression) : nullptr;
}

VQLExpressions VQLExpressionCloner::Clone(const VQLExpressions& expressions) {
    VQLExpressions clones;
    clones.reserve(expressions.size());
    for (const RefCntPtr<VQLExpression>& expression : expressions) clones.push_back(Clone(expression));
    return clones;
}

void VQLExpressionCloner::CopyProperties(const VQLExpression& from, VQLExpression& to) {
    to.SetDataType(from.GetDataType());
    to.SetExpressionType(from.GetExpressionType());
    to.SetPrimitiveType(from.GetPrimitiveType());
    to.SetPrimitiveStorage(from.GetPrimitiveStorage());
    to.SetDomainName(from.GetDomainName());
    to.SetPrimitiveProperties(from.GetPrimitiveProperties());
}

RefCntPtr<VQLExpression> VQLExpressionCloner::VisitLiteral(const VQLLiteralExpression& expression) {
    RefCntPtr<VQLLiteralExpression> clone =
        expression.GetType()
            ? MakeRef<VQLLiteralExpression>(expression.GetPosition(), expression.GetType(), expression.GetUsrProps())
            : MakeRef<VQLLiteralExpression>(expression.GetPosition(), expression.GetLiteral(),
                                            expression.GetUsrProps());
    CopyProperties(expression, *clone);
    return clone;
}

RefCntPtr<VQLExpression> VQLExpressionCloner::VisitIdentifier(const VQLIdentifierExpression& expression) {
    const auto clone = MakeRef<VQLIdentifierExpression>(expression.GetPosition(), expression.GetIdentifier());
    CopyProperties(expression, *clone);
    return clone;
}

RefCntPtr<VQLExpression> VQLExpressionCloner::VisitFuncall(const VQLFuncallExpression& expression) {
    const auto clone =
        MakeRef<VQLFuncallExpression>(expression.GetPosition(), expression.GetName(), Clone(expression.GetArguments()));
    clone->SetPrimitiveOp(expression.GetPrimitiveOp());
    clone->SetPrimitiveName(expression.GetPrimitiveName());
    CopyProperties(expression, *clone);
    return clone;
}

RefCntPtr<VQLExpression> VQLExpressionCloner::VisitCase(const VQLCaseExpression& expression) {
    const auto clone = MakeRef<VQLCaseExpression>(expression.GetPosition(), Clone(expression.GetArguments()));
    CopyProperties(expression, *clone);
    return clone;
}

}  // namespace qve
