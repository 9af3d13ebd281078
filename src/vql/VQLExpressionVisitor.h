#pragma once

namespace qve {

class VQLLiteralExpression;
class VQLIdentifierExpression;
class VQLFuncallExpression;
class VQLCaseExpression;

class VQLExpressionVisitor {
public:
    virtual ~VQLExpressionVisitor() = default;
    virtual void VisitLiteral(VQLLiteralExpression& expression) = 0;
    virtual void VisitIdentifier(VQLIdentifierExpression& expression) = 0;
    virtual void VisitFuncall(VQLFuncallExpression& expression) = 0;
    virtual void VisitCase(VQLCaseExpression& expression) = 0;
};

}  // namespace qve
