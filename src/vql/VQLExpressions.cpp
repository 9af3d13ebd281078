#include "vql/VQLExpressions.h"

#include "types/usrtype.h"
#include "vql/status.h"

namespace qve {

const std::wstring& FormatExpressionType(VQLExpressionType type) {
    static const std::wstring names[] = {L"unknown", L"const", L"scalar", L"aggregate"};
    static const std::wstring invalid = L"<invalid>";
    const auto i = static_cast<size_t>(type);
    return i < std::size(names) ? names[i] : invalid;
}

VQLLiteralExpression::VQLLiteralExpression(VQLPosition position, VQLDataValue literal, usrprops properties)
    : VQLExpression(position), m_literal(std::move(literal)), m_usrProps(std::move(properties)) {}

VQLLiteralExpression::VQLLiteralExpression(VQLPosition position, const usrtype* type, usrprops properties)
    : VQLExpression(position),
      m_literal(VQLDataValue::Null(VQLDataTypeFromProps(type->properties()))),
      m_usrProps(std::move(properties)),
      m_type(type) {}

VQLCaseExpression::VQLCaseExpression(VQLPosition position, VQLExpressions arguments)
    : VQLExpression(position), m_arguments(std::move(arguments)) {
    if (m_arguments.size() < 3 || m_arguments.size() % 2 == 0)
        throw VQLException(status::VQLCaseExpression_Arguments, L"invalid number of case arguments");
    for (size_t i = 0; i + 1 < m_arguments.size(); i += 2) {
        m_predicates.push_back(m_arguments[i]);
        m_thens.push_back(m_arguments[i + 1]);
    }
    m_thens.push_back(m_arguments.back());
}

void VQLLiteralExpression::Accept(VQLExpressionVisitor& visitor) {
    visitor.VisitLiteral(*this);
}
void VQLIdentifierExpression::Accept(VQLExpressionVisitor& visitor) {
    visitor.VisitIdentifier(*this);
}
void VQLFuncallExpression::Accept(VQLExpressionVisitor& visitor) {
    visitor.VisitFuncall(*this);
}
void VQLCaseExpression::Accept(VQLExpressionVisitor& visitor) {
    visitor.VisitCase(*this);
}

}  // namespace qve
