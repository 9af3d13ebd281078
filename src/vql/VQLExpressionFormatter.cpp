#include "vql/VQLExpressionFormatter.h"

#include <sstream>

#include "vql/VQLExpressions.h"
#include "vql/syntax/VQLSymbols.h"

namespace qve {

void VQLExpressionFormatter::FormatProperties(const VQLExpression& expression) {
    if (!m_includeProperties) return;
    std::wstring text =
        FormatDataType(expression.GetDataType()) + L", " + FormatExpressionType(expression.GetExpressionType());
    if (!expression.GetPrimitiveType().empty()) text += L", " + expression.GetPrimitiveType();
    for (const auto& [key, value] : OrderedUserProperties(expression.GetPrimitiveProperties()))
        text += L", " + UsrPropKey_ToString(key) + L"=" + value;
    m_formatter.Comment(text);
}

void VQLExpressionFormatter::VisitLiteral(VQLLiteralExpression& expression) {
    if (expression.GetType()) {
        // The target of a cast: a property list.
        const VQLFormatter::Scope list(m_formatter);
        for (const auto& [key, value] : OrderedUserProperties(expression.GetUsrProps())) {
            const VQLFormatter::Scope pair(m_formatter, FormatString(UsrPropKey_ToString(key)));
            m_formatter.Output(FormatString(value));
        }
        return;
    }
    m_formatter.Output(FormatDataValue(expression.GetLiteral()));
    FormatProperties(expression);
}

void VQLExpressionFormatter::VisitIdentifier(VQLIdentifierExpression& expression) {
    m_formatter.Output(expression.GetIdentifier().AsString());
    FormatProperties(expression);
}

void VQLExpressionFormatter::VisitFuncall(VQLFuncallExpression& expression) {
    {
        const VQLFormatter::Scope list(m_formatter, expression.GetName());
        for (const RefCntPtr<VQLExpression>& argument : expression.GetArguments()) argument->Accept(*this);
    }
    FormatProperties(expression);
}

void VQLExpressionFormatter::VisitCase(VQLCaseExpression& expression) {
    {
        const VQLFormatter::Scope list(m_formatter, VQLSymbols::symCase);
        for (const RefCntPtr<VQLExpression>& argument : expression.GetArguments()) argument->Accept(*this);
    }
    FormatProperties(expression);
}

std::wstring FormatExpression(const RefCntPtr<VQLExpression>& expression) {
    std::wostringstream stream;
    VQLFormatter formatter(stream, VQLFormatter::Mode::line);
    VQLExpressionFormatter{formatter}(expression);
    return stream.str();
}

}  // namespace qve
