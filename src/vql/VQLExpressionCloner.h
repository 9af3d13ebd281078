#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLExpressions.h"

namespace qve {

/// Copies an expression tree; the base of all rewrites of expressions. A subclass overrides the visit of what it
/// changes and gives back what shall stand there; `Clone` of a child goes on with the walk.
class VQLExpressionCloner {
public:
    explicit VQLExpressionCloner(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}
    virtual ~VQLExpressionCloner() = default;

    RefCntPtr<VQLExpression> operator()(const RefCntPtr<VQLExpression>& expression) { return Clone(expression); }

    virtual RefCntPtr<VQLExpression> VisitLiteral(const VQLLiteralExpression& expression);
    virtual RefCntPtr<VQLExpression> VisitIdentifier(const VQLIdentifierExpression& expression);
    virtual RefCntPtr<VQLExpression> VisitFuncall(const VQLFuncallExpression& expression);
    virtual RefCntPtr<VQLExpression> VisitCase(const VQLCaseExpression& expression);
    /// Null gives null.
    virtual RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression);
    virtual VQLExpressions Clone(const VQLExpressions& expressions);

    /// Copies what checker and compiler have found out: types, domain name and primitive properties.
    static void CopyProperties(const VQLExpression& from, VQLExpression& to);

protected:
    SymbolDictionary& GetDictionary() const { return m_dictionary; }

private:
    SymbolDictionary& m_dictionary;
};

}  // namespace qve
