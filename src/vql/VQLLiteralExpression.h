#pragma once

#include "vql/VQLExpression.h"
#include "vql/syntax/VQLDataValue.h"

namespace qve {

class usrtype;

/// A value as written, with the properties of its type, such as a collation; or a type alone, the target of a cast.
class VQLLiteralExpression : public VQLExpression {
public:
    VQLLiteralExpression(VQLPosition position, VQLDataValue literal, usrprops properties = {});
    /// A literal that carries a type: a null of the language's type for it.
    VQLLiteralExpression(VQLPosition position, const usrtype* type, usrprops properties);

    void Accept(VQLExpressionVisitor& visitor) override;

    const VQLDataValue& GetLiteral() const { return m_literal; }
    void SetLiteral(VQLDataValue literal) { m_literal = std::move(literal); }
    const usrprops& GetUsrProps() const { return m_usrProps; }
    /// Null but for a literal that carries a type.
    const usrtype* GetType() const { return m_type; }

private:
    VQLDataValue m_literal;
    usrprops m_usrProps;
    const usrtype* m_type = nullptr;
};

}  // namespace qve
