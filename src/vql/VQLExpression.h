#pragma once

#include <string>
#include <utility>
#include <vector>

#include "system/RefCntPtr.h"
#include "system/VQLException.h"
#include "types/usrprops.h"
#include "vql/syntax/VQLDataType.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {

class VQLExpressionVisitor;

/// Whether an expression is one value for all rows, one for each row, or one for each group. A constant serves as both.
enum class VQLExpressionType { unknown, const_, scalar, aggregate };

/// "unknown", "const", "scalar", "aggregate"; "<invalid>" for anything else.
const std::wstring& FormatExpressionType(VQLExpressionType type);

/// A node of an expression tree. The builder makes it, the checker adds the types, the compiler the kernel's types.
class VQLExpression : public RefCntObject {
public:
    explicit VQLExpression(VQLPosition position) : m_position(position) {}

    virtual void Accept(VQLExpressionVisitor& visitor) = 0;

    /// Where the expression was written; 0, 0 for one that a pass made.
    const VQLPosition& GetPosition() const { return m_position; }

    VQLDataType GetDataType() const { return m_dataType; }
    void SetDataType(VQLDataType type) { m_dataType = type; }
    VQLExpressionType GetExpressionType() const { return m_expressionType; }
    void SetExpressionType(VQLExpressionType type) { m_expressionType = type; }
    /// A constant is both.
    bool IsScalar() const { return m_expressionType != VQLExpressionType::aggregate; }
    bool IsAggregate() const { return m_expressionType != VQLExpressionType::scalar; }

    /// The kernel's type name, empty until compiled.
    const std::wstring& GetPrimitiveType() const { return m_primitiveType; }
    void SetPrimitiveType(std::wstring type) { m_primitiveType = std::move(type); }
    const std::wstring& GetPrimitiveStorage() const { return m_primitiveStorage; }
    void SetPrimitiveStorage(std::wstring storage) { m_primitiveStorage = std::move(storage); }
    const usrprops& GetPrimitiveProperties() const { return m_primitiveProperties; }
    void SetPrimitiveProperties(usrprops properties) { m_primitiveProperties = std::move(properties); }

    /// For a value that stands for codes of a compressed column: the column that holds the values.
    const VQLIdentifier& GetDomainName() const { return m_domainName; }
    void SetDomainName(VQLIdentifier name) { m_domainName = std::move(name); }

private:
    VQLPosition m_position;
    VQLDataType m_dataType = VQLDataType::unknown;
    VQLExpressionType m_expressionType = VQLExpressionType::unknown;
    std::wstring m_primitiveType;
    VQLIdentifier m_domainName;
    std::wstring m_primitiveStorage;
    usrprops m_primitiveProperties;
};

using VQLExpressions = std::vector<RefCntPtr<VQLExpression>>;
/// An expression and the name of the column that holds its value.
using VQLBinding = std::pair<VQLIdentifier, RefCntPtr<VQLExpression>>;
using VQLBindings = std::vector<VQLBinding>;

}  // namespace qve
