#pragma once

#include "vql/VQLExpression.h"

namespace qve {

/// A call of a function of the function table. The checker finds the primitive op, the compiler the primitive.
class VQLFuncallExpression : public VQLExpression {
public:
    VQLFuncallExpression(VQLPosition position, std::wstring name, VQLExpressions arguments)
        : VQLExpression(position), m_name(std::move(name)), m_arguments(std::move(arguments)) {}
    void Accept(VQLExpressionVisitor& visitor) override;

    const std::wstring& GetName() const { return m_name; }
    const VQLExpressions& GetArguments() const { return m_arguments; }
    const std::wstring& GetPrimitiveOp() const { return m_primitiveOp; }
    void SetPrimitiveOp(std::wstring op) { m_primitiveOp = std::move(op); }
    const std::wstring& GetPrimitiveName() const { return m_primitiveName; }
    void SetPrimitiveName(std::wstring name) { m_primitiveName = std::move(name); }

private:
    std::wstring m_name;
    VQLExpressions m_arguments;
    std::wstring m_primitiveOp;
    std::wstring m_primitiveName;
};

}  // namespace qve
