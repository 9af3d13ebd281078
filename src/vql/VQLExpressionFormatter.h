#pragma once

#include <string>

#include "vql/VQLExpression.h"
#include "vql/VQLExpressionVisitor.h"
#include "vql/VQLFormatter.h"
#include "vql/syntax/FormatDataValue.h"

namespace qve {

/// Writes expressions as VQL text, which parses to an equal expression.
class VQLExpressionFormatter : private VQLExpressionVisitor {
public:
    explicit VQLExpressionFormatter(VQLFormatter& formatter) : m_formatter(formatter) {}
    void operator()(const RefCntPtr<VQLExpression>& expression) { expression->Accept(*this); }
    /// Adds data type, expression type and primitive of each node as annotations; off at first.
    void SetIncludeProperties(bool on) { m_includeProperties = on; }

private:
    void VisitLiteral(VQLLiteralExpression& expression) override;
    void VisitIdentifier(VQLIdentifierExpression& expression) override;
    void VisitFuncall(VQLFuncallExpression& expression) override;
    void VisitCase(VQLCaseExpression& expression) override;
    void FormatProperties(const VQLExpression& expression);

    VQLFormatter& m_formatter;
    bool m_includeProperties = false;
};

/// An expression on one line.
std::wstring FormatExpression(const RefCntPtr<VQLExpression>& expression);

}  // namespace qve
