#include "vql/VQLExpressionInputs.h"

#include "vql/VQLExpressionVisitor.h"
#include "vql/VQLExpressions.h"

namespace qve {
namespace {

class InputCollector : public VQLExpressionVisitor {
public:
    explicit InputCollector(VQLIdentifierSet& inputs) : m_inputs(inputs) {}

private:
    void VisitLiteral(VQLLiteralExpression&) override {}
    void VisitIdentifier(VQLIdentifierExpression& expression) override { m_inputs.insert(expression.GetIdentifier()); }
    void VisitFuncall(VQLFuncallExpression& expression) override { VisitAll(expression.GetArguments()); }
    void VisitCase(VQLCaseExpression& expression) override { VisitAll(expression.GetArguments()); }
    void VisitAll(const VQLExpressions& expressions) {
        for (const auto& expression : expressions) expression->Accept(*this);
    }

    VQLIdentifierSet& m_inputs;
};

}  // namespace

void AddInputs(const RefCntPtr<VQLExpression>& expression, VQLIdentifierSet& inputs) {
    InputCollector collector(inputs);
    expression->Accept(collector);
}

void AddInputs(const VQLBindings& bindings, VQLIdentifierSet& inputs) {
    for (const auto& [name, expression] : bindings) AddInputs(expression, inputs);
}

}  // namespace qve
