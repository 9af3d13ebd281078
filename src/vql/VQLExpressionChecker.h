#pragma once

#include "vql/VQLColumnSpace.h"
#include "vql/VQLExpression.h"
#include "vql/VQLExpressionVisitor.h"
#include "vql/VQLFunctionTable.h"

namespace qve {

/// Gives every node of an expression its data type, its expression type and, for calls, the primitive op, by the
/// columns of the input and the function table. Errors are VQLParseException 49009 at the expression, or the function
/// table's.
class VQLExpressionChecker : private VQLExpressionVisitor {
public:
    /// All three must outlive the checker.
    VQLExpressionChecker(const VQLColumnSpace& input, const VQLFunctionTable& functions, SymbolDictionary& dictionary)
        : m_input(input), m_functions(functions), m_dictionary(dictionary) {}

    void operator()(const RefCntPtr<VQLExpression>& expression) { Visit(expression); }

private:
    void Visit(const RefCntPtr<VQLExpression>& expression);
    void VisitLiteral(VQLLiteralExpression& expression) override;
    void VisitIdentifier(VQLIdentifierExpression& expression) override;
    void VisitFuncall(VQLFuncallExpression& expression) override;
    void VisitCase(VQLCaseExpression& expression) override;

    VQLExpressionType FoldExpressionTypes(const VQLExpressions& arguments) const;
    [[noreturn]] static void Raise(std::wstring message, const VQLExpression& expression);

    const VQLColumnSpace& m_input;
    const VQLFunctionTable& m_functions;
    SymbolDictionary& m_dictionary;
};

}  // namespace qve
